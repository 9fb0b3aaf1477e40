#include "security/Unit_Privileges.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "app/workbench/StatementRun.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kName = 0;  // the sub-item; those of the rights follow

enum Choice : int { kPermit, kDeny, kNone };

constexpr std::array<const char*, 3> kChoices = {"Permit", "Deny", "None"};
constexpr const char* kNothing = "-";

// What an object lets users do, in the order of the list's cells and of the statements.
enum class Objects { kWithRows, kWithCode };
struct Right {
  std::int64_t action;  // in sysprotects
  const char* word;
  const char* column;
  const char* caption;
  RadioGroup TForm_Privileges::*group;
  Objects objects;
};
constexpr std::array<Right, 5> kRights = {{
    {193, "select", "Select", " Select ", &TForm_Privileges::RadioGroup_Select, Objects::kWithRows},
    {195, "insert", "Insert", " Insert ", &TForm_Privileges::RadioGroup_Insert, Objects::kWithRows},
    {197, "update", "Update", " Update ", &TForm_Privileges::RadioGroup_Update, Objects::kWithRows},
    {196, "delete", "Delete", " Delete ", &TForm_Privileges::RadioGroup_Delete, Objects::kWithRows},
    {224, "execute", "Exec", " Exec ", &TForm_Privileges::RadioGroup_Exec, Objects::kWithCode},
}};

constexpr std::size_t SubItemOf(std::size_t right) { return kName + 1 + right; }

// The state that a row of sysprotects gives a cell; null for a right that goes with being allowed
// to grant it.
const char* StateOf(std::int64_t protect_type) {
  constexpr std::int64_t kGranted = 205;
  constexpr std::int64_t kDenied = 206;
  if (protect_type == kGranted) return kChoices[kPermit];
  return protect_type == kDenied ? kChoices[kDeny] : nullptr;
}

int ChoiceOf(std::string_view state) {
  if (state == kChoices[kPermit]) return kPermit;
  return state == kChoices[kDeny] ? kDeny : kNone;
}

// What was granted or denied is sent again where it stays, which does no harm.
std::string StatementsFor(const Right& right, const std::string& object, const std::string& user,
                          std::string_view state, int choice) {
  const std::string target = std::string(right.word) + " on [" + object + "] to [" + user + "]\r\n";
  const int current = ChoiceOf(state);
  std::string text;
  if (current != kNone && current != choice) text += " revoke " + target;
  if (choice == kPermit) text += " grant " + target;
  if (choice == kDeny) text += " deny " + target;
  return text;
}

}  // namespace

TForm_Privileges::TForm_Privileges(const Workbench& workbench)
    : Form("Form_Privileges"), workbench_(workbench) {
  Caption = "権限の設定";
  Lbl_Notice.Caption =
      "db_owner,db_datareader,db_datawriter等のビルトイン・ロールはここでは表示されませんが、\r"
      "既に相応の権限を保持していますので、Permitを指定する必要はありません。\r"
      "ビルトイン・ロールから権限を奪う(Deny)場合のみ設定してください。";
  ListView.AddColumn("id", 48);
  ListView.AddColumn("User", 128);
  for (const Right& right : kRights) {
    ListView.AddColumn(right.column, 58, Alignment::kCenter);
    RadioGroup& group = this->*right.group;
    group.Caption = std::string(right.caption);
    group.Items.Assign({kChoices.begin(), kChoices.end()});
  }
  ListView.OnSelectItem = [this] { ListViewSelectItem(); };
  SpeedButton2.OnClick = [this] { SpeedButton2Click(); };
  SpeedButton1.OnClick = [this] { SpeedButton1Click(); };
}

void TForm_Privileges::SetUp(const std::string& database, const std::string& object,
                             const std::string& kind) {
  has_rows_ = kind == "Table" || kind == "View";
  for (const Right& right : kRights) {
    RadioGroup& group = this->*right.group;
    group.Enabled = (right.objects == Objects::kWithRows) == has_rows_;
    group.ItemIndex = -1;
  }
  Edit_User.Text = "";
  Edit_Database.Text = database;
  Edit_ObjectName.Text = object;
  FillList();
}

void TForm_Privileges::FillList() {
  const ListUpdate update(ListView);
  ListView.ClearItems();
  Query& query = workbench_.Session.ADOQuerySystem;
  query.UseDatabase(Edit_Database.Text());
  std::unordered_map<std::int64_t, std::size_t> row_of;
  for (query.Open("select * from sysusers"); !query.Eof(); query.Next()) {
    const FieldValue uid = query.FieldByName("uid");
    row_of.emplace(uid.AsInteger(), ListView.Items().size());
    ListItem row{uid.AsString(), query.FieldByName("name").AsString()};
    for (std::size_t i = 0; i < kRights.size(); ++i) row.AddCell(kNothing);
    ListView.AddItem(std::move(row));
  }
  query.Open(
      "select sysobjects.id,       sysobjects.name,       sysprotects.uid,       "
      "sysprotects.action,       sysprotects.protecttype  from sysobjects           inner join "
      "sysprotects               on sysobjects.id = sysprotects.id where name = '" +
      Edit_ObjectName.Text() + "'");
  for (; !query.Eof(); query.Next()) {
    const auto row = row_of.find(query.FieldByName("uid").AsInteger());
    const auto* const right =
        std::ranges::find(kRights, query.FieldByName("action").AsInteger(), &Right::action);
    const char* const state = StateOf(query.FieldByName("protecttype").AsInteger());
    if (row == row_of.end() || right == kRights.end() || state == nullptr) continue;
    if ((right->objects == Objects::kWithRows) != has_rows_) continue;
    const auto index = static_cast<std::size_t>(right - kRights.begin());
    ListView.SetSubItem(row->second, SubItemOf(index), state);
  }
  query.Close();
}

void TForm_Privileges::ListViewSelectItem() {
  const ListItem* const row = ListView.Selected();
  if (row == nullptr) return;
  Edit_User.Text = std::string(row->SubItem(kName));
  for (std::size_t i = 0; i < kRights.size(); ++i) {
    (this->*kRights[i].group).ItemIndex = ChoiceOf(row->SubItem(SubItemOf(i)));
  }
}

void TForm_Privileges::SpeedButton2Click() {
  const ListItem* const row = ListView.Selected();
  if (row == nullptr || Edit_User.Text() == "") return;
  std::string statements;
  for (std::size_t i = 0; i < kRights.size(); ++i) {
    statements += StatementsFor(kRights[i], Edit_ObjectName.Text(), Edit_User.Text(),
                                row->SubItem(SubItemOf(i)), (this->*kRights[i].group).ItemIndex());
  }
  if (!statements.empty()) {
    const std::string use = "use [" + Edit_Database.Text() + "]";
    RunStatements(workbench_,
                  {.statements = {use + "\r\nbegin \r\n" + statements + "end;"}, .status = use});
  }
  FillList();
  ListView.Select({});
}

void TForm_Privileges::SpeedButton1Click() { Close(); }

}  // namespace dbkeeper
