#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::TextFields;

class NodeDispatchTest : public AppFixture {
 protected:
  NodeDispatchTest() {
    app.Start();
    Connect();
    ClickPath({"Database"});
    connection.statements.clear();
  }
  std::string Columns() const {
    std::string text;
    for (const ListColumn& column : main.ListViewMain.Columns()) {
      text += (text.empty() ? "" : ", ") + column.Caption + " " + std::to_string(column.Width) +
              (column.Align == Alignment::kRight ? "R" : "");
    }
    return text;
  }

  TFormMain& main = app.FormMain;
};

TEST_F(NodeDispatchTest, EveryNodeRunsItsStatementsAndGetsItsMenuAndStatus) {
  struct Case {
    std::vector<std::string> path;
    std::vector<std::string> statements;
    const char* popup;  // null: none
    const char* status;
    const char* columns;  // caption and width, "R" behind those on the right
  };
  const std::vector<std::string> database = {"Database", "sales"};
  const auto below = [&](const char* text) {
    std::vector<std::string> path = database;
    path.emplace_back(text);
    return path;
  };
  const Case cases[] = {
      {{"Database"},
       {"select * from master.dbo.sysdatabases"},
       "PopupMenu_Databases",
       " >select * from master.dbo.sysdatabases",
       "dbid 48R, Name 96, 状態 118, status 82R, status2 82R, 作成日 118, ファイル名 340"},
      {database,
       {"select * from master.dbo.sysdatabases where name = 'sales'", "use [sales]",
        "EXEC sp_spaceused", "sp_helpdb [sales]"},
       "PopupMenu_Minimum",
       " >select * from master.dbo.sysdatabases / exec sp_spaceused",
       "No. 32, 項目 192, 内容 240"},
      {below("User"),
       {"use [sales]\r\nselect * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)"},
       "PopupMenu_Users",
       " >select * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)",
       "uid 48, name 148, createdate 118, updatedate 118, ｱｸｾｽ可 64"},
      {below("Role"),
       {"exec sp_helprole"},
       "PopupMenu_Roles",
       " >exec sp_helprole",
       "RoleId 48, RoleName 240"},
      {{"Management", "Job"},
       {"use msdb", "exec sp_help_job"},
       "PopupMenu_Job",
       " >EXEC sp_help_job            (USE msdb)",
       "job_id 16, name 120, 有効 36, 稼動 52, 前回 36, 説明 220, 次回実行日時 104, "
       "最終実行日時 104, 作成日 118, 更新日 118"},
      {{"Management", "BackUpDevice"},
       {"select * from master.dbo.sysdevices where status=16"},
       "PopupMenu_BackUp",
       " >select * from master.dbo.sysdevices where status=16",
       "No. 32, Name 128, Path 360"},
      {{"Management", "Process"},
       {"use msdb", "exec sp_who"},
       "PopupMenu_Process_Lock",
       " >EXEC exec sp_who      (USE master)",
       "spid 36, ecid 36, status 96, loginame 64, hostname 96, blk 36, dbname 64, cmd 132"},
      {{"Management", "Lock"},
       {"use msdb", "exec sp_lock"},
       "PopupMenu_Process_Lock",
       " >EXEC sp_lock          (USE master)",
       "spid 48, dbid 48, ObjId 64, IndId 48, Type 48, Resource 96, Mode 32, Status 96"},
      {below("Table"),
       {"select * from [sales].dbo.sysobjects where (xtype='S')or       (xtype='U') order by name"},
       "PopupMenu_Table",
       " >select * from sysobjects  where(xtype='S')or(xtype='U')",
       "No. 32R, Name 100, xtype 48, 作成日 118"},
      {below("View"),
       {"select * from [sales].dbo.sysobjects where xtype='V' order by name"},
       "PopupMenu_View",
       " >select * from sysobjects  where xtype='V'",
       "No. 32R, Name 100, xtype 48, 作成日 118"},
      {below("Procedure"),
       {"select * from [sales].dbo.sysobjects where (xtype='P')or       (xtype='X') order by name"},
       "PopupMenu_Procedure",
       " >select * from sysobjects  where(xtype='X')or(xtype='P')",
       "No. 32R, Name 100, xtype 48, 作成日 118"},
      {below("Backup"),
       {"use msdb",
        "select backup_set_id,media_set_id,name,description,backup_start_date,       "
        "backup_finish_date,type,backup_size,database_name  from backupset where database_name = "
        "'sales' order by media_set_id,backup_set_id desc"},
       "PopupMenu_DB_BackUp",
       " >select * from backupset   (msdb)",
       "id 32R, Media 42R, Name 118, 説明 220, 作成日 118, Size 84R"},
      {{"Security", "Login"},
       {"select * from master.dbo.syslogins"},
       "PopupMenu_Login",
       " >select * from master.dbo.syslogins",
       "No. 32, Name 180, 作成日 118, 更新日 118, 言語 64, dbname 64, ｱｸｾｽ許可 72, NTﾕｰｻﾞ 64, "
       "sysadmin 64, serveradmin 84"},
      {{"Security", "Server role"},
       {"exec sp_helpsrvrole"},
       "PopupMenu_SvRole",
       " >exec sp_helpsrvrolemember",
       "No. 32, ServerRole 96, Description 240"},
      {{"Management"}, {}, nullptr, " >", ""},
      {{"Security"}, {}, nullptr, " >", ""},
  };
  for (const auto& field_set : std::vector<std::pair<std::string, std::vector<std::string>>>{
           {"sp_spaceused", {"database_size", "unallocated space"}},
           {"sp_helpdb", {"status"}},
           {"sysusers", {"uid", "name", "createdate", "updatedate", "hasdbaccess"}},
           {"sp_helprole", {"RoleId", "RoleName"}},
           {"sp_helpsrvrole", {"ServerRole", "Description"}},
           {"sp_help_job",
            {"job_id", "name", "enabled", "current_execution_status", "last_run_outcome",
             "description", "next_run_date", "next_run_time", "last_run_date", "last_run_time",
             "date_created", "date_modified"}},
           {"sysdevices", {"name", "phyname"}},
           {"sp_who", {"spid", "ecid", "status", "loginame", "hostname", "blk", "dbname", "cmd"}},
           {"sp_lock", {"spid", "dbid", "ObjId", "IndId", "Type", "Resource", "Mode", "Status"}},
           {"sysobjects", {"name", "xtype", "crdate"}},
           {"backupset",
            {"backup_set_id", "media_set_id", "name", "description", "backup_start_date",
             "backup_size"}},
           {"syslogins",
            {"name", "createdate", "updatedate", "language", "dbname", "hasaccess", "isntname",
             "sysadmin", "serveradmin"}}}) {
    connection.Answer(field_set.first, {TextFields(field_set.second), {}});
  }
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path.back());
    connection.statements.clear();
    ClickPath(c.path);
    EXPECT_EQ(connection.statements, c.statements);
    const PopupMenu* const popup = main.ListViewMain.Popup();
    EXPECT_EQ(popup == nullptr ? std::string() : popup->Name, c.popup == nullptr ? "" : c.popup);
    EXPECT_EQ(Status(), c.status);
    EXPECT_EQ(Columns(), c.columns);
  }
  EXPECT_TRUE(fake.dialogs.errors.empty());
}

