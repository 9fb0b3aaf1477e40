#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::TextFields;

using Texts = std::vector<std::string>;

// A command on the row of a list: where it stands, and all that leaves the program.
struct Case {
  const char* title;
  Texts path;
  const char* item;
  ListItem row;
  const char* question;  // empty: nothing is asked
  Texts statements;      // the last ones refresh the list
  const char* status;
};

const Texts kListDatabases = {"select * from master.dbo.sysdatabases"};

Case Online(const char* item, const char* options) {
  const std::string statement = std::string("alter database [a b] set ONLINE,") + options;
  static std::vector<std::string> statuses;
  statuses.reserve(4);
  statuses.push_back(" >" + statement);
  return {item,
          {"Database"},
          item,
          {"9", "a b"},
          "",
          {"use master", statement, kListDatabases[0]},
          statuses.back().c_str()};
}

const ListItem kRow = {"9", "a b"};
const Texts kSales = {"Database", "sales"};

Texts Below(const char* text) {
  Texts path = kSales;
  path.emplace_back(text);
  return path;
}

std::vector<Case> Cases() {
  return {
      Online("PopupMenu_Databases_OnLine_MULTI_RW", "MULTI_USER,READ_WRITE"),
      Online("PopupMenu_Databases_OnLine_SINGLE", "SINGLE_USER,READ_WRITE"),
      Online("PopupMenu_Databases_OnLine_RESTRICTED", "RESTRICTED_USER,READ_WRITE"),
      Online("PopupMenu_Databases_OnLine_READ_ONLY", "MULTI_USER,READ_ONLY"),
      {"offline",
       {"Database"},
       "PopupMenu_Databases_OffLine",
       kRow,
       "ﾃﾞｰﾀﾍﾞｰｽ:a b をOffLineにしてよろしいですか?",
       {"use master", "alter database [a b] set OFFLINE", kListDatabases[0]},
       " >alter database a b set OFFLINE"},
      {"detach",
       {"Database"},
       "PopupMenu_Databases_Detach",
       kRow,
       "ﾃﾞｰﾀﾍﾞｰｽ:a b をﾃﾞﾀｯﾁ(切離し)してよろしいですか?",
       {"use master", "exec sp_detach_db [a b], 'true'", kListDatabases[0]},
       " >exec sp_detach_db 'a b', 'true'"},
      {"shrink",
       {"Database"},
       "PopupMenu_Databases_Shrink",
       kRow,
       "",
       {"dbcc shrinkdatabase([a b], 10)", kListDatabases[0]},
       " >dbcc shrinkdatabase([a b], 10)"},
      {"drop database",
       {"Database"},
       "PopupMenu_Databases_Drop",
       {"9", "%D%N"},
       "ﾃﾞｰﾀﾍﾞｰｽ:%D%N を削除してよろしいですか?",
       {"drop database [%D%N]", kListDatabases[0]},
       " >drop database [%D%N]"},
      {"kill a process",
       {"Management", "Process"},
       "PopupMenu_Process_Lock_Kill",
       {"52", "0"},
       "spid:52 を削除してよろしいですか?",
       {"use master", "kill [52]", "use msdb", "exec sp_who"},
       " >kill  = 52"},
      {"kill a holder of locks",
       {"Management", "Lock"},
       "PopupMenu_Process_Lock_Kill",
       {"52", "7"},
       "spid:52 を削除してよろしいですか?",
       {"use master", "kill [52]", "use msdb", "exec sp_lock"},
       " >kill  = 52"},
      {"submit a job",
       {"Management", "Job"},
       "PopupMenu_Job_AddJob",
       {"F", "a b", "1", "", "", "", "0 0"},
       "",
       {"use msdb", "exec sp_add_jobserver @job_name = [a b]", "use msdb", "exec sp_help_job"},
       " >exec sp_add_jobserver @job_name = 'a b'     (msdb)"},
      {"withdraw a job",
       {"Management", "Job"},
       "PopupMenu_Job_DeleteJob",
       {"F", "a b", "1", "", "", "", "20050308 10000"},
       "",
       {"use msdb", "exec sp_delete_jobserver @job_name = [a b],@server_name = '(local)'",
        "use msdb", "exec sp_help_job"},
       " >exec sp_delete_jobserver @job_name = 'a b',@server_name = '(local)'     (msdb)"},
      {"drop a table",
       Below("Table"),
       "PopupMenu_Table_Drop",
       kRow,
       "Table:sales.dbo.a b を削除してよろしいですか?",
       {"use [sales]", "drop Table [sales].dbo.[a b]",
        "select * from [sales].dbo.sysobjects where (xtype='S')or       (xtype='U') order by name"},
       " >drop Table [sales].dbo.[a b]"},
      {"drop a view",
       Below("View"),
       "PopupMenu_View_Drop",
       kRow,
       "View:sales.dbo.a b を削除してよろしいですか?",
       {"use [sales]", "drop View [a b]",
        "select * from [sales].dbo.sysobjects where xtype='V' order by name"},
       " >drop View [a b]"},
      {"drop a procedure",
       Below("Procedure"),
       "PopupMenu_Procedure_Drop",
       kRow,
       "Procedure:sales.dbo.a b を削除してよろしいですか?",
       {"use [sales]", "drop Procedure [a b]",
        "select * from [sales].dbo.sysobjects where (xtype='P')or       (xtype='X') order by name"},
       " >drop Procedure [a b]"},
      {"drop an SQL login",
       {"Security", "Login"},
       "PopupMenu_Login_drop",
       {"1", "a b", "", "", "", "", "1", "0"},
       "Longin:a b を削除してよろしいですか?",
       {"EXEC sp_droplogin [a b]", "select * from master.dbo.syslogins"},
       " >EXEC sp_droplogin [a b]"},
      {"drop a Windows login",
       {"Security", "Login"},
       "PopupMenu_Login_drop",
       {"1", "PC01\\a", "", "", "", "", "1", "1"},
       "Longin:PC01\\a を削除してよろしいですか?",
       {"EXEC sp_revokelogin @loginame = [PC01\\a]", "select * from master.dbo.syslogins"},
       " >EXEC sp_revokelogin @loginame = [PC01\\a]"},
      {"drop a device",
       {"Management", "BackUpDevice"},
       "PopupMenu_BackUp_Drop",
       kRow,
       "ﾊﾞｯｸｱｯﾌﾟﾒﾃﾞｨｱ:a b を削除してよろしいですか?",
       {"use master", "EXEC sp_dropdevice [a b]",
        "select * from master.dbo.sysdevices where status=16"},
       " >EXEC sp_dropdevice 'a b'"},
      {"drop a job",
       {"Management", "Job"},
       "PopupMenu_Job_Drop",
       kRow,
       "ｼﾞｮﾌﾞ:a b を削除してよろしいですか?",
       {"use msdb", "EXEC sp_delete_job @job_name = [a b]", "use msdb", "exec sp_help_job"},
       " >EXEC sp_delete_job @job_name = 'a b'     (msdb)"},
      {"drop a user",
       Below("User"),
       "PopupMenu_Users_Drop",
       kRow,
       "ユーザー:a b をこのﾃﾞｰﾀﾍﾞｰｽから削除してよろしいですか?",
       {"use [sales]", "EXEC sp_revokedbaccess [a b]",
        "use [sales]\r\nselect * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)"},
       " >exec sp_revokedbaccess'a b'"},
      {"drop a role",
       Below("Role"),
       "PopupMenu_Roles_Drop",
       kRow,
       "Role:a b をこのﾃﾞｰﾀﾍﾞｰｽから削除してよろしいですか?",
       {"use [sales]", "exec sp_droprole [a b]", "exec sp_helprole"},
       " >exec sp_droprole 'a b'"},
  };
}

