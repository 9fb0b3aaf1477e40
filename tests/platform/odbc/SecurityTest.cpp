// Logins, users, roles and rights over the real wire: what an operator does in the dialogs, and
// what another client then may and may not do.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "catalog/PermissionScript.h"
#include "platform/host/IconvCodePage.h"
#include "platform/odbc/OdbcConnection.h"
#include "tests/support/AppFixture.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

using Texts = std::vector<std::string>;

struct HasServer {
  HasServer() { other.Open(server.ConnectionString()); }
  // The first value that the other client, an administrator, reads.
  std::string Value(const std::string& query) {
    const auto reader = other.Query(query);
    return reader->Next() ? std::string(reader->Text(0)) : "nothing";
  }
  // All rows, cells separated by blanks.
  Texts Rows(const std::string& query) {
    Texts rows;
    const auto reader = other.Query(query);
    while (reader->Next()) {
      std::string& row = rows.emplace_back();
      for (std::size_t i = 0; i < reader->Fields().size(); ++i) {
        row += (i == 0 ? "" : " ") + std::string(reader->Text(i));
      }
    }
    return rows;
  }
  // A table and a view of the database 在庫.
  void MakeTables() {
    for (const char* statement :
         {"create database [在庫]", "use [在庫]", "create table [品目] (番号 int, 数量 int)",
          "insert [品目] values (1, 120)", "create view [一覧] as select 番号 from [品目]",
          "create procedure [集計] as select 番号 from [品目]"}) {
      other.Execute(statement);
    }
  }

  LocalServer server;
  OdbcConnection other{OdbcOptions{}, server.Endpoint()};
};

// What logging in as an SQL login and then running a statement ends with: 0, or the number of the
// error.
int Try(LocalServer& server, const std::string& login, const std::string& password,
        const std::string& statement) {
  OdbcConnection connection{OdbcOptions{}, server.Endpoint()};
  try {
    connection.Open("Provider=SQLOLEDB;Database=master;User ID=" + login + ";Password=" + password +
                    ";Data Source=" + server.DataSource());
    connection.Execute(statement);
    return 0;
  } catch (const ServerError& error) {
    return error.Number();
  }
}

struct HasServerAndConnection : HasServer {
  OdbcConnection connection{OdbcOptions{}, server.Endpoint()};
};

const Texts kLogins = {"Security", "Login"};
const Texts kServerRoles = {"Security", "Server role"};

class SecurityTest : protected HasServerAndConnection, public testing::AppTest {
 protected:
  SecurityTest() : AppTest(connection) {
    MakeTables();
    app.Start();
    Connect();
    ClickPath({"Database"});
  }

  static Texts In(const std::string& node) { return {"Database", "在庫", node}; }
  const ListItem* RowOf(const std::string& name) {
    const auto found = std::ranges::find_if(
        list.Items(), [&](const ListItem& row) { return row.SubItem(0) == name; });
    return found == list.Items().end() ? nullptr : &*found;
  }
  bool Lists(const std::string& name) { return RowOf(name) != nullptr; }
  void SelectRow(const std::string& name) {
    const ListItem* const row = RowOf(name);
    ASSERT_NE(row, nullptr) << name;
    list.UserSelect({static_cast<std::size_t>(row - list.Items().data())});
  }
  // Chooses an item of the node's list, which opens a dialog where `work` goes on.
  void Open(const Texts& path, const std::string& row, const char* item,
            std::function<void()> work) {
    ClickPath(path);
    if (!row.empty()) SelectRow(row);
    fake.windows.modal.emplace_back(
        [this, work = std::move(work)](Form&) { app.Guard().Run(work); });
    fake.dialogs.errors.clear();
    Choose(*list.Popup(), item);
  }
  // Says OK to the question before a drop.
  void Drop(const Texts& path, const std::string& row, const char* item) {
    ClickPath(path);
    SelectRow(row);
    fake.dialogs.answers = {Answer::kOk};
    fake.dialogs.errors.clear();
    Choose(*list.Popup(), item);
  }
  std::string LastError() const {
    return fake.dialogs.errors.empty() ? "" : fake.dialogs.errors.back();
  }