TEST_F(NodeDispatchTest, ServerRootShowsPropertiesOnlyWhileConnected) {
  connection.Answer(
      "SERVERPROPERTY",
      {TextFields({"MachineName", "ServerName", "Edition", "ProductLevel", "ProductVersion",
                   "SecurityMode", "IsSingleUser", "LicenseType", "NumLicenses"}),
       {{"PC01", "PC01", "MSDE", "SP4", "8.00.2039", "0", "0", "DISABLED", {}}}});
  Click(Node({}));
  ASSERT_EQ(main.ListViewMain.Items().size(), 9U);
  EXPECT_EQ(main.ListViewMain.Items()[4], (ListItem{"5", "ProductVersion", "8.00.2039"}));
  EXPECT_EQ(main.ListViewMain.Popup(), main.PopupMenuServerCfg.get());
  Choose(*main.PopupMenu_SQLServer, "PopupMenu_SQLServer_DisConnect");
  Click(Node({}));
  EXPECT_TRUE(main.ListViewMain.Columns().empty());
  EXPECT_EQ(main.ListViewMain.Popup(), nullptr);
}

TEST_F(NodeDispatchTest, ConfigListsTheWizardsAndTheSwitch) {
  main.Workbench().Switches.Advanced = true;
  Click(*main.TreeView.Roots()[1]);
  const ListView& list = main.ListViewMain;
  ASSERT_EQ(list.Items().size(), 5U);
  EXPECT_EQ(list.Columns()[2], (ListColumn{"設定", 340, Alignment::kLeft}));
  EXPECT_EQ(list.Items()[0].Caption(), "WIZ_BK01");
  EXPECT_EQ(list.Items()[4], (ListItem{"ADVANCED", "拡張オプション", "On"}));
  EXPECT_EQ(list.Popup(), main.PopupMenu_Management.get());
  EXPECT_EQ(Status(), " >");
}

TEST_F(NodeDispatchTest, DatabaseNamedLikeANodeIsStillADatabase) {
  Node({"Database"}).AddChild("Job");
  connection.Answer("sp_spaceused", {TextFields({"database_size", "unallocated space"}), {}});
  connection.Answer("sp_helpdb", {TextFields({"status"}), {}});
  ClickPath({"Database", "Job"});
  EXPECT_EQ(connection.statements.back(), "sp_helpdb [Job]");
}

TEST_F(NodeDispatchTest, TablesGetDescriptionColumnsOnlyInAdvancedMode) {
  main.Workbench().Switches.Advanced = true;
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}), {}});
  connection.Answer("fn_listextendedproperty", {TextFields({"objname", "name", "value"}), {}});
  ClickPath({"Database", "sales", "Table"});
  EXPECT_EQ(Columns(), "No. 32R, Name 100, Description 120, Note 180, xtype 48, 作成日 118");
  ClickPath({"Database", "sales", "View"});
  EXPECT_EQ(main.ListViewMain.Columns().size(), 4U);
}

