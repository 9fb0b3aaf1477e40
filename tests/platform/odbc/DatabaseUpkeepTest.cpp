// The commands and dialogs that look after databases, over the real wire: what an operator chooses,
// and what another client then finds on the server.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/odbc/OdbcConnection.h"
#include "tests/support/AppFixture.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

using Texts = std::vector<std::string>;

struct HasServer {
  static std::unique_ptr<LocalServer> server;
  OdbcConnection connection{OdbcOptions{}, server->Endpoint()};
};

std::unique_ptr<LocalServer> HasServer::server;

const Texts kDatabases = {"Database"};
const Texts kProcesses = {"Management", "Process"};
const Texts kJobs = {"Management", "Job"};
const Texts kDevices = {"Management", "BackUpDevice"};

class DatabaseUpkeepTest : protected HasServer, public testing::AppTest {
 protected:
  static void SetUpTestSuite() { server = std::make_unique<LocalServer>(); }
  static void TearDownTestSuite() { server.reset(); }

  DatabaseUpkeepTest() : AppTest(connection) {
    other.Open(server->ConnectionString());
    app.Start();
    Connect();
    ClickPath(kDatabases);
  }

  std::string File(const std::string& name) const { return (folder / name).string(); }
  // The first value that another client reads.
  std::string Value(const std::string& query) {
    const auto reader = other.Query(query);
    return reader->Next() ? std::string(reader->Text(0)) : "nothing";
  }
  // The number of the error that another client's statement ends with, 0 without one.
  int ErrorOf(const std::string& statement) {
    try {
      other.Execute(statement);
      return 0;
    } catch (const ServerError& error) {
      return error.Number();
    }
  }
  std::string Sum(const std::string& database) {
    return Value("select sum(n) from [" + database + "].dbo.t");
  }

  // The row of the list whose column has the text; null when there is none.
  const ListItem* RowOf(std::size_t column, const std::string& text) {
    const auto found = std::ranges::find_if(
        list.Items(), [&](const ListItem& row) { return row.Cell(column) == text; });
    return found == list.Items().end() ? nullptr : &*found;
  }
  // Chooses an item for that row and says OK to what is asked.
  void Run(const Texts& path, std::size_t column, const std::string& text, const char* item) {
    ClickPath(path);
    const ListItem* const row = RowOf(column, text);
    ASSERT_NE(row, nullptr) << text;
    list.UserSelect({static_cast<std::size_t>(row - list.Items().data())});
    RunOnSelection(item);
  }
  void RunOnSelection(const char* item) {
    fake.dialogs.answers = {Answer::kOk, Answer::kOk};
    fake.dialogs.messages.clear();
    fake.dialogs.errors.clear();
    Choose(*list.Popup(), item);
    fake.dialogs.answers.clear();
  }
  void RunOnDatabase(const std::string& name, const char* item) { Run(kDatabases, 1, name, item); }
  // What the operator does in the next dialog.
  void Then(std::function<void()> work) {
    fake.windows.modal.emplace_back(
        [this, work = std::move(work)](Form&) { app.Guard().Run(work); });
  }

  // By the dialog, with a table of the numbers 1 to 3.
  void MakeDatabase(const std::string& name) {
    TForm_Database_Property& form = app.Form_Database_Property;
    Then([&] {
      fake.dialogs.paths = {folder.Path().string(), folder.Path().string()};
      form.Edit_DatabaseName.UserType(name);
      form.Button3.UserClick();
      form.Button4.UserClick();
      form.SBtn_Update.UserClick();
    });
    ClickPath(kDatabases);
    RunOnSelection("PopupMenu_Databases_Create");
    ASSERT_EQ(fake.dialogs.errors, Texts{});
    other.Execute("create table [" + name + "].dbo.t (n int)");
    for (const char* n : {"1", "2", "3"}) {
      other.Execute("insert [" + name + "].dbo.t values (" + n + ")");
    }
  }
  void BackUp(const std::string& name, const std::string& file) {
    fake.dialogs.paths = {file};
    RunOnDatabase(name, "PopupMenu_Databases_Backup_Backup");
    ASSERT_EQ(fake.dialogs.errors, Texts{});
  }
  // Under another name when there is one.
  void RestoreFromFile(const std::string& file, const std::string& name = "") {
    Then([this, name] {
      if (!name.empty()) {
        restore.CheckBox_ChangeName.UserCheck(true);
        restore.Edit_DatabaseName.UserType(name);
        restore.Edit_DatabaseName.UserExit();
      }
      restore.SBtn_Update.UserClick();
    });
    fake.dialogs.paths = {file};
    ClickPath(kDatabases);
    RunOnSelection("PopupMenu_Databases_Backup_Restore");
  }

