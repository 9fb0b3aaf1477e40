#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "security/Unit_Role.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::TextFields;
using Texts = std::vector<std::string>;

constexpr const char* kUsers = "select * from sysusers where issqlrole <> 1";

class RoleTest : public ::testing::Test, protected testing::WorkbenchFixture {
 protected:
  RoleTest() {
    connection.Answer("sysusers",
                      {TextFields({"uid", "name"}), {{"1", "dbo"}, {"5", "kato"}, {"6", "mori"}}});
    connection.Answer("exec sp_helprole", {TextFields({"RoleName", "RoleId"}), {{"r", "16400"}}});
    for (const char* procedure : {"sp_helprolemember", "sp_helpsrvrolemember"}) {
      connection.Answer(procedure,
                        {TextFields({"DbRole", "MemberName"}), {{"r", "mori"}, {"r", "nobody"}}});
    }
    tree.AddRoot("server").AddChild("sales").AddChild("Role");
    tree.Select(tree.Roots()[0]->Children()[0]->Children()[0].get());
  }
  // What pressing the button sends.
  Texts Apply(const std::string& user, int choice) {
    connection.statements.clear();
    form.Edit_User.UserType(user);
    form.RadioGroup_Role.UserSelect(choice);
    form.SBtn_Update.UserClick();
    return connection.statements;
  }
  std::vector<Texts> Rows() const {
    std::vector<Texts> rows;
    for (const ListItem& item : form.ListView.Items()) {
      rows.push_back({std::string(item.Caption()), std::string(item.SubItem(0)),
                      std::string(item.SubItem(1))});
    }
    return rows;
  }
  static Texts With(Texts first, const Texts& then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
  }

  const Texts refill = {"use [sales]", kUsers, "exec sp_helprolemember    [r]"};
  const Texts refill_server = {"use [master]", kUsers, "exec sp_helpsrvrolemember [sysadmin]"};
  TFormRole form{workbench};
};

TEST_F(RoleTest, SaysWhatItIs) {
  EXPECT_EQ(form.Caption(), "Roleの設定");
  EXPECT_EQ(form.Edit_Database.EditLabel.Caption(), "Database :");
  EXPECT_EQ(form.Edit_RoleName.EditLabel.Caption(), "Role :");
  EXPECT_EQ(form.Edit_User.EditLabel.Caption(), "User :");
  EXPECT_EQ(form.RadioGroup_Role.Caption(), " Role ");
  EXPECT_EQ(form.RadioGroup_Role.Items.All(), (Texts{"参加", "非参加"}));
  EXPECT_EQ(form.SBtn_Update.Caption(), "適用");
  EXPECT_EQ(form.SBtn_Close.Caption(), "閉じる");
  const std::vector<ListColumn> columns = {
      {"id", 48}, {"User", 180}, {"Role", 58, Alignment::kCenter}};
  EXPECT_EQ(form.ListView.Columns(), columns);
}

TEST_F(RoleTest, ShowsTheUsersAndWhoIsAMember) {
  form.SetUp("sales", "r", "Database");
  EXPECT_EQ(connection.statements, refill);
  EXPECT_EQ(Rows(),
            (std::vector<Texts>{{"1", "dbo", "-"}, {"5", "kato", "-"}, {"6", "mori", "○"}}));
  EXPECT_EQ(form.Edit_Database.Text(), "sales");
  EXPECT_EQ(form.Edit_RoleName.Text(), "r");
  EXPECT_TRUE(form.Edit_RoleName.ReadOnly);
  EXPECT_EQ(form.Edit_RoleName.Color(), Color::kButtonFace);
  form.ListView.UserSelect({2});
  EXPECT_EQ(form.Edit_User.Text(), "mori");
  EXPECT_EQ(form.RadioGroup_Role.ItemIndex(), 0);
  form.ListView.UserSelect({1});
  EXPECT_EQ(form.Edit_User.Text(), "kato");
  EXPECT_EQ(form.RadioGroup_Role.ItemIndex(), 1);
}