TEST_F(NodeDispatchTest, ServerMenuIsOfferedOnBothRootsAndNowhereElse) {
  const auto offered = [this](TreeNode& node) {
    main.TreeView.Select(&node);
    main.TreeView.UserRightMouseDown();
    return main.TreeView.Popup() == main.PopupMenu_SQLServer.get();
  };
  EXPECT_TRUE(offered(Node({})));
  EXPECT_TRUE(offered(*main.TreeView.Roots()[1]));
  EXPECT_FALSE(offered(Node({"Database"})));
}

TEST_F(NodeDispatchTest, StatusShowsTheStarBeforeTheStatementGoesOut) {
  std::vector<std::string> painted;
  fake.windows.painted = [&] {
    painted.push_back(Status());
    EXPECT_TRUE(connection.statements.empty());
  };
  ClickPath({"Database"});
  EXPECT_EQ(painted, (std::vector<std::string>{" *"}));
}

TEST_F(NodeDispatchTest, ErrorInTheMiddleKeepsTheRowsAndShowsTheServersWords) {
  connection.Answer("sysdevices", {.fields = TextFields({"name", "phyname"}),
                                   .rows = {{"dev1", "C:\\1.bak"}},
                                   .error = ServerMessage{.number = 1, .text = "broken pipe"}});
  ClickPath({"Management", "BackUpDevice"});
  EXPECT_EQ(main.ListViewMain.Items().size(), 1U);
  EXPECT_EQ(fake.dialogs.errors, (std::vector<std::string>{"broken pipe"}));
  EXPECT_EQ(fake.windows.busy, 0);
  std::size_t told = 0;
  const Subscription subscription =
      main.ListViewMain.Changed.Connect([&](ListView::Change, std::size_t) { ++told; });
  main.ListViewMain.AddItem({"the bulk update has ended"});
  EXPECT_EQ(told, 1U);
}

TEST_F(NodeDispatchTest, CapacityTakesThePlaceOfTheTables) {
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}), {}});
  ClickPath({"Database", "sales", "Table"});
  connection.statements.clear();
  Choose(*main.PopupMenu_Table, "PopupMenu_Table_Capacity");
  EXPECT_EQ(connection.statements,
            (std::vector<std::string>{
                "select * from [sales].dbo.sysobjects where (xtype='S')or       (xtype='U')"}));
  EXPECT_EQ(Columns(),
            "No. 32R, Name 128, xtype 48, 作成日 118, rows 64R, reserved 82R, data 82R, "
            "index_size 82R, unused 82R");
  EXPECT_EQ(Status(), " >EXEC sp_spaceused Tablexxx");
}

TEST_F(NodeDispatchTest, SystemTablesSwitchIsRememberedAndWaitsForTheNextClick) {
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}), {}});
  ClickPath({"Database", "sales", "Table"});
  connection.statements.clear();
  Choose(*main.PopupMenu_Table, "PM_DspSysTbl");
  EXPECT_TRUE(connection.statements.empty());
  EXPECT_EQ(testing::FileBytes(folder / "DBKEEPER.ini"), "[SYSTEM]\r\nDspSysTbl=False\r\n");
  ClickPath({"Database", "sales", "Table"});
  EXPECT_EQ(connection.statements.back(),
            "select * from [sales].dbo.sysobjects where (xtype='U') order by name");
}

class SortTest : public NodeDispatchTest {
 protected:
  // The captions after the clicks on columns, rows being "caption,text,number".
  std::string SortedBy(const std::vector<std::size_t>& clicks) {
    ListView& list = main.ListViewMain;
    list.ClearItems();
    list.ClearColumns();
    list.AddColumn("No", 10);
    list.AddColumn("text", 10);
    list.AddColumn("number", 10, Alignment::kRight);
    const std::vector<std::vector<std::string>> rows = {{"10", "100", "100"},
                                                        {"9", "9", "9          "},
                                                        {"2", "10", "10         "},
                                                        {"30", "B", "-1"},
                                                        {"31", "a", ""}};
    for (const auto& row : rows) list.AddItem({row[0], row[1], row[2]});
    for (const std::size_t column : clicks) list.UserColumnClick(column);
    std::string captions;
    for (const ListItem& item : list.Items()) captions += std::string(item.Caption()) + " ";
    return captions;
  }
};

TEST_F(SortTest, NumbersSortAsNumbersTextsWithoutCaseAndClicksTurnTheDirection) {
  EXPECT_EQ(SortedBy({0}), "2 9 10 30 31 ");
  EXPECT_EQ(SortedBy({}), "10 9 2 30 31 ");
  EXPECT_EQ(SortedBy({0}), "31 30 10 9 2 ");
  ClickPath({"Management"});
  EXPECT_EQ(SortedBy({1}), "2 10 9 31 30 ");
  ClickPath({"Management"});
  // A negative number is padded as text: "00000000-1" stands before every digit string.
  EXPECT_EQ(SortedBy({2}), "30 31 9 2 10 ");
}

}  // namespace
}  // namespace dbkeeper