class RowCommandTest : public AppFixture {
 protected:
  RowCommandTest() {
    app.Start();
    Connect();
    ClickPath({"Database"});
    const std::pair<const char*, Texts> lists[] = {
        {"sysusers", {"uid", "name", "createdate", "updatedate", "hasdbaccess"}},
        {"sp_helprole", {"RoleId", "RoleName"}},
        {"sp_help_job",
         {"job_id", "name", "enabled", "current_execution_status", "last_run_outcome",
          "description", "next_run_date", "next_run_time", "last_run_date", "last_run_time",
          "date_created", "date_modified"}},
        {"sysdevices", {"name", "phyname"}},
        {"sp_who", {"spid", "ecid", "status", "loginame", "hostname", "blk", "dbname", "cmd"}},
        {"sp_lock", {"spid", "dbid", "ObjId", "IndId", "Type", "Resource", "Mode", "Status"}},
        {"sysobjects", {"name", "xtype", "crdate"}},
        {"syslogins",
         {"name", "createdate", "updatedate", "language", "dbname", "hasaccess", "isntname",
          "sysadmin", "serveradmin"}}};
    for (const auto& [part, fields] : lists) connection.Answer(part, {TextFields(fields), {}});
  }

  // Shows the list of a case with rows of the test's own and forgets what was sent for it.
  void ShowRows(const Case& c, const std::vector<ListItem>& rows) {
    ClickPath(c.path);
    list.ClearItems();
    for (const ListItem& row : rows) list.AddItem(row);
    connection.statements.clear();
    fake.dialogs.questions.clear();
  }
  // Chooses the command and answers its question.
  void Run(const Case& c, Answer answer) {
    fake.dialogs.answers = {answer};
    Choose(*list.Popup(), c.item);
    fake.dialogs.answers.clear();
  }