  void AddLogin(const std::string& name, const std::string& password) {
    Open(kLogins, "", "PopupMenu_Login_Create", [&] {
      login.Edit_loginame.UserType(name);
      login.Edit_passwd1.UserType(password);
      login.Edit_passwd2.UserType(password);
      login.SBtn_Update.UserClick();
    });
  }
  void AddUser(const std::string& name) {
    Open(In("User"), "", "PopupMenu_Users_Create", [&] {
      user.CmbBox_Login.UserSelect(user.CmbBox_Login.Items.IndexOf(name));
      user.SBtn_Update.UserClick();
    });
  }
  static void ChooseIn(ListView& rows, std::size_t column, const std::string& text) {
    for (std::size_t i = 0; i < rows.Items().size(); ++i) {
      if (rows.Items()[i].Cell(column) == text) return rows.UserSelect({i});
    }
    FAIL() << text;
  }
  using Choices = std::vector<std::pair<RadioGroup*, int>>;
  void SetRights(const Texts& path, const std::string& object, const char* item,
                 const std::string& who, const Choices& choices) {
    Open(path, object, item, [&] {
      ChooseIn(rights.ListView, 1, who);
      for (const auto& [group, choice] : choices) group->UserSelect(choice);
      rights.SpeedButton2.UserClick();
    });
    EXPECT_EQ(LastError(), "");
  }

  ListView& list = app.FormMain.ListViewMain;
  TForm_Login_Property& login = app.Form_Login_Property;
  TForm_User& user = app.Form_User;
  TFormRole& role = app.FormRole;
  TForm_Privileges& rights = app.Form_Privileges;
};

TEST_F(SecurityTest, ALoginMadeInTheDialogsDoesWhatItMayAndNoMore) {
  const auto attempt = [this](const char* statement) {
    return Try(server, "鈴木", "Suzuki#1", statement);
  };
  AddLogin("鈴木", "Suzuki#1");
  EXPECT_TRUE(Lists("鈴木"));
  EXPECT_EQ(attempt("select 1"), 0);
  EXPECT_EQ(attempt("use [在庫]"), 916);
  AddUser("鈴木");
  EXPECT_TRUE(Lists("鈴木"));
  EXPECT_EQ(attempt("select * from 在庫..品目"), 229);

  constexpr const char* kTableItem = "PopupMenu_Table_Privileges";
  SetRights(In("Table"), "品目", kTableItem, "鈴木",
            {{&rights.RadioGroup_Select, 0}, {&rights.RadioGroup_Update, 1}});
  EXPECT_EQ(attempt("select * from 在庫..品目"), 0);
  EXPECT_EQ(attempt("update 在庫..品目 set 数量 = 1"), 229);
  EXPECT_EQ(attempt("select * from 在庫..一覧"), 229);
  SetRights(In("View"), "一覧", "PopupMenu_View_Privileges", "鈴木",
            {{&rights.RadioGroup_Select, 0}});
  EXPECT_EQ(attempt("select * from 在庫..一覧"), 0);
  SetRights(In("Procedure"), "集計", "PopupMenu_Procedure_Privileges", "鈴木",
            {{&rights.RadioGroup_Exec, 0}});
  EXPECT_EQ(Rows("select action, protecttype from 在庫..sysprotects where action = 224"),
            Texts{"224 205"});

  // Through a role: a denial beats what the user itself was granted.
  Open(In("Role"), "", "PopupMenu_Roles_Create", [&] {
    role.Edit_RoleName.UserType("営業");
    role.SBtn_Update.UserClick();
    ChooseIn(role.ListView, 1, "鈴木");
    role.RadioGroup_Role.UserSelect(0);
    role.SBtn_Update.UserClick();
  });
  EXPECT_EQ(LastError(), "");
  EXPECT_TRUE(Lists("営業"));
  SetRights(In("Table"), "品目", kTableItem, "営業", {{&rights.RadioGroup_Select, 1}});
  EXPECT_EQ(attempt("select * from 在庫..品目"), 229);
  SetRights(In("Table"), "品目", kTableItem, "営業", {{&rights.RadioGroup_Select, 2}});
  EXPECT_EQ(attempt("select * from 在庫..品目"), 0);
  SetRights(In("Table"), "品目", kTableItem, "鈴木",
            {{&rights.RadioGroup_Select, 2}, {&rights.RadioGroup_Update, 2}});
  EXPECT_EQ(attempt("select * from 在庫..品目"), 229);
  EXPECT_EQ(Value("select count(*) from 在庫..sysprotects where id = object_id('在庫..品目')"),
            "0");

  Open(kLogins, "鈴木", "PopupMenu_Login_Password", [&] {
    login.Edit_passwd1.UserType("Suzuki#2");
    login.Edit_passwd2.UserType("Suzuki#2");
    login.SBtn_Update.UserClick();
  });
  EXPECT_EQ(attempt("select 1"), 18456);
  EXPECT_EQ(Try(server, "鈴木", "Suzuki#2", "select 1"), 0);
  // A server role takes users of master.
  other.Execute("use master");
  other.Execute("exec sp_grantdbaccess [鈴木]");
  Open(kServerRoles, "dbcreator", "PopupMenu_SvRole_Property", [&] {
    ChooseIn(role.ListView, 1, "鈴木");
    role.RadioGroup_Role.UserSelect(0);
    role.SBtn_Update.UserClick();
    EXPECT_EQ(role.ListView.Items().back().SubItem(1), "○");
  });
  EXPECT_EQ(Try(server, "鈴木", "Suzuki#2", "create database 鈴木の"), 0);
}

