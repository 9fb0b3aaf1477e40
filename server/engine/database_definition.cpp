#include "server/engine/database_definition.h"

#include <algorithm>

#include "server/catalog/new_database.h"
#include "server/engine/engine_messages.h"
#include "server/engine/instance_state.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kLastSystemDatabase = 4;

struct OptionRow {
  std::string_view word;
  const char* column;  // of sysdatabases
  std::int64_t set;
  std::int64_t clear;
};

constexpr OptionRow kOptions[] = {
    {"ONLINE", "status", 0, DatabaseStatus::kOffline},
    {"OFFLINE", "status", DatabaseStatus::kOffline, 0},
    {"READ_ONLY", "status", DatabaseStatus::kReadOnly, 0},
    {"READ_WRITE", "status", 0, DatabaseStatus::kReadOnly},
    {"MULTI_USER", "status", 0, DatabaseStatus::kSingleUser | DatabaseStatus::kDboOnly},
    {"SINGLE_USER", "status", DatabaseStatus::kSingleUser, DatabaseStatus::kDboOnly},
    {"RESTRICTED_USER", "status", DatabaseStatus::kDboOnly, DatabaseStatus::kSingleUser},
    {"AUTO_CLOSE ON", "status", DatabaseStatus::kAutoClose, 0},
    {"AUTO_CLOSE OFF", "status", 0, DatabaseStatus::kAutoClose},
    {"AUTO_SHRINK ON", "status", DatabaseStatus::kAutoShrink, 0},
    {"AUTO_SHRINK OFF", "status", 0, DatabaseStatus::kAutoShrink},
    {"TORN_PAGE_DETECTION ON", "status", DatabaseStatus::kTornPageDetection, 0},
    {"TORN_PAGE_DETECTION OFF", "status", 0, DatabaseStatus::kTornPageDetection},
    {"RECOVERY SIMPLE", "status", DatabaseStatus::kTruncateLog, 4},
    {"RECOVERY BULK_LOGGED", "status", 4, DatabaseStatus::kTruncateLog},
    {"RECOVERY FULL", "status", 0, DatabaseStatus::kTruncateLog | 4},
    {"AUTO_CREATE_STATISTICS ON", "status2", 0x1000000, 0},
    {"AUTO_CREATE_STATISTICS OFF", "status2", 0, 0x1000000},
    {"AUTO_UPDATE_STATISTICS ON", "status2", 0x40000000, 0},
    {"AUTO_UPDATE_STATISTICS OFF", "status2", 0, 0x40000000},
};

}  // namespace

void MakeDatabase(Workspace& workspace, int dbid, const NewDatabase& database) {
  InstanceState& instance = workspace.instance();
  const std::filesystem::path file = instance.FileOf(dbid);
  // What a torn attempt left behind is in nobody's catalog.
  for (const char* suffix : {"", "-wal", "-shm"}) {
    std::filesystem::remove(file.string() + suffix);
  }
  instance.NewGeneration(dbid);
  SqliteConnection& connection = workspace.connection();
  const std::string alias = "new_database";
  connection.Run("attach ?1 as " + alias, file.string());
  try {
    connection.Execute("pragma " + alias + ".journal_mode = wal");
    connection.Execute("begin");
    const std::string owner_sid =
        connection.TextOf("select sid from main.syslogins where name = ?1", workspace.login().name);
    FillNewDatabase(connection, alias, owner_sid);
    connection.Execute("commit");
  } catch (...) {
    sqlite3_exec(connection.handle(), "rollback; detach new_database", nullptr, nullptr, nullptr);
    throw;
  }
  connection.Execute("detach " + alias);
  connection.Run(
      "insert into main.sysdatabases values (?1, ?2, (select sid from main.syslogins where name = "
      "?3), 0, ?4, 1090519040, ?5, 0, 0, 80, ?6, 539)",
      database.name, dbid, workspace.login().name, database.status, CurrentTime(),
      database.file_name.empty() ? file.string() : database.file_name);
}

void DatabaseDefinition::NeedNoTransaction(std::string_view statement) {
  if (workspace_.transaction_count() > 0) Fail(226, {statement});
}

