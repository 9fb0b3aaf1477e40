#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::FileBytes;
using testing::PutFile;

class ConnectTest : public AppFixture {
 protected:
  ConnectTest() { app.Start(); }

  bool ItemEnabled(const std::string& name) {
    return app.FormMain.Menu("PopupMenu_SQLServer").Find("PopupMenu_SQLServer_" + name)->Enabled;
  }
  void ExpectState(bool connected) {
    EXPECT_EQ(ItemEnabled("Connect"), !connected);
    for (const char* name : {"DisConnect", "Stop", "OneStop"}) {
      EXPECT_EQ(ItemEnabled(name), connected) << name;
    }
  }
  // Connects to a named server with an SQL login.
  void ConnectTo(const std::string& server) {
    fake.windows.modal.emplace_back([this, server](Form&) {
      login.ComboBox_SQL_Server.UserType(server);
      login.Edit_loginame.UserType("sa");
      login.Edit_passwd.UserType("pw");
      app.Guard().Run([&] { login.SBtn_Update.UserClick(); });
    });
    Choose(app.FormMain.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_Connect");
  }

  TFormLogin& login = app.FormLogin;
  TFormMain& main = app.FormMain;
};

TEST_F(ConnectTest, CheckBoxSwitchesBetweenTheWindowsUserAndAnSqlLogin) {
  login.Open();
  login.Edit_passwd.UserType("secret");
  login.CheckBox_Windows.UserCheck(true);
  EXPECT_EQ(login.Edit_loginame.Text(), "tanaka");
  EXPECT_TRUE(login.Edit_loginame.ReadOnly);
  EXPECT_EQ(login.Edit_loginame.Color(), Color::kButtonFace);
  EXPECT_FALSE(login.Edit_passwd.Visible);
  EXPECT_FALSE(login.Edit_passwd.EditLabel.Visible);
  login.CheckBox_Windows.UserCheck(false);
  EXPECT_EQ(login.Edit_loginame.Text(), "");
  EXPECT_FALSE(login.Edit_loginame.ReadOnly);
  EXPECT_EQ(login.Edit_passwd.Text(), "");
  EXPECT_TRUE(login.Edit_passwd.Visible);
}

TEST_F(ConnectTest, ConnectGrowsTheTreeAndNamesTheServer) {
  ExpectState(false);
  Connect();
  ExpectState(true);
  EXPECT_EQ(connection.opened.back(),
            "Provider=SQLOLEDB;Database=master;Integrated Security=SSPI;");
  TreeNode& server = Node({});
  EXPECT_EQ(server.Text(), "SQL Server :(local)");
  std::vector<std::string> texts;
  for (const auto& child : server.Children()) {
    texts.push_back(child->Text());
    for (const auto& below : child->Children()) texts.push_back("." + below->Text());
  }
  EXPECT_EQ(texts,
            (std::vector<std::string>{"Database", "Management", ".Job", ".BackUpDevice", ".Process",
                                      ".Lock", "Security", ".Login", ".Server role"}));
  EXPECT_EQ(main.Caption(), "DBKEEPER.exe  (local)  へ接続中");
  EXPECT_EQ(fake.windows.titles.back(), "(local)  へ接続中");
  EXPECT_EQ(Status(),
            " >基本操作は、左側のTreeで操作ｶﾃｺﾞﾘｰを選択、対象の列挙を行い。　"
            "右のListから操作対象を選んで、右ｸﾘｯｸで操作ﾒﾆｭｰを表示させます");
  EXPECT_EQ(app.Session.LoginName, "tanaka");
  EXPECT_EQ(login.Edit_loginame.Text(), "");
  EXPECT_FALSE(std::filesystem::exists(folder / "DBKEEPER.ini"));
}

TEST_F(ConnectTest, OtherServersAreRememberedAndOfferedNextTime) {
  ConnectTo("PC02\\inst");
  EXPECT_EQ(FileBytes(folder / "DBKEEPER.ini"), "[SQLServer]\r\nPC02\\inst=Connected\r\n");
  login.FormCreate();
  EXPECT_EQ(login.ComboBox_SQL_Server.Items.All(),
            (std::vector<std::string>{"(local)", "PC02\\inst"}));
  EXPECT_EQ(login.ComboBox_SQL_Server.Text(), "(local)");
}

TEST_F(ConnectTest, SettingsThatCannotBeWrittenAreToldAndTheConnectionStands) {
  std::filesystem::create_directory(folder / "DBKEEPER.ini");
  ConnectTo("PC02");
  EXPECT_EQ(fake.dialogs.errors.size(), 1U);
  ExpectState(true);
}

TEST_F(ConnectTest, FailedOpenLeavesTheDialogOpenWithItsInputs) {
  connection.open_failure = ServerMessage{.number = 18456, .text = "Login failed for user 'sa'."};
  bool open = false;
  std::string typed;
  fake.windows.modal.emplace_back([&](Form&) {
    login.Edit_loginame.UserType("sa");
    app.Guard().Run([&] { login.SBtn_Update.UserClick(); });
    open = login.Visible;
    typed = login.Edit_loginame.Text();
  });
  Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_Connect");
  EXPECT_TRUE(open);
  EXPECT_EQ(typed, "sa");
  EXPECT_EQ(fake.dialogs.errors, (std::vector<std::string>{"Login failed for user 'sa'."}));
  ExpectState(false);
  EXPECT_EQ(Node({}).Text(), "SQL Server");
  EXPECT_EQ(fake.windows.busy, 0);
}

TEST_F(ConnectTest, CancelForgetsLoginAndPassword) {
  app.Session.LoginName = "sa";
  app.Session.Password = "pw";
  fake.windows.modal.emplace_back([&](Form&) { login.Sbtn_Cancel.UserClick(); });
  Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_Connect");
  EXPECT_EQ(app.Session.LoginName, "");
  EXPECT_EQ(app.Session.Password, "");
  EXPECT_FALSE(login.Visible);
}

TEST_F(ConnectTest, DisconnectEmptiesTreeAndListWhicheverRootIsSelected) {
  Connect();
  ClickPath({"Database"});
  Click(*main.TreeView.Roots()[1]);
  Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_DisConnect");
  EXPECT_FALSE(connection.IsOpen());
  EXPECT_FALSE(Node({}).HasChildren());
  EXPECT_TRUE(main.ListViewMain.Items().empty());
  EXPECT_TRUE(main.ListViewMain.Columns().empty());
  EXPECT_EQ(main.ListViewMain.Popup(), nullptr);
  EXPECT_EQ(main.Caption(), "DBKEEPER.exe");
  ExpectState(false);
}

TEST_F(ConnectTest, StopAndPauseAskFirstAndThenDisconnect) {
  struct Case {
    const char *item, *question, *status;
  };
  const Case cases[] = {
      {"PopupMenu_SQLServer_Stop", "サーバーを停止しますが、よろしいですか?", " >shutdown"},
      {"PopupMenu_SQLServer_OneStop", "サーバーを一時停止しますが、よろしいですか?",
       " >net.exe pause mssqlserver"},
  };
  for (const Case& c : cases) {
    Connect();
    Choose(main.Menu("PopupMenu_SQLServer"), c.item);
    ExpectState(true);
    const Question& question = fake.dialogs.questions.back();
    EXPECT_EQ(question.text, c.question);
    EXPECT_EQ(question.caption, "注意");
    EXPECT_EQ(question.icon, Icon::kStop);
    EXPECT_EQ(question.default_answer, Answer::kCancel);
    fake.dialogs.answers.push_back(Answer::kOk);
    Choose(main.Menu("PopupMenu_SQLServer"), c.item);
    EXPECT_EQ(Status(), c.status);
    ExpectState(false);
  }
  EXPECT_EQ(connection.statements, (std::vector<std::string>{"shutdown"}));
  EXPECT_EQ(fake.shell.commands, (std::vector<std::string>{"net pause mssqlserver"}));
}

TEST_F(ConnectTest, ServerToolsAreOpenedAndNamedInTheStatusBar) {
  const struct {
    const char *item, *program, *status;
  } cases[] = {
      {"PopupMenuServerCfg_SvrNetCn", "SVRNETCN.exe",
       " >SVRNETCN.exe  (MSDEの規定値はﾈｯﾄﾜｰｸ接続が無効です, "
       "ﾈｯﾄﾜｰｸ経由で使用する場合はTCP/IP or 名前つきパイプを有効にして下さい)"},
      {"PopupMenuServerCfg_OdbcAd", "odbcad32.exe", " >odbcad32.exe"},
  };
  for (const auto& c : cases) {
    Choose(main.Menu("PopupMenuServerCfg"), c.item);
    EXPECT_EQ(fake.shell.opened.back(), c.program);
    EXPECT_EQ(Status(), c.status);
  }
}

TEST_F(ConnectTest, FailedShutdownKeepsTheConnection) {
  Connect();
  connection.Fail("shutdown", "denied");
  fake.dialogs.answers.push_back(Answer::kOk);
  Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_Stop");
  EXPECT_EQ(fake.dialogs.errors, (std::vector<std::string>{"denied"}));
  ExpectState(true);
  EXPECT_EQ(fake.windows.busy, 0);
}

TEST_F(ConnectTest, AServerThatIsGoneHasStoppedOnlyIfItSaidSo) {
  struct Case {
    int number;
    bool stopped;
  };
  for (const Case& c : {Case{6006, true}, Case{20017, false}}) {
    Connect();
    connection.Answer("shutdown",
                      {.error = ServerMessage{.number = c.number, .text = "gone"}, .breaks = true});
    fake.dialogs.answers.push_back(Answer::kOk);
    fake.dialogs.messages.clear();
    Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_Stop");
    EXPECT_TRUE(fake.dialogs.errors.empty());
    EXPECT_EQ(Status(), c.stopped ? " >shutdown" : " *") << c.number;
    EXPECT_EQ(fake.dialogs.messages.size(), c.stopped ? 0U : 1U) << c.number;
    ExpectState(false);
  }
}

TEST_F(ConnectTest, ALostConnectionIsShownAndTheNextOneStartsAnew) {
  Connect();
  ClickPath({"Database"});
  connection.Answer("sp_help_job", {.error = ServerMessage{.text = "gone"}, .breaks = true});
  TFormExecSQL& window = app.FormExecSQL;
  window.OpenForDatabase("sales");
  EXPECT_EQ(window.Label_Server.Caption(), "(local)");
  ClickPath({"Management", "Job"});
  EXPECT_EQ(fake.dialogs.errors.size(), 1U);
  EXPECT_EQ(Node({}).Text(), "SQL Server :(local) (切断されました)");
  EXPECT_EQ(main.Caption(), "DBKEEPER.exe  (local)  との接続が切れました");
  EXPECT_EQ(window.Label_Server.Caption(), "");
  EXPECT_EQ(window.ComboBox_DatabaseName.Items.Count(), 0U);
  ExpectState(false);
  Connect();
  ExpectState(true);
  EXPECT_TRUE(main.ListViewMain.Columns().empty());
  EXPECT_EQ(Node({}).Text(), "SQL Server :(local)");
  EXPECT_EQ(window.Label_Server.Caption(), "(local)");
}

TEST_F(ConnectTest, AResultOfTheQueryWindowEndsWithItsServer) {
  Connect();
  ClickPath({"Database"});
  TFormExecSQL& window = app.FormExecSQL;
  window.OpenForDatabase("sales");
  connection.Answer("select 1", {testing::TextFields({"a"}), {{"1"}}});
  window.MemoSQL.Text = "select 1";
  app.Guard().Run([&] { window.Sbtn_Select.UserClick(); });
  ASSERT_NE(window.DBGrid1.Source()->State(), GridState::kClosed);
  Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_DisConnect");
  EXPECT_EQ(window.DBGrid1.Source()->State(), GridState::kClosed);
  EXPECT_FALSE(window.Sbtn_Select.Down);
  EXPECT_EQ(window.ComboBox_DatabaseName.Text(), "");
  EXPECT_EQ(window.Label_Server.Caption(), "");
  EXPECT_EQ(window.MemoSQL.Text(), "select 1");
}

TEST_F(ConnectTest, ServerNamesAreTrimmedNeverBlankAndRememberedOnceWhateverTheirCase) {
  ConnectTo("  ");
  EXPECT_TRUE(connection.opened.empty());
  EXPECT_EQ(fake.dialogs.messages, (std::vector<std::string>{"サーバー名を入力してください。"}));
  ConnectTo(" PC02 ");
  EXPECT_EQ(app.Session.ServerName, "PC02");
  Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_DisConnect");
  ConnectTo("pc02");
  EXPECT_EQ(FileBytes(folder / "DBKEEPER.ini"), "[SQLServer]\r\nPC02=Connected\r\n");
}

}  // namespace
}  // namespace dbkeeper
