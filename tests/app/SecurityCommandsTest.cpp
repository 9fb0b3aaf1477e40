// The commands that open the dialogs of logins, users, roles and rights, and what is left when one
// of their statements fails.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::FailAtEveryStatement;
using testing::TextFields;
using Texts = std::vector<std::string>;

const Texts kLogin = {"Security", "Login"};
const Texts kServerRole = {"Security", "Server role"};
Texts InSales(const char* node) { return {"Database", "sales", node}; }

class SecurityCommandsTest : public AppFixture {
 public:
  using AppFixture::app;
  using AppFixture::ClickPath;
  using AppFixture::connection;
  using AppFixture::failing;
  using AppFixture::fake;
  using AppFixture::Status;

  SecurityCommandsTest() {
    connection.Answer("syslogins",
                      {TextFields({"name", "createdate", "updatedate", "language", "dbname",
                                   "hasaccess", "isntname", "sysadmin", "serveradmin"}),
                       {{"kato", "", "", "", "master", "1", "0", "0", "0"},
                        {"mori", "", "", "", "master", "1", "0", "0", "0"}}});
    connection.Answer("sysusers",
                      {TextFields({"uid", "name", "createdate", "updatedate", "hasdbaccess"}),
                       {{"5", "kato", "", "", "1"}}});
    connection.Answer(".dbo.sysobjects",
                      {TextFields({"name", "xtype", "crdate"}), {{"items", "U", ""}}});
    connection.Answer("sysprotects", {TextFields({"id", "name", "uid", "action", "protecttype"}),
                                      {{"77", "items", "5", "193", "205"}}});
    connection.Answer("exec sp_helprole", {TextFields({"RoleName", "RoleId"}), {{"r", "16400"}}});
    connection.Answer("sp_helpsrvrole", {TextFields({"ServerRole", "Description"}),
                                         {{"sysadmin", "System Administrators"}}});
    for (const char* procedure : {"sp_helprolemember", "sp_helpsrvrolemember"}) {
      connection.Answer(procedure, {TextFields({"DbRole", "MemberName"}), {}});
    }
    app.Start();
    Connect();
    ClickPath({"Database"});
  }

  // Chooses an item of the node's list with its first row selected; `work` goes on in the dialog.
  void Open(const Texts& path, const char* item, std::function<void()> work) {
    ClickPath(path);
    app.FormMain.ListViewMain.UserSelect({0});
    connection.statements.clear();
    GoOn(item, std::move(work));
  }
  void GoOn(const char* item, std::function<void()> work) {
    fake.windows.modal.clear();
    fake.windows.modal.emplace_back(
        [this, work = std::move(work)](Form&) { app.Guard().Run(work); });
    Choose(*app.FormMain.ListViewMain.Popup(), item);
  }
};

TEST_F(SecurityCommandsTest, ANewLoginIsEmptyAndAPasswordBelongsToTheOneSelectedLogin) {
  TForm_Login_Property& form = app.Form_Login_Property;
  int opened = 0;
  Open(kLogin, "PopupMenu_Login_Password", [&] {
    ++opened;
    EXPECT_EQ(form.Edit_loginame.Text(), "kato");
    EXPECT_TRUE(form.Edit_loginame.ReadOnly);
    form.Edit_passwd1.UserType("old");
  });
  Open(kLogin, "PopupMenu_Login_Create", [&] {
    ++opened;
    EXPECT_EQ(form.Edit_loginame.Text(), "");
    EXPECT_FALSE(form.Edit_loginame.ReadOnly);
    EXPECT_EQ(form.Edit_passwd1.Text(), "");
  });
  EXPECT_EQ(opened, 2);
  app.FormMain.ListViewMain.UserSelect({0, 1});
  GoOn("PopupMenu_Login_Password", [&] { ++opened; });
  EXPECT_EQ(opened, 2);
}