TEST_F(SecurityTest, WhatTheServerRefusesIsToldInItsWordsAndTheListIsStillRight) {
  AddLogin("kato", "Kato#1");
  AddUser("kato");
  other.Execute("use [在庫]");
  other.Execute("exec sp_addrole [営業] exec sp_addrolemember [営業], [kato]");
  other.Execute("create table 私物 (a int) exec sp_changeobjectowner '私物', 'kato'");

  AddLogin("kato", "x");
  EXPECT_EQ(LastError(), "The login 'kato' already exists.");
  AddLogin("a]b", "x");
  EXPECT_NE(LastError(), "");
  AddLogin("suzuki", "it's");
  EXPECT_NE(LastError(), "");
  EXPECT_EQ(login.Edit_passwd1.Text(), "");
  Open(kLogins, "", "PopupMenu_Login_Create", [&] {
    login.Edit_loginame.UserType("NOWHERE\\nobody");
    login.CheckBox_Windows.UserCheck(true);
    login.SBtn_Update.UserClick();
  });
  EXPECT_EQ(LastError(),
            "Windows NT user or group 'NOWHERE\\nobody' not found. Check the name again.");
  Drop(kLogins, "kato", "PopupMenu_Login_drop");
  EXPECT_EQ(
      LastError().substr(0, 60),
      std::string("Login 'kato' is aliased or mapped to a user in one or more d").substr(0, 60));
  Drop(kLogins, LocalServer::kLogin, "PopupMenu_Login_drop");
  EXPECT_EQ(LastError(), "Could not drop login 'tester' as the user is currently logged in.");
  for (const char* name : {"kato", LocalServer::kLogin, "sa"}) EXPECT_TRUE(Lists(name)) << name;
  for (const char* name : {"a]b", "suzuki"}) EXPECT_FALSE(Lists(name)) << name;

  AddUser("kato");
  EXPECT_EQ(LastError(), "User or role 'kato' already exists in the current database.");
  Drop(In("User"), "kato", "PopupMenu_Users_Drop");
  EXPECT_EQ(LastError(), "The user owns objects in the database and cannot be dropped.");
  EXPECT_TRUE(Lists("kato"));
  Drop(In("Role"), "営業", "PopupMenu_Roles_Drop");
  EXPECT_EQ(LastError(), "The role has members. It must be empty before it can be dropped.");
  EXPECT_TRUE(Lists("営業"));
  // No part of a password is in the log.
  const std::string log = testing::FileBytes(folder / "error.log");
  EXPECT_NE(log.find("Error Message: "), std::string::npos);
  EXPECT_EQ(log.find("near 's'"), std::string::npos) << log;
}