void DatabaseDefinition::NeedOwner(const DatabaseInfo& database) {
  if (workspace_.login().sysadmin || workspace_.login().dbcreator) return;
  if (database.Has(DatabaseStatus::kOffline) || !workspace_.IsOwner(database)) {
    Fail(5011, {database.name});
  }
}

void DatabaseDefinition::Create(const CreateDatabaseStatement& statement) {
  NeedNoTransaction("CREATE DATABASE");
  if (statement.for_attach) throw Unsupported("create database for attach");
  if (!workspace_.login().sysadmin && !workspace_.login().dbcreator) {
    Fail(262, {"CREATE DATABASE", "master"});
  }
  if (workspace_.LookUpDatabase(statement.name)) Fail(1801, {statement.name});
  int dbid = kLastSystemDatabase + 1;
  while (workspace_.LookUpDatabase(dbid)) ++dbid;
  NewDatabase database{.name = statement.name, .file_name = {}};
  if (!statement.data_files.empty()) database.file_name = statement.data_files[0].file_name;
  MakeDatabase(workspace_, dbid, database);
}

void DatabaseDefinition::Drop(const std::string& name) {
  NeedNoTransaction("DROP DATABASE");
  const std::optional<DatabaseInfo> database = workspace_.LookUpDatabase(name);
  if (!database) Fail(3701, {"database", name});
  NeedOwner(*database);
  if (database->dbid <= kLastSystemDatabase) Fail(3708, {"database", name});
  if (database->dbid == workspace_.dbid() ||
      workspace_.instance().InUse(database->dbid, workspace_.spid())) {
    Fail(3702, {name});
  }
  workspace_.Detach(database->dbid);
  workspace_.connection().Run("delete from main.sysdatabases where dbid = ?", database->dbid);
  workspace_.instance().NewGeneration(database->dbid);
  const std::string file = workspace_.instance().FileOf(database->dbid).string();
  for (const char* suffix : {"", "-wal", "-shm"}) std::filesystem::remove(file + suffix);
}

void DatabaseDefinition::Alter(const AlterDatabaseStatement& statement) {
  const std::optional<DatabaseInfo> database = workspace_.LookUpDatabase(statement.name);
  if (!database) Fail(5011, {statement.name});
  NeedOwner(*database);
  if (const auto* rename = std::get_if<ModifyDatabaseName>(&statement.action)) {
    if (workspace_.LookUpDatabase(rename->name)) Fail(1801, {rename->name});
    workspace_.connection().Run("update main.sysdatabases set name = ? where dbid = ?",
                                rename->name, database->dbid);
    if (database->dbid == workspace_.dbid()) {
      workspace_.SetCurrent(workspace_.FindDatabase(rename->name));
    }
    return;
  }
  const auto* set = std::get_if<DatabaseOptions>(&statement.action);
  if (set == nullptr) throw Unsupported("this form of alter database");
  for (const std::string& option : set->options) {
    if (!SetOption(*database, option)) throw Unsupported("the database option " + option);
  }
}

bool DatabaseDefinition::SetOption(const DatabaseInfo& database, const std::string& option) {
  const auto* row = std::ranges::find(kOptions, option, &OptionRow::word);
  if (row == std::end(kOptions)) return false;
  constexpr std::int64_t kState = DatabaseStatus::kOffline | DatabaseStatus::kReadOnly |
                                  DatabaseStatus::kSingleUser | DatabaseStatus::kDboOnly;
  const bool closes = (row->set & kState) != 0;
  if (closes && database.dbid <= kLastSystemDatabase) Fail(5058, {option, database.name});
  if (closes && workspace_.instance().InUse(database.dbid, workspace_.spid())) {
    Fail(5070, {database.name});
  }
  if (row->set == DatabaseStatus::kOffline) {
    if (database.dbid == workspace_.dbid()) Fail(5070, {database.name});
    workspace_.Detach(database.dbid);
  }
  const std::string column = row->column;
  workspace_.connection().Run(
      "update main.sysdatabases set " + column + " = (" + column + " & ~?1) | ?2 where dbid = ?3",
      row->clear, row->set, database.dbid);
  return true;
}

}  // namespace dbkeeper::server