TEST_F(SecurityCommandsTest, TheOtherDialogsKnowWhatTheyAreOpenedFor) {
  int opened = 0;
  Open(InSales("User"), "PopupMenu_Users_Create", [&] {
    ++opened;
    EXPECT_EQ(app.Form_User.Edit_Database.Text(), "sales");
    EXPECT_EQ(app.Form_User.CmbBox_Login.Items.All(), (Texts{"kato", "mori"}));
    EXPECT_EQ(Status(), " *");
  });
  TFormRole& role = app.FormRole;
  Open(InSales("Role"), "PopupMenu_Roles_Create", [&] {
    ++opened;
    EXPECT_EQ(role.Edit_Database.Text(), "sales");
    EXPECT_EQ(role.Edit_RoleName.Text(), "");
    EXPECT_FALSE(role.Edit_RoleName.ReadOnly);
    EXPECT_EQ(connection.statements, Texts{});
  });
  Open(InSales("Role"), "PopupMenu_Roles_Property", [&] {
    ++opened;
    EXPECT_EQ(role.Edit_RoleName.Text(), "r");
    EXPECT_TRUE(role.Edit_RoleName.ReadOnly);
    EXPECT_EQ(connection.statements.back(), "exec sp_helprolemember    [r]");
  });
  Open(kServerRole, "PopupMenu_SvRole_Property", [&] {
    ++opened;
    EXPECT_EQ(role.Edit_Database.Text(), "master");
    EXPECT_EQ(connection.statements,
              (Texts{"use [master]", "select * from sysusers where issqlrole <> 1",
                     "exec sp_helpsrvrolemember [sysadmin]"}));
  });
  const std::pair<const char*, const char*> objects[] = {
      {"Table", "PopupMenu_Table_Privileges"},
      {"View", "PopupMenu_View_Privileges"},
      {"Procedure", "PopupMenu_Procedure_Privileges"}};
  for (const auto& [kind, item] : objects) {
    connection.Answer("from sysobjects",
                      {TextFields({"name", "xtype", "crdate"}), {{"items", "U", ""}}});
    connection.Answer("sysprotects", {TextFields({"id", "name", "uid", "action", "protecttype"}),
                                      {{"77", "items", "5", "193", "205"}}});
    Open(InSales(kind), item, [&, k = std::string(kind)] {
      ++opened;
      EXPECT_EQ(Status(), " >select * from sysprotects");
      EXPECT_EQ(app.Form_Privileges.Edit_Database.Text(), "sales");
      EXPECT_EQ(app.Form_Privileges.Edit_ObjectName.Text(), "items");
      EXPECT_EQ(app.Form_Privileges.RadioGroup_Exec.Enabled, k == "Procedure");
    });
  }
  EXPECT_EQ(opened, 7);
}

TEST_F(SecurityCommandsTest, TheRoleListSaysWhoseRolesItShows) {
  ClickPath(InSales("Role"));
  EXPECT_EQ(Status(), " >exec sp_helprole    (Use master)");
  ClickPath(InSales("User"));
  ClickPath(InSales("Role"));
  EXPECT_EQ(Status(), " >exec sp_helprole");
  ClickPath({"Management", "Process"});
  ClickPath(InSales("Role"));
  EXPECT_EQ(Status(), " >exec sp_helprole    (Use msdb)");
}

TEST_F(SecurityCommandsTest, TheLogHasNothingOfAPassword) {
  connection.Fail("sp_addlogin", "Line 1: Incorrect syntax near 's secret'.");
  Open(kLogin, "PopupMenu_Login_Create", [&] {
    TForm_Login_Property& form = app.Form_Login_Property;
    form.Edit_loginame.UserType("suzuki");
    form.Edit_passwd1.UserType("it's secret");
    form.Edit_passwd2.UserType("it's secret");
    form.SBtn_Update.UserClick();
  });
  EXPECT_EQ(fake.dialogs.errors, Texts{"Line 1: Incorrect syntax near 's secret'."});
  const std::string log = testing::FileBytes(folder / "error.log");
  EXPECT_NE(log.find("Error Message: Line 1: Incorrect syntax near '***'."), std::string::npos);
  EXPECT_EQ(log.find("secret"), std::string::npos);
}

TEST(SecurityFailures, AreShownOnceAndLeaveTheDialogOpen) {
  using Program = SecurityCommandsTest;
  struct Case {
    const char* title;
    Texts path;
    const char* item;
    std::function<void(Program&)> work;
    int statements;
  };
  const Case cases[] = {
      {"a login", kLogin, "PopupMenu_Login_Create",
       [](Program& p) {
         p.app.Form_Login_Property.Edit_loginame.UserType("suzuki");
         p.app.Form_Login_Property.Edit_passwd1.UserType("pw");
         p.app.Form_Login_Property.Edit_passwd2.UserType("pw");
         p.app.Form_Login_Property.SBtn_Update.UserClick();
       },
       2},
      {"a user", InSales("User"), "PopupMenu_Users_Create",
       [](Program& p) {
         p.app.Form_User.CmbBox_Login.UserSelect(1);
         p.app.Form_User.SBtn_Update.UserClick();
       },
       4},
      {"a role with a member", InSales("Role"), "PopupMenu_Roles_Create",
       [](Program& p) {
         p.app.FormRole.Edit_RoleName.UserType("r");
         p.app.FormRole.Edit_User.UserType("kato");
         p.app.FormRole.RadioGroup_Role.UserSelect(0);
         p.app.FormRole.SBtn_Update.UserClick();
       },
       10},
      {"rights", InSales("Table"), "PopupMenu_Table_Privileges",
       [](Program& p) {
         p.app.Form_Privileges.ListView.UserSelect({0});
         p.app.Form_Privileges.SpeedButton2.UserClick();
       },
       7},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.title);
    const int count = FailAtEveryStatement<Program>(
        [&c](Program& p) {
          p.ClickPath(c.path);
          p.app.FormMain.ListViewMain.UserSelect({0});
          p.connection.statements.clear();
        },
        [&c](Program& p) { p.GoOn(c.item, [&] { c.work(p); }); },
        [](Program& p, int place) {
          EXPECT_EQ(p.fake.dialogs.errors, Texts{"この文は失敗します。"});
          EXPECT_EQ(p.connection.statements.size(), static_cast<std::size_t>(place - 1));
          EXPECT_EQ(p.fake.windows.busy, 0);
        });
    EXPECT_EQ(count, c.statements);
  }
}

}  // namespace
}  // namespace dbkeeper
