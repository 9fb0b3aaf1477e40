#include "security/Unit_Role.h"

#include <algorithm>
#include <map>

#include "app/workbench/StatementRun.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kName = 0;  // sub-items
constexpr std::size_t kRole = 1;

constexpr const char* kMember = "○";
constexpr const char* kNoMember = "-";

enum Choice : int { kJoin, kLeave };

}  // namespace

TFormRole::TFormRole(const Workbench& workbench) : Form("FormRole"), workbench_(workbench) {
  Caption = "Roleの設定";
  RadioGroup_Role.Caption = " Role ";
  RadioGroup_Role.Items.Assign({"参加", "非参加"});
  ListView.AddColumn("id", 48);
  ListView.AddColumn("User", 180);
  ListView.AddColumn("Role", 58, Alignment::kCenter);
  ListView.OnSelectItem = [this] { ListViewSelectItem(); };
  SBtn_Update.OnClick = [this] { SBtn_UpdateClick(); };
  SBtn_Close.OnClick = [this] { SBtn_CloseClick(); };
}

void TFormRole::SetUp(const std::string& database, const std::string& role,
                      const std::string& kind) {
  kind_ = kind;
  mode_.Show(role.empty() ? Record::kNew : Record::kExisting);
  Edit_Database.Text = database;
  Edit_RoleName.Text = role;
  ClearChoice();
  ListView.ClearItems();
  if (mode_.Exists()) FillMembers();
}

void TFormRole::ClearChoice() {
  Edit_User.Text = "";
  RadioGroup_Role.ItemIndex = -1;
}

// The candidates are the users of the database, also for a role of the server.
void TFormRole::FillMembers() {
  const ListUpdate update(ListView);
  ListView.ClearItems();
  Query& query = workbench_.Session.ADOQuerySystem;
  query.UseDatabase(Edit_Database.Text());
  std::map<std::string, std::size_t> row_of;
  for (query.Open("select * from sysusers where issqlrole <> 1"); !query.Eof(); query.Next()) {
    const std::string name = query.FieldByName("name").AsString();
    row_of.emplace(name, ListView.Items().size());
    ListView.AddItem({query.FieldByName("uid").AsString(), name, kNoMember});
  }
  const std::string role = "[" + Edit_RoleName.Text() + "]";
  query.Open(
      (kind_ == kDatabaseRole ? "exec sp_helprolemember    " : "exec sp_helpsrvrolemember ") +
      role);
  for (; !query.Eof(); query.Next()) {
    const auto row = row_of.find(query.FieldByName("MemberName").AsString());
    if (row != row_of.end()) ListView.SetSubItem(row->second, kRole, kMember);
  }
  query.Close();
}

void TFormRole::ListViewSelectItem() {
  const ListItem* const row = ListView.Selected();
  if (row == nullptr) return;
  Edit_User.Text = std::string(row->SubItem(kName));
  RadioGroup_Role.ItemIndex = row->SubItem(kRole) == kMember ? kJoin : kLeave;
}

void TFormRole::CreateRole() {
  RunStatements(workbench_, {.use = "use [" + Edit_Database.Text() + "]",
                             .statements = {"exec sp_addrole [" + Edit_RoleName.Text() + "]"}});
  mode_.Show(Record::kExisting);
  const TreeNode* const node = workbench_.Tree.Selected();
  const TreeNode* const parent = node != nullptr ? node->Parent() : nullptr;
  ListDatabaseRoles(workbench_, parent != nullptr ? parent->Text() : "");
}

// A role of a database comes before the user, a role of the server behind it.
std::optional<std::string> TFormRole::MembershipStatement() const {
  const std::string& name = Edit_User.Text();
  const auto row = std::ranges::find_if(
      ListView.Items(), [&](const ListItem& item) { return item.SubItem(kName) == name; });
  if (name.empty() || row == ListView.Items().end()) return std::nullopt;
  const bool of_database = kind_ == kDatabaseRole;
  const std::string user = "[" + name + "]";
  const std::string role = "[" + Edit_RoleName.Text() + "]";
  const int choice = RadioGroup_Role.ItemIndex();
  if (choice == kJoin && row->SubItem(kRole) == kNoMember) {
    return of_database ? "exec sp_addrolemember    " + role + ", " + user
                       : "exec sp_addsrvrolemember " + user + ", " + role;
  }
  if (choice == kLeave && row->SubItem(kRole) == kMember) {
    return of_database ? "exec sp_droprolemember    " + role + ", " + user
                       : "exec sp_dropsrvrolemember " + user + ", " + role;
  }
  return std::nullopt;
}

void TFormRole::SBtn_UpdateClick() {
  if (!mode_.Exists()) {
    CreateRole();
    // A new role opens without candidates; who was typed in meanwhile may be one.
    if (Edit_User.Text() != "" && ListView.Items().empty()) FillMembers();
  }
  if (const auto statement = MembershipStatement()) {
    RunStatements(workbench_, {.statements = {*statement}});
  }
  ClearChoice();
  FillMembers();
}

void TFormRole::SBtn_CloseClick() { Close(); }

}  // namespace dbkeeper