// The program on another server, where the query window runs a script.
struct HasOtherServer {
  HasServer there;
  OdbcConnection connection_there{OdbcOptions{}, there.server.Endpoint()};
};

class ScriptedServer : private HasOtherServer, public testing::AppTest {
 public:
  ScriptedServer() : AppTest(connection_there) {}
  void TestBody() override {}

  HasServer& Server() { return there; }
  void RunScript(const std::filesystem::path& file) {
    app.Start();
    Connect();
    ClickPath({"Database"});
    app.FormExecSQL.OpenForDatabase("master");
    host::IconvCodePage code_page;
    app.FormExecSQL.MemoSQL.UserType(*code_page.ToUtf8(testing::FileBytes(file)));
    app.Guard().Run([&] { app.FormExecSQL.SpeedButton3.UserClick(); });
  }
  const Texts& Errors() const { return fake.dialogs.errors; }
};

// A machine with the real code page.
struct Machine : testing::FakeHost {
  host::IconvCodePage japanese;
  const Host with_japanese{shell,  dialogs, clock, random,  japanese,
                           locale, windows, disk,  progress};
};

TEST(PermissionScriptOverTheWire, GivesAnotherServerTheSameUsersRolesAndRights) {
  HasServer here;
  ScriptedServer scripted;
  HasServer& there = scripted.Server();
  const auto prepare = [](HasServer& server) {
    server.MakeTables();
    for (const char* name : {"kato", "mori"}) {
      server.other.Execute(std::string("exec sp_addlogin ") + name + ", 'x'");
    }
    for (const char* role : {"課", "部"}) {
      server.other.Execute(std::string("exec sp_addrole ") + role);
    }
  };
  prepare(here);
  prepare(there);
  for (const char* statement :
       {"exec sp_grantdbaccess mori", "exec sp_grantdbaccess kato",
        "exec sp_addrolemember 課, kato", "exec sp_addrolemember 部, 課",
        "exec sp_addrolemember db_datareader, mori", "grant select, insert on 品目 to kato",
        "deny update, delete on 品目 to 課", "grant select on 一覧 to 部",
        "grant execute on 集計 to mori"}) {
    here.other.Execute(statement);
  }
  // One user is there already, with other rights, and the sample's users have lost theirs.
  for (const char* statement :
       {"exec sp_grantdbaccess kato", "deny select on 品目 to kato", "use [販売管理]",
        "revoke select, insert, update, delete on 受注 from 営業"}) {
    there.other.Execute(statement);
  }

  Machine machine;
  OdbcConnection connection{OdbcOptions{}, here.server.Endpoint()};
  connection.Open(here.server.ConnectionString());
  Query query(connection, machine.locale, {});
  testing::TemporaryFolder folder;
  WritePermissionScript(query, machine.with_japanese, folder / "permissions.sql");
  scripted.RunScript(folder / "permissions.sql");
  // Only who was no user before cannot be removed first.
  EXPECT_EQ(scripted.Errors(), Texts{"User 'mori' does not exist in the current database."});

  for (const std::string database : {"在庫", "販売管理"}) {
    for (const std::string list :
         {"select name from sysusers where issqlrole <> 1 and hasdbaccess = 1 order by name",
          "select name from sysusers where issqlrole = 1 order by name",
          "select r.name, m.name from sysmembers s join sysusers r on r.uid = s.groupuid join "
          "sysusers m on m.uid = s.memberuid order by r.name, m.name",
          "select o.name, u.name, p.action, p.protecttype from sysprotects p join sysobjects o on "
          "o.id = p.id join sysusers u on u.uid = p.uid order by o.name, u.name, p.action"}) {
      for (HasServer* server : {&here, &there}) server->other.Execute("use [" + database + "]");
      const Texts wanted = here.Rows(list);
      EXPECT_FALSE(wanted.empty()) << list;
      EXPECT_EQ(there.Rows(list), wanted) << database << ": " << list;
    }
  }
}

}  // namespace
}  // namespace dbkeeper