  TFormMain& main = app.FormMain;
  ListView& list = app.FormMain.ListViewMain;
};

TEST_F(RowCommandTest, EveryCommandAsksRunsTellsAndRefreshes) {
  for (const Case& c : Cases()) {
    SCOPED_TRACE(c.title);
    ShowRows(c, {c.row});
    list.UserSelect({0});
    Run(c, Answer::kOk);
    Texts questions;
    for (const Question& question : fake.dialogs.questions) {
      questions.push_back(question.text);
      EXPECT_EQ(question.caption, "注意");
      EXPECT_EQ(question.icon, Icon::kStop);
      EXPECT_EQ(question.buttons, Buttons::kOkCancel);
      EXPECT_EQ(question.default_answer, Answer::kCancel);
    }
    EXPECT_EQ(questions, *c.question == '\0' ? Texts{} : Texts{c.question});
    EXPECT_EQ(connection.statements, c.statements);
    EXPECT_EQ(Status(), c.status);
    EXPECT_EQ(fake.dialogs.errors, Texts{});
    EXPECT_EQ(fake.windows.busy, 0);
  }
}

TEST_F(RowCommandTest, CancelSendsNothing) {
  for (const Case& c : Cases()) {
    if (*c.question == '\0') continue;
    SCOPED_TRACE(c.title);
    ShowRows(c, {c.row});
    list.UserSelect({0});
    const std::string status = Status();
    Run(c, Answer::kCancel);
    EXPECT_EQ(fake.dialogs.questions.size(), 1U);
    EXPECT_EQ(connection.statements, Texts{});
    EXPECT_EQ(Status(), status);
  }
}

TEST_F(RowCommandTest, WithoutARowNothingHappens) {
  for (const Case& c : Cases()) {
    SCOPED_TRACE(c.title);
    ShowRows(c, {c.row});
    Run(c, Answer::kOk);
    EXPECT_EQ(fake.dialogs.questions.size(), 0U);
    EXPECT_EQ(connection.statements, Texts{});
  }
}

