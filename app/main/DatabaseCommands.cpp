// Commands on databases, backups, processes and the assignment of jobs to the server.

#include <array>
#include <string>
#include <string_view>

#include "app/main/RowCommand.h"
#include "app/main/UnitMain.h"
#include "app/support/DateText.h"
#include "app/support/NumberText.h"
#include "app/support/TextHelpers.h"
#include "catalog/DatabaseList.h"
#include "catalog/ServerLists.h"
#include "database/Unit_BackupMedia.h"
#include "database/Unit_Database_Property.h"
#include "database/Unit_Restore.h"

namespace dbkeeper {

namespace {

constexpr const char* kBackupFilter = "Backupﾌｧｲﾙ(*.bak)|*.bak|全てのﾌｧｲﾙ(*.*)|*.*";
constexpr std::string_view kUseMaster = "use master";
constexpr std::string_view kUseMsdb = "use msdb";

constexpr RowCommand SetOnline(std::string_view statement) {
  return {.rows = RowRule::kFirstSelected,
          .use = kUseMaster,
          .statement = statement,
          .refresh = RefreshDatabases};
}

struct OnlineMode {
  std::string_view caption;  // of the chosen item; empty: any other
  RowCommand command;
};

constexpr std::array<OnlineMode, 4> kOnlineModes = {{
    {"ｼﾝｸﾞﾙ･ﾕｰｻﾞｰ", SetOnline("alter database [%N] set ONLINE,SINGLE_USER,READ_WRITE")},
    {"管理者専用", SetOnline("alter database [%N] set ONLINE,RESTRICTED_USER,READ_WRITE")},
    {"読取専用", SetOnline("alter database [%N] set ONLINE,MULTI_USER,READ_ONLY")},
    {"", SetOnline("alter database [%N] set ONLINE,MULTI_USER,READ_WRITE")},
}};

constexpr RowCommand kOffline = {
    .rows = RowRule::kFirstSelected,
    .question = "ﾃﾞｰﾀﾍﾞｰｽ:%N をOffLineにしてよろしいですか?",
    .use = kUseMaster,
    .statement = "alter database [%N] set OFFLINE",
    .status = "alter database %N set OFFLINE",
    .refresh = RefreshDatabases,
};

constexpr RowCommand kDetach = {
    .rows = RowRule::kFirstSelected,
    .question = "ﾃﾞｰﾀﾍﾞｰｽ:%N をﾃﾞﾀｯﾁ(切離し)してよろしいですか?",
    .use = kUseMaster,
    .statement = "exec sp_detach_db [%N], 'true'",
    .status = "exec sp_detach_db '%N', 'true'",
    .refresh = RefreshDatabases,
};

// Deliberately without "use master", as the drop: both run in whatever database is current.
constexpr RowCommand kShrink = {
    .rows = RowRule::kFirstSelected,
    .statement = "dbcc shrinkdatabase([%N], 10)",
    .refresh = RefreshDatabases,
};

constexpr RowCommand kDropDatabase = {
    .rows = RowRule::kFirstSelected,
    .question = "ﾃﾞｰﾀﾍﾞｰｽ:%N を削除してよろしいですか?",
    .statement = "drop database [%N]",
    .refresh = RefreshDatabases,
};

void RefreshProcesses(const Workbench& workbench, const std::string& database) {
  const TreeNode* const node = workbench.Tree.Selected();
  const bool processes = node != nullptr && node->Text() == "Process";
  (processes ? ListProcesses : ListLocks)(workbench, database);
}

constexpr RowCommand kKill = {
    .question = "spid:%C を削除してよろしいですか?",
    .use = kUseMaster,
    .statement = "kill [%C]",
    .status = "kill  = %C",
    .refresh = RefreshProcesses,
};

constexpr RowCommand kAddJobToServer = {
    .use = kUseMsdb,
    .statement = "exec sp_add_jobserver @job_name = [%N]",
    .status = "exec sp_add_jobserver @job_name = '%N'     (msdb)",
    .refresh = ListJobs,
};

// Deliberately always "(local)", whatever server the session is connected to: jobs are assigned to
// the server that they stand on.
constexpr RowCommand kDeleteJobFromServer = {
    .use = kUseMsdb,
    .statement = "exec sp_delete_jobserver @job_name = [%N],@server_name = '(local)'",
    .status = "exec sp_delete_jobserver @job_name = '%N',@server_name = '(local)'     (msdb)",
    .refresh = ListJobs,
};

// A job that is not assigned to a server has no next run.
constexpr std::string_view kNoNextRun = "0 0";
constexpr std::size_t kJobNextRun = 5;  // the sub-item

std::int64_t BackupSetOf(const ListItem& row) { return ParseInteger(row.Caption()); }

// Shows what the header of a backup file tells; gives the name of the database in it, empty when
// there is no header.
std::string ShowMediaHeader(const Workbench& workbench, const std::string& file) {
  Query& query = workbench.Session.ADOQuerySystem;
  std::string database;
  std::string server;
  std::string description;
  {
    const BusyScope busy(workbench.Host.windows);
    query.Open("restore headeronly from DISK = '" + file + "'");
    if (query.Eof()) return {};
    database = Trim(query.FieldByName("DatabaseName").AsString());
    server = Trim(query.FieldByName("ServerName").AsString());
    description = Trim(query.FieldByName("BackupDescription").AsString());
    query.Close();
  }
  workbench.Host.dialogs.ShowMessage("メディアの詳細\r　・ServerName  ：" + server +
                                     "\r　・DatabaseName：" + database + "\r　・Description ：" +
                                     description);
  return database;
}

// The files that a backup file holds; of several of a kind the last.
void ReadFileList(const Workbench& workbench, BackupFile& backup) {
  Query& query = workbench.Session.ADOQuerySystem;
  const BusyScope busy(workbench.Host.windows);
  query.Open("restore filelistonly from DISK = '" + backup.file + "'");
  for (; !query.Eof(); query.Next()) {
    const std::string type = Trim(query.FieldByName("Type").AsString());
    const std::string physical = query.FieldByName("PhysicalName").AsString();
    const std::string logical = query.FieldByName("LogicalName").AsString();
    if (type == "D") {
      backup.data_physical = physical;
      backup.data_logical = logical;
    } else if (type == "L") {
      backup.log_physical = physical;
      backup.log_logical = logical;
    }
  }
}

}  // namespace

void TFormMain::PopupMenu_Databases_OnLine_MULTI_RWClick(const MenuItem& sender) {
  for (const OnlineMode& mode : kOnlineModes) {
    if (mode.caption.empty() || sender.Caption() == mode.caption) {
      return RunRowCommand(workbench_, mode.command);
    }
  }
}

void TFormMain::PopupMenu_Databases_OffLineClick() { RunRowCommand(workbench_, kOffline); }
void TFormMain::PopupMenu_Databases_DetachClick() { RunRowCommand(workbench_, kDetach); }
void TFormMain::PopupMenu_Databases_ShrinkClick() { RunRowCommand(workbench_, kShrink); }
void TFormMain::PopupMenu_Databases_DropClick() { RunRowCommand(workbench_, kDropDatabase); }
void TFormMain::PopupMenu_Process_Lock_KillClick() { RunRowCommand(workbench_, kKill); }

void TFormMain::PopupMenu_Databases_CreateClick() {
  forms_.Form_Database_Property.SetUp(DatabaseFiles::kCreate);
  host_.windows.ShowModal(forms_.Form_Database_Property);
}

void TFormMain::PopupMenu_Databases_AttachClick() {
  forms_.Form_Database_Property.SetUp(DatabaseFiles::kAttach);
  host_.windows.ShowModal(forms_.Form_Database_Property);
}

void TFormMain::PopupMenu_Databases_PropertyClick() {
  host_.windows.ShowModal(forms_.Form_Database_Property);
}

void TFormMain::PopupMenu_Databases_Backup_BackupClick() {
  const ListItem* const row = ListViewMain.Selected();
  if (row == nullptr) return;
  const std::string database(row->SubItem(0));
  const auto file = host_.dialogs.SaveFile({kBackupFilter, "", ""});
  if (!file) return;
  const std::string description = workbench_.ServerMachine() + ":" + database + "の手動Backup";
  RunStatements(
      workbench_,
      {.question = "ﾃﾞｰﾀﾍﾞｰｽ:" + database + " のバックアップを実行してよろしいですか?",
       .statements = {"backup database [" + database + "]\r\n" +                //
                      "    to DISK = '" + *file + "'\r\n" +                     //
                      "  with description      = '" + description + "',\r\n" +  //
                      "       format"},
       // The placeholders are deliberate: file and description would not fit the line.
       .status = "backup database " + database + " to DISK=xxx.bak with description=yyy, format"});
}

void TFormMain::PopupMenu_Databases_Backup_RestoreClick() {
  const auto file = host_.dialogs.OpenFile({kBackupFilter, "", ""});
  if (!file) return;
  BackupFile backup;
  backup.file = *file;
  backup.database = ShowMediaHeader(workbench_, *file);
  ReadFileList(workbench_, backup);
  if (!backup.data_physical.empty() && !backup.log_physical.empty()) {
    forms_.FormRestore.SetUp(backup);
    host_.windows.ShowModal(forms_.FormRestore);
  }
  session_.ADOQuerySystem.Close();
}

void TFormMain::PopupMenu_DB_BackUp_RestoreClick() {
  const ListItem* const row = ListViewMain.Selected();
  if (row == nullptr) return;
  forms_.FormRestore.SetUp(NamesOf(*row, TreeView).database, BackupSetOf(*row));
  host_.windows.ShowModal(forms_.FormRestore);
}

void TFormMain::PopupMenu_DB_BackUp_Direct_RestoreClick() {
  forms_.FormRestore.SetUp(NamesOf({}, TreeView).database, 0);
  host_.windows.ShowModal(forms_.FormRestore);
}

// Relies on the current database being msdb, which the list of the backup history leaves behind.
void TFormMain::PopupMenu_DB_BackUp_Drop_LogClick() {
  const DateTimeValue oldest = AddDays(host_.clock.Now(), -7);
  RunStatements(workbench_, {.statements = {"exec sp_delete_backuphistory @oldest_date = '" +
                                            FormatDateTime(oldest, "yyyy/mm/dd") + "'"}});
  StatusBar1.SimpleText = "";
}

void TFormMain::PopupMenu_BackUp_CreateClick() { host_.windows.ShowModal(forms_.Form_BackupMedia); }

void TFormMain::PopupMenu_Job_AddJobClick() {
  if (ListViewMain.SelCount() != 1) return;
  if (ListViewMain.Selected()->SubItem(kJobNextRun) != kNoNextRun) {
    return host_.dialogs.ShowMessage("指定されたJobはServerに投入済みです");
  }
  RunRowCommand(workbench_, kAddJobToServer);
}

void TFormMain::PopupMenu_Job_DeleteJobClick() {
  if (ListViewMain.SelCount() != 1) return;
  if (ListViewMain.Selected()->SubItem(kJobNextRun) == kNoNextRun) {
    return host_.dialogs.ShowMessage("指定されたJobはServerに投入されていません");
  }
  RunRowCommand(workbench_, kDeleteJobFromServer);
}

}  // namespace dbkeeper