  OdbcConnection other{OdbcOptions{}, server->Endpoint()};
  ListView& list = app.FormMain.ListViewMain;
  TFormRestore& restore = app.FormRestore;
};

TEST_F(DatabaseUpkeepTest, StatesAreSetShownAndHeld) {
  MakeDatabase("状態");
  struct Case {
    const char *item, *options, *state;
    int error;  // of a write by another client
  };
  const Case cases[] = {
      {"PopupMenu_Databases_OnLine_SINGLE", "ONLINE,SINGLE_USER,READ_WRITE", "ｼﾝｸﾞﾙﾕｰｻﾞｰ,", 0},
      {"PopupMenu_Databases_OnLine_RESTRICTED", "ONLINE,RESTRICTED_USER,READ_WRITE", "管理者専用,",
       0},
      {"PopupMenu_Databases_OnLine_READ_ONLY", "ONLINE,MULTI_USER,READ_ONLY", "読取専用,", 3906},
      {"PopupMenu_Databases_OnLine_MULTI_RW", "ONLINE,MULTI_USER,READ_WRITE", "", 0},
  };
  std::string state;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.item);
    RunOnDatabase("状態", "PopupMenu_Databases_OffLine");
    EXPECT_EQ(fake.dialogs.errors, Texts{});
    EXPECT_EQ(Status(), " >alter database 状態 set OFFLINE");
    EXPECT_EQ(RowOf(1, "状態")->Cell(2), state + "offline,");
    EXPECT_EQ(ErrorOf("insert 状態.dbo.t values (0)"), 942);
    Run(kDatabases, 1, "状態", c.item);
    EXPECT_EQ(fake.dialogs.errors, Texts{});
    EXPECT_EQ(Status(), std::string(" >alter database [状態] set ") + c.options);
    state = c.state;
    EXPECT_EQ(RowOf(1, "状態")->Cell(2), state);
    EXPECT_EQ(ErrorOf("insert 状態.dbo.t values (0)"), c.error);
  }
  RunOnDatabase("状態", "PopupMenu_Databases_Shrink");
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_EQ(Status(), " >dbcc shrinkdatabase([状態], 10)");
  EXPECT_EQ(Sum("状態"), "6");
  other.Execute("use 状態");
  RunOnDatabase("状態", "PopupMenu_Databases_Drop");
  EXPECT_EQ(fake.dialogs.errors,
            Texts{"Cannot drop the database '状態' because it is currently in use."});
  other.Execute("use master");
  RunOnDatabase("状態", "PopupMenu_Databases_Drop");
  EXPECT_EQ(RowOf(1, "状態"), nullptr);
  EXPECT_FALSE(std::filesystem::exists(File("状態_dat.mdf")));
  EXPECT_FALSE(std::filesystem::exists(File("状態_log.ldf")));
}

TEST_F(DatabaseUpkeepTest, ADatabaseIsDetachedAndAttachedUnderAnotherName) {
  MakeDatabase("移動");
  RunOnDatabase("移動", "PopupMenu_Databases_Detach");
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_EQ(Status(), " >exec sp_detach_db '移動', 'true'");
  EXPECT_EQ(RowOf(1, "移動"), nullptr);
  EXPECT_EQ(ErrorOf("use 移動"), 911);

  TForm_Database_Property& form = app.Form_Database_Property;
  const auto attach = [&](const std::string& data) {
    Then([&] {
      fake.dialogs.paths = {data, File("移動_log.ldf")};
      form.Edit_DatabaseName.UserType("移動先");
      form.Button3.UserClick();
      form.Button4.UserClick();
      form.SBtn_Update.UserClick();
      EXPECT_EQ(form.Visible, !fake.dialogs.errors.empty());
    });
    RunOnSelection("PopupMenu_Databases_Attach");
  };
  attach(File("無.mdf"));
  ASSERT_EQ(fake.dialogs.errors.size(), 1U);
  EXPECT_NE(fake.dialogs.errors[0].find("Device activation error. The physical file name '" +
                                        File("無.mdf") + "' may be incorrect."),
            std::string::npos)
      << fake.dialogs.errors[0];
  attach(File("移動_dat.mdf"));
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_NE(RowOf(1, "移動先"), nullptr);
  EXPECT_EQ(Sum("移動先"), "6");
  RunOnDatabase("移動先", "PopupMenu_Databases_Drop");
}