TEST_F(RoleTest, OnlyAChangeOfAListedUserIsSent) {
  const struct {
    const char* kind;
    const char* user;
    int choice;
    const char* statement;  // empty: none
  } cases[] = {
      {"Database", "kato", 0, "exec sp_addrolemember    [r], [kato]"},
      {"Database", "kato", 1, ""},
      {"Database", "mori", 0, ""},
      {"Database", "mori", 1, "exec sp_droprolemember    [r], [mori]"},
      {"Database", "nobody", 0, ""},
      {"Database", "Kato", 0, ""},
      {"Database", "", 0, ""},
      {"Database", "kato", -1, ""},
      {"Server", "kato", 0, "exec sp_addsrvrolemember [kato], [sysadmin]"},
      {"Server", "mori", 1, "exec sp_dropsrvrolemember [mori], [sysadmin]"},
      {"Server", "mori", 0, ""},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.kind) + " " + each.user + " " + std::to_string(each.choice));
    const bool server = std::string(each.kind) == "Server";
    server ? form.SetUp("master", "sysadmin", "Server") : form.SetUp("sales", "r", "Database");
    const Texts sent = Apply(each.user, each.choice);
    const std::string statement = each.statement;
    EXPECT_EQ(sent, With(statement.empty() ? Texts{} : Texts{statement},
                         server ? refill_server : refill));
    EXPECT_EQ(form.Edit_User.Text(), "");
    EXPECT_EQ(form.RadioGroup_Role.ItemIndex(), -1);
  }
}

TEST_F(RoleTest, ANewRoleIsCreatedAndThenLocked) {
  form.SetUp("sales", "", "Database");
  EXPECT_EQ(connection.statements, Texts{});
  EXPECT_EQ(Rows(), std::vector<Texts>{});
  EXPECT_FALSE(form.Edit_RoleName.ReadOnly);
  EXPECT_EQ(form.Edit_RoleName.Color(), Color::kWindow);
  form.Edit_RoleName.UserType("r");
  EXPECT_EQ(Apply("", -1),
            With({"use [sales]", "exec sp_addrole [r]", "exec sp_helprole"}, refill));
  EXPECT_EQ(status.SimpleText(), " >exec sp_addrole [r]");
  EXPECT_EQ(list.Items().at(0).SubItem(0), "r");
  EXPECT_TRUE(form.Edit_RoleName.ReadOnly);
  EXPECT_EQ(form.Edit_RoleName.Color(), Color::kButtonFace);
  EXPECT_EQ(Apply("kato", 0), With({"exec sp_addrolemember    [r], [kato]"}, refill));
}

TEST_F(RoleTest, ANewRoleTakesAMemberAtOnce) {
  form.SetUp("sales", "", "Database");
  form.Edit_RoleName.UserType("r");
  const Texts sent = Apply("kato", 0);
  EXPECT_EQ(sent,
            With(With(With({"use [sales]", "exec sp_addrole [r]", "exec sp_helprole"}, refill),
                      {"exec sp_addrolemember    [r], [kato]"}),
                 refill));
}

TEST_F(RoleTest, AFailureStopsAtItsStatement) {
  form.SetUp("sales", "", "Database");
  form.Edit_RoleName.UserType("r");
  connection.Fail("sp_addrole ", "exists");
  EXPECT_THROW(Apply("kato", 0), ServerError);
  EXPECT_EQ(connection.statements, (Texts{"use [sales]", "exec sp_addrole [r]"}));
  EXPECT_FALSE(form.Edit_RoleName.ReadOnly);
  EXPECT_EQ(form.Edit_User.Text(), "kato");
  form.SetUp("sales", "r", "Database");
  connection.Fail("sp_addrolemember", "no");
  EXPECT_THROW(Apply("kato", 0), ServerError);
  EXPECT_EQ(connection.statements.back(), "exec sp_addrolemember    [r], [kato]");
  EXPECT_EQ(form.Edit_User.Text(), "kato");
  EXPECT_EQ(form.RadioGroup_Role.ItemIndex(), 0);
}

}  // namespace
}  // namespace dbkeeper