TEST_F(RowCommandTest, OnlyTheCommandsOnDatabasesTakeTheFirstOfSeveralRows) {
  for (const Case& c : Cases()) {
    SCOPED_TRACE(c.title);
    ShowRows(c, {c.row, {"99", "other", "", "", "", "", "0 0", "0"}});
    list.UserSelect({0, 1});
    Run(c, Answer::kOk);
    EXPECT_EQ(connection.statements, c.path == Texts{"Database"} ? c.statements : Texts{});
  }
}

TEST_F(RowCommandTest, FailureShowsTheServersWordsAndStopsBeforeStatusAndRefresh) {
  for (const Case& c : Cases()) {
    SCOPED_TRACE(c.title);
    const bool with_use = c.statements[0].starts_with("use ");
    const std::string& statement = c.statements[with_use ? 1 : 0];
    ShowRows(c, {c.row});
    list.UserSelect({0});
    connection.Fail(statement, "no");
    fake.dialogs.errors.clear();
    Run(c, Answer::kOk);
    EXPECT_EQ(fake.dialogs.errors, Texts{"no"});
    EXPECT_EQ(connection.statements.back(), statement);
    EXPECT_EQ(list.Items().size(), 1U);
    EXPECT_EQ(fake.windows.busy, 0);
    connection.Answer(statement, {});
  }
}

TEST_F(RowCommandTest, RefreshAfterADatabaseCommandGrowsTheNodesAnew) {
  ClickPath({"Database"});
  EXPECT_EQ(Node({"Database"}).Children().size(), 2U);
  connection.Answer("sysdatabases",
                    {TextFields({"dbid", "name", "status", "status2", "crdate", "filename"}),
                     {{"1", "master", "8", "0", "2003-01-01 00:00:00", "C:\\master.mdf"},
                      {"7", "sales", "512", "0", "2005-03-08 09:05:07", "C:\\sales.mdf"}}});
  list.UserSelect({1});
  fake.dialogs.answers = {Answer::kOk};
  Choose(main.Menu("PopupMenu_Databases"), "PopupMenu_Databases_OffLine");
  ASSERT_EQ(Node({"Database"}).Children().size(), 1U);
  EXPECT_EQ(Node({"Database"}).Children()[0]->Text(), "master");
  EXPECT_EQ(list.Items()[1].SubItem(1), "offline,");
}

TEST_F(RowCommandTest, JobsAreAssignedOnceAndWithdrawnOnce) {
  struct Wrong {
    const char *item, *next_run, *message;
  };
  const Wrong cases[] = {
      {"PopupMenu_Job_AddJob", "20050308 0", "指定されたJobはServerに投入済みです"},
      {"PopupMenu_Job_DeleteJob", "0 0", "指定されたJobはServerに投入されていません"},
  };
  for (const Wrong& c : cases) {
    ClickPath({"Management", "Job"});
    list.AddItem({"F", "job", "1", "", "", "", c.next_run});
    list.UserSelect({0});
    connection.statements.clear();
    fake.dialogs.messages.clear();
    Choose(main.Menu("PopupMenu_Job"), c.item);
    EXPECT_EQ(fake.dialogs.messages, Texts{c.message});
    EXPECT_EQ(connection.statements, Texts{});
  }
}

TEST_F(RowCommandTest, TablesAreListedAgainWithoutDescriptionsWhateverTheSwitch) {
  app.FormMain.Workbench().Switches.Advanced = true;
  app.FormMain.Workbench().Switches.ShowSystemTables = false;
  connection.Answer("fn_listextendedproperty", {TextFields({"objname", "name", "value"}), {}});
  ClickPath(Below("Table"));
  list.AddItem({"1", "t"});
  list.UserSelect({0});
  connection.statements.clear();
  fake.dialogs.answers = {Answer::kOk};
  Choose(main.Menu("PopupMenu_Table"), "PopupMenu_Table_Drop");
  EXPECT_EQ(connection.statements.size(), 3U);
  EXPECT_EQ(connection.statements.back().find("xtype='S'"), std::string::npos);
}

}  // namespace
}  // namespace dbkeeper