TEST_F(DatabaseUpkeepTest, ABackupIsRestoredFromItsFileUnderItsNameUnderAnotherAndFromTheHistory) {
  MakeDatabase("保存");
  BackUp("保存", File("b.bak"));
  EXPECT_EQ(Status(), " >backup database 保存 to DISK=xxx.bak with description=yyy, format");
  other.Execute("update 保存.dbo.t set n = n + 10");

  RestoreFromFile(File("b.bak"));
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_EQ(fake.dialogs.messages,
            Texts{"メディアの詳細\r　・ServerName  ：" + Value("select @@servername") +
                  "\r　・DatabaseName：保存\r　・Description ：PC01:保存の手動Backup"});
  EXPECT_EQ(Status(), " >restore database [保存]\r\n from disk = '" + File("b.bak") + "'");
  EXPECT_EQ(Sum("保存"), "6");

  other.Execute("update 保存.dbo.t set n = n + 10");
  RestoreFromFile(File("b.bak"), "保存控");
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_EQ(Sum("保存控"), "6");
  EXPECT_EQ(Sum("保存"), "36");
  // The server takes the brackets around the data file as a part of its name.
  EXPECT_EQ(Value("select filename from master.dbo.sysdatabases where name = N'保存控'"),
            "[" + folder.Path().string() + "\\保存控_dat.mdf]");
  EXPECT_TRUE(std::filesystem::exists(File("保存控_log.ldf")));

  Then([this] { restore.SBtn_Update.UserClick(); });
  ClickPath(kDatabases);
  Run({"Database", "保存", "Backup"}, 3, "PC01:保存の手動Backup", "PopupMenu_DB_BackUp_Restore");
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_EQ(Sum("保存"), "6");

  // A database of another family gives way only to who says so.
  MakeDatabase("他");
  const std::string from = "restore database 他 from disk = '" + File("b.bak") + "'";
  EXPECT_EQ(ErrorOf(from), 3154);
  EXPECT_EQ(Sum("他"), "6");
  other.Execute("update 他.dbo.t set n = 0");
  EXPECT_EQ(ErrorOf(from + " with replace"), 0);
  EXPECT_EQ(Sum("他"), "6");

  std::filesystem::resize_file(File("b.bak"), 5000);
  RestoreFromFile(File("b.bak"));
  ASSERT_EQ(fake.dialogs.errors.size(), 1U);
  EXPECT_NE(fake.dialogs.errors[0].find("is incorrectly formed"), std::string::npos);
  EXPECT_EQ(Sum("保存"), "6");
  for (const char* name : {"保存", "保存控", "他"}) RunOnDatabase(name, "PopupMenu_Databases_Drop");
}

