// "Database": the databases of the server, their states, backups and files.

#include <array>
#include <string>
#include <string_view>

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "app/support/TextHelpers.h"
#include "catalog/DatabaseList.h"

namespace dbkeeper {

namespace {

constexpr const char* kBackupFileFilter = "Backupﾌｧｲﾙ(*.bak)|*.bak|全てのﾌｧｲﾙ(*.*)|*.*";

// The state text of a database row is its sub-item 1.
bool OnlineSelected(const Workbench& workbench) {
  const ListItem* const row = workbench.List.Selected();
  return row != nullptr && row->SubItem(1).find("offline") == std::string::npos;
}

constexpr RowCommand SetOnline(std::string_view statement) {
  return {.rows = RowRule::kFirstSelected,
          .use = "use master",
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

// One for the four items below "OnLine", which it tells apart by their captions.
void PopupMenu_Databases_OnLine_MULTI_RWClick(const CommandContext& context) {
  for (const OnlineMode& mode : kOnlineModes) {
    if (mode.caption.empty() || context.sender.Caption() == mode.caption) {
      return RunRowCommand(context.workbench, mode.command);
    }
  }
}

constexpr RowCommand PopupMenu_Databases_OffLineClick = {
    .rows = RowRule::kFirstSelected,
    .question = "ﾃﾞｰﾀﾍﾞｰｽ:%N をOffLineにしてよろしいですか?",
    .use = "use master",
    .statement = "alter database [%N] set OFFLINE",
    .status = "alter database %N set OFFLINE",
    .refresh = RefreshDatabases,
};

constexpr RowCommand PopupMenu_Databases_DetachClick = {
    .rows = RowRule::kFirstSelected,
    .question = "ﾃﾞｰﾀﾍﾞｰｽ:%N をﾃﾞﾀｯﾁ(切離し)してよろしいですか?",
    .use = "use master",
    .statement = "exec sp_detach_db [%N], 'true'",
    .status = "exec sp_detach_db '%N', 'true'",
    .refresh = RefreshDatabases,
};

// Deliberately without "use master", as the drop: both run in whatever database is current.
constexpr RowCommand PopupMenu_Databases_ShrinkClick = {
    .rows = RowRule::kFirstSelected,
    .statement = "dbcc shrinkdatabase([%N], 10)",
    .refresh = RefreshDatabases,
};

constexpr RowCommand PopupMenu_Databases_DropClick = {
    .rows = RowRule::kFirstSelected,
    .question = "ﾃﾞｰﾀﾍﾞｰｽ:%N を削除してよろしいですか?",
    .statement = "drop database [%N]",
    .refresh = RefreshDatabases,
};

void ShowDatabaseFiles(const CommandContext& context, DatabaseFiles files) {
  TForm_Database_Property& form = context.program.Form_Database_Property;
  form.SetUp(files);
  context.workbench.Host.windows.ShowModal(form);
}

void PopupMenu_Databases_CreateClick(const CommandContext& context) {
  ShowDatabaseFiles(context, DatabaseFiles::kCreate);
}

void PopupMenu_Databases_AttachClick(const CommandContext& context) {
  ShowDatabaseFiles(context, DatabaseFiles::kAttach);
}

void PopupMenu_Databases_PropertyClick(const CommandContext& context) {
  context.workbench.Host.windows.ShowModal(context.program.Form_Database_Property);
}

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

void PopupMenu_Databases_Backup_BackupClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  const ListItem* const row = workbench.List.Selected();
  if (row == nullptr) return;
  const std::string database(row->SubItem(0));
  const auto file = workbench.Host.dialogs.SaveFile({kBackupFileFilter, "", ""});
  if (!file) return;
  const std::string description = workbench.ServerMachine() + ":" + database + "の手動Backup";
  RunStatements(
      workbench,
      {.question = "ﾃﾞｰﾀﾍﾞｰｽ:" + database + " のバックアップを実行してよろしいですか?",
       .statements = {"backup database [" + database + "]\r\n" +                //
                      "    to DISK = '" + *file + "'\r\n" +                     //
                      "  with description      = '" + description + "',\r\n" +  //
                      "       format"},
       // The placeholders are deliberate: file and description would not fit the line.
       .status = "backup database " + database + " to DISK=xxx.bak with description=yyy, format"});
}

void PopupMenu_Databases_Backup_RestoreClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  const auto file = workbench.Host.dialogs.OpenFile({kBackupFileFilter, "", ""});
  if (!file) return;
  BackupFile backup;
  backup.file = *file;
  backup.database = ShowMediaHeader(workbench, *file);
  ReadFileList(workbench, backup);
  if (!backup.data_physical.empty() && !backup.log_physical.empty()) {
    TFormRestore& form = context.program.FormRestore;
    form.SetUp(backup);
    workbench.Host.windows.ShowModal(form);
  }
  workbench.Session.ADOQuerySystem.Close();
}

constexpr MenuRow kDatabasesRows[] = {
    {0, "PopupMenu_Databases_Create", "新規ﾃﾞｰﾀﾍﾞｰｽ ...", &PopupMenu_Databases_CreateClick},
    {0, "PopupMenu_Databases_Property", "ﾌﾟﾛﾊﾟﾃｨ...", &PopupMenu_Databases_PropertyClick, nullptr,
     MenuLook::kInvisible},
    {0, "PopupMenu_Databases_Backup", "バックアップ", kNoCommand},
    {1, "PopupMenu_Databases_Backup_Backup", "指定データベースの手動バックアップ ...",
     &PopupMenu_Databases_Backup_BackupClick, &RowSelected},
    {1, "PopupMenu_Databases_Backup_Restore", "バックアップファイルを指定してのレストア ...",
     &PopupMenu_Databases_Backup_RestoreClick},
    {0, "PopupMenu_Databases_Shrink", "DBの圧縮", &PopupMenu_Databases_ShrinkClick},
    kRefreshRow,
    SqlRow("PopupMenu_Databases_SQL", &PopupMenu_Databases_SQLClick),
    {0, "PopupMenu_Databases_OnLine", "OnLine", kNoCommand, &RowSelected},
    {1, "PopupMenu_Databases_OnLine_MULTI_RW", "通常", &PopupMenu_Databases_OnLine_MULTI_RWClick},
    {1, "PopupMenu_Databases_OnLine_SINGLE", "ｼﾝｸﾞﾙ･ﾕｰｻﾞｰ",
     &PopupMenu_Databases_OnLine_MULTI_RWClick},
    {1, "PopupMenu_Databases_OnLine_RESTRICTED", "管理者専用",
     &PopupMenu_Databases_OnLine_MULTI_RWClick},
    {1, "PopupMenu_Databases_OnLine_READ_ONLY", "読取専用",
     &PopupMenu_Databases_OnLine_MULTI_RWClick},
    {0, "PopupMenu_Databases_OffLine", "OffLine", &PopupMenu_Databases_OffLineClick,
     &OnlineSelected},
    {0, "PopupMenu_Databases_Detach", "Detach Database", &PopupMenu_Databases_DetachClick,
     &RowSelected},
    {0, "PopupMenu_Databases_Attach", "Attach Database ...", &PopupMenu_Databases_AttachClick},
    {0, "PopupMenu_Databases_Drop", "削除", &PopupMenu_Databases_DropClick, &RowSelected},
};
constexpr MenuTable kDatabasesMenu = {"PopupMenu_Databases", kDatabasesRows};

}  // namespace

constinit const NodeKind kDatabasesNode = {1,
                                           Match::kText,
                                           "Database",
                                           ListDatabases,
                                           &kDatabasesMenu,
                                           "select * from master.dbo.sysdatabases"};

}  // namespace dbkeeper