TEST_F(DatabaseUpkeepTest, ADeviceIsMadeTakesABackupAndGoesAndTheHistoryIsDeleted) {
  MakeDatabase("媒体");
  TForm_BackupMedia& form = app.Form_BackupMedia;
  ClickPath(kDevices);
  Then([&] {
    fake.dialogs.paths = {File("d.bak")};
    form.Edit_Name.UserType("夜間 device");
    form.Button3.UserClick();
    form.SBtn_Update.UserClick();
  });
  RunOnSelection("PopupMenu_BackUp_Create");
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  ASSERT_NE(RowOf(1, "夜間 device"), nullptr);
  EXPECT_EQ(RowOf(1, "夜間 device")->Cell(2), File("d.bak"));
  EXPECT_EQ(Value("exec sp_helpdevice N'夜間 device'"), "夜間 device");

  other.Execute("backup database 媒体 to [夜間 device]");
  other.Execute("delete 媒体.dbo.t");
  EXPECT_EQ(ErrorOf("restore database 媒体 from [夜間 device]"), 0);
  EXPECT_EQ(Sum("媒体"), "6");

  const Texts history = {"Database", "媒体", "Backup"};
  ClickPath(kDatabases);
  for (const int year : {2005, 9000}) {
    fake.clock.now = {year, 3, 8, 14, 5, 9};
    ClickPath(history);
    EXPECT_EQ(list.Items().size(), 1U) << "what is younger stays";
    RunOnSelection("PopupMenu_DB_BackUp_Drop_Log");
    EXPECT_EQ(fake.dialogs.errors, Texts{});
  }
  ClickPath(history);
  EXPECT_TRUE(list.Items().empty());

  Run(kDevices, 1, "夜間 device", "PopupMenu_BackUp_Drop");
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_EQ(RowOf(1, "夜間 device"), nullptr);
  ClickPath(kDatabases);
  RunOnDatabase("媒体", "PopupMenu_Databases_Drop");
}

TEST_F(DatabaseUpkeepTest, AProcessIsKilledAndTheOwnOneIsNot) {
  OdbcConnection victim{OdbcOptions{}, server->Endpoint()};
  victim.Open(server->ConnectionString());
  const auto process_of = [](Connection& client) {
    const auto reader = client.Query("select @@spid");
    reader->Next();
    return std::string(reader->Text(0));
  };
  const std::string process = process_of(victim);
  Run(kProcesses, 0, process, "PopupMenu_Process_Lock_Kill");
  EXPECT_EQ(fake.dialogs.errors, Texts{});
  EXPECT_EQ(Status(), " >kill  = " + process);
  EXPECT_THROW(victim.Execute("select 1"), ServerError);
  Run(kProcesses, 0, process_of(connection), "PopupMenu_Process_Lock_Kill");
  EXPECT_EQ(fake.dialogs.errors, Texts{"Cannot use KILL to kill your own process."});

  struct Case {
    const char* id;
    int error;
  };
  for (const Case& c : {Case{"[51x]", 170}, Case{"[x]", 170}, Case{"99", 6106}, Case{"0", 6101},
                        Case{"[40000]", 6101}, Case{"99999999999", 6101}}) {
    EXPECT_EQ(ErrorOf(std::string("kill ") + c.id), c.error) << c.id;
  }
  EXPECT_TRUE(connection.IsOpen());
}

TEST_F(DatabaseUpkeepTest, AJobIsWithdrawnFromTheServerAndAssignedAgain) {
  struct Case {
    const char *item, *status, *message;
    bool assigned;
  };
  const char* const added = " >exec sp_add_jobserver @job_name = '夜間バックアップ'     (msdb)";
  const char* const deleted =
      " >exec sp_delete_jobserver @job_name = '夜間バックアップ',@server_name = '(local)'     "
      "(msdb)";
  const char* const listed = " >EXEC sp_help_job            (USE msdb)";
  const Case cases[] = {
      {"PopupMenu_Job_AddJob", listed, "指定されたJobはServerに投入済みです", true},
      {"PopupMenu_Job_DeleteJob", deleted, "", false},
      {"PopupMenu_Job_DeleteJob", listed, "指定されたJobはServerに投入されていません", false},
      {"PopupMenu_Job_AddJob", added, "", true},
  };
  const std::string assignments =
      "select count(*) from msdb.dbo.sysjobservers s join msdb.dbo.sysjobs j on j.job_id = "
      "s.job_id where j.name = N'夜間バックアップ'";
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.item) + c.message);
    Run(kJobs, 1, "夜間バックアップ", c.item);
    EXPECT_EQ(fake.dialogs.errors, Texts{});
    EXPECT_EQ(fake.dialogs.messages, *c.message == '\0' ? Texts{} : Texts{c.message});
    EXPECT_EQ(Status(), c.status);
    EXPECT_EQ(RowOf(1, "夜間バックアップ")->SubItem(5) != "0 0", c.assigned);
    EXPECT_EQ(Value(assignments), c.assigned ? "1" : "0");
  }
}

}  // namespace
}  // namespace dbkeeper
