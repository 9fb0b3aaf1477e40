#include "server/engine/database_definition.h"

#include <algorithm>
#include <system_error>

#include "server/catalog/system_tables.h"
#include "server/engine/database_files.h"
#include "server/engine/error_chain.h"
#include "server/engine/instance_state.h"
#include "server/storage/host_file.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kFileError = 5123;

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

// The label of a database's file, which gets one when it has none.
FileLabel LabelFor(const std::filesystem::path& file, const std::string& name) {
  FileLabel label = LabelOfFile(file);
  if (label.family.empty()) {
    label = {.family = RandomBytes(), .data_name = name + "_Data", .log_name = name + "_Log"};
    LabelFile(file, label);
  }
  return label;
}

}  // namespace

void ListDatabase(Workspace& workspace, int dbid, const NewDatabase& database) {
  const std::string file = workspace.instance().FileOf(dbid).string();
  workspace.connection().Run(
      "insert into main.sysdatabases values (?1, ?2, (select sid from main.syslogins where name = "
      "?3), 0, ?4, 1090519040, ?5, 0, 0, 80, ?6, 539)",
      database.name, dbid, workspace.login().name, database.status, CurrentTime(),
      database.file_name.empty() ? file : database.file_name);
}

void Enlist(Workspace& workspace, int dbid, const NewDatabase& database,
            const DatabasePlace& place) {
  SqliteConnection& connection = workspace.connection();
  WriteScope scope(workspace);
  if (workspace.LookUpDatabase(dbid)) {
    connection.Run(
        "update main.sysdatabases set filename = ?1, status = status & ~?2 where dbid = ?3",
        database.file_name, DatabaseStatus::kOffline, dbid);
  } else {
    ListDatabase(workspace, dbid, database);
  }
  InstanceState& instance = workspace.instance();
  instance.places().Store(connection, dbid, place);
  scope.Commit();
  instance.places().Set(dbid, place);
  instance.NewGeneration(dbid);
}

void Delist(Workspace& workspace, int dbid) {
  InstanceState& instance = workspace.instance();
  WriteScope scope(workspace);
  workspace.connection().Run("delete from main.sysdatabases where dbid = ?", dbid);
  instance.places().Erase(workspace.connection(), dbid);
  scope.Commit();
  instance.places().Forget(dbid);
  instance.NewGeneration(dbid);
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

void DatabaseDefinition::NeedCreator() {
  if (!workspace_.login().sysadmin && !workspace_.login().dbcreator) {
    Fail(262, {"CREATE DATABASE", "master"});
  }
}

void DatabaseDefinition::NeedUnused(const DatabaseInfo& database, int number) {
  if (database.dbid == workspace_.dbid() ||
      workspace_.instance().InUse(database.dbid, workspace_.spid())) {
    Fail(number, {database.name});
  }
}

void DatabaseDefinition::Create(const CreateDatabaseStatement& statement, ResultSink& sink) {
  NeedNoTransaction("CREATE DATABASE");
  NeedCreator();
  if (statement.for_attach) {
    if (statement.data_files.empty()) Fail(1829);
    Attach(statement.name, statement.data_files[0].file_name,
           statement.log_files.empty() ? std::string() : statement.log_files[0].file_name, sink);
    return;
  }
  const auto lock = workspace_.instance().LockDatabases();
  if (workspace_.LookUpDatabase(statement.name)) Fail(1801, {statement.name});
  DatabasePlaces& places = workspace_.instance().places();
  RunChained({sink, MakeMessage(1802), kFileError}, [&] {
    const PlannedFiles plan = PlanFiles(workspace_, statement);
    const int dbid = FreeDatabaseId(workspace_);
    PendingFiles pending(places, {plan.place.data, plan.place.log}, PendingFiles::Purpose::kMake);
    places.Set(dbid, plan.place);
    try {
      MakeLogFile(plan.place.log, plan.label.family);
      MakeDatabaseFile(plan.place.data, workspace_.connection().TextOf(
                                            "select sid from main.syslogins where name = ?1",
                                            workspace_.login().name));
      LabelFile(plan.place.data, plan.label);
      Enlist(workspace_, dbid, {.name = statement.name, .file_name = plan.data_text}, plan.place);
    } catch (...) {
      places.Forget(dbid);
      throw;
    }
    pending.Done();
  });
}

void DatabaseDefinition::Attach(const std::string& name, const std::string& data,
                                const std::string& log, ResultSink& sink) {
  NeedNoTransaction("CREATE DATABASE");
  NeedCreator();
  const auto lock = workspace_.instance().LockDatabases();
  if (workspace_.LookUpDatabase(name)) Fail(1801, {name});
  DatabasePlaces& places = workspace_.instance().places();
  RunChained({sink, MakeMessage(1813, {name}), kFileError}, [&] {
    DatabasePlace place{.data = places.HostPath(data), .log = {}, .log_name = log};
    std::error_code ignored;
    if (data.empty() || !std::filesystem::is_regular_file(place.data, ignored)) {
      Fail(5105, {data});
    }
    if (IsTaken(workspace_, place.data)) Fail(5105, {data});
    if (!IsDatabaseFile(place.data)) Fail(5171, {data});
    const FileLabel label = LabelFor(place.data, name);
    if (log.empty()) place.log_name = LogFileBeside(data);
    place.log = places.HostPath(place.log_name);
    if (IsTaken(workspace_, place.log)) Fail(5105, {place.log_name});
    std::optional<PendingFiles> made;
    if (log.empty() && !std::filesystem::exists(place.log, ignored)) {
      made.emplace(places, std::vector{place.log}, PendingFiles::Purpose::kMake);
      MakeLogFile(place.log, label.family);
    }
    CheckLogFile(place.log, label.family, place.log_name);
    Enlist(workspace_, FreeDatabaseId(workspace_), {.name = name, .file_name = data}, place);
    if (made) made->Done();
  });
}

void DatabaseDefinition::Detach(const std::string& name) {
  NeedNoTransaction("sp_detach_db");
  const auto lock = workspace_.instance().LockDatabases();
  const DatabaseInfo database = workspace_.FindDatabase(name, 15010);
  if (!workspace_.login().sysadmin) Fail(15247);
  if (database.IsSystem()) Fail(7940);
  NeedUnused(database, 3703);
  workspace_.Detach(database.dbid);
  const DatabasePlace place = workspace_.instance().places().Of(database.dbid);
  const FileLabel label = LabelFor(place.data, database.name);
  if (!place.log.empty()) {
    // A crash in a restore may have left the log of the database before it.
    MakeLogFile(place.log, label.family);
  } else {
    // A database that never had a log file of its own gets one to be attached with.
    const std::filesystem::path log = LogFileBeside(place.data.string());
    std::error_code missing;
    if (std::filesystem::file_size(log, missing) == 0 || missing) MakeLogFile(log, label.family);
  }
  const QuietFile quiet(workspace_, database);
  Delist(workspace_, database.dbid);
}

void DatabaseDefinition::Shrink(const std::string& name) {
  NeedNoTransaction("DBCC SHRINKDATABASE");
  const DatabaseInfo database = workspace_.FindDatabase(name);
  if (!workspace_.IsOwner(database)) Fail(262, {"DBCC SHRINKDATABASE", name});
  if (database.Has(DatabaseStatus::kReadOnly)) Fail(7992);
  const std::string alias = workspace_.Open(database);
  workspace_.connection().Execute("vacuum " + QuoteName(alias));
  // Others may be reading the log; then the file becomes shorter with a later checkpoint.
  sqlite3_wal_checkpoint_v2(workspace_.connection().handle(), alias.c_str(),
                            SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

void DatabaseDefinition::Drop(const std::string& name) {
  NeedNoTransaction("DROP DATABASE");
  const auto lock = workspace_.instance().LockDatabases();
  const std::optional<DatabaseInfo> database = workspace_.LookUpDatabase(name);
  if (!database) Fail(3701, {"database", name});
  NeedOwner(*database);
  if (database->IsSystem()) Fail(3708, {"database", name});
  NeedUnused(*database, 3702);
  workspace_.Detach(database->dbid);
  DatabasePlaces& places = workspace_.instance().places();
  const DatabasePlace place = places.Of(database->dbid);
  std::vector<std::filesystem::path> files = {place.data};
  if (!place.log.empty()) files.push_back(place.log);
  PendingFiles pending(places, files, PendingFiles::Purpose::kRemove);
  Delist(workspace_, database->dbid);
  pending.Done();
}

void DatabaseDefinition::Alter(const AlterDatabaseStatement& statement) {
  const DatabaseInfo database = workspace_.FindDatabase(statement.name, 5011);
  NeedOwner(database);
  if (const std::string& name = statement.new_name; !name.empty()) {
    NeedNoTransaction("ALTER DATABASE");
    if (database.IsSystem()) Fail(5016, {database.name});
    if (workspace_.LookUpDatabase(name)) Fail(1801, {name});
    if (workspace_.instance().InUse(database.dbid, workspace_.spid())) Fail(5030);
    WriteScope scope(workspace_);
    workspace_.connection().Run("update main.sysdatabases set name = ? where dbid = ?", name,
                                database.dbid);
    scope.Commit();
    if (database.dbid == workspace_.dbid()) workspace_.SetCurrent(workspace_.FindDatabase(name));
    return;
  }
  if (statement.file) NeedListedFile(database, *statement.file);
  if (statement.options.empty()) throw Unsupported("this form of alter database");
  NeedNoTransaction("ALTER DATABASE");
  WriteScope scope(workspace_);
  for (const std::string& option : statement.options) SetOption(database, option);
  scope.Commit();
  // Who may come in is looked at when a session opens the database again.
  if (std::ranges::find(statement.options, "RESTRICTED_USER") != statement.options.end()) {
    workspace_.instance().NewGeneration(database.dbid);
  }
}

void DatabaseDefinition::NeedListedFile(const DatabaseInfo& database, const std::string& wanted) {
  const auto files = FilesOf(workspace_, database, workspace_.Open(database));
  if (std::ranges::none_of(
          files, [&](const ListedFile& file) { return SameName(file.logical_name, wanted); })) {
    Fail(5009);
  }
}

void DatabaseDefinition::SetOption(const DatabaseInfo& database, const std::string& option) {
  const auto* row = std::ranges::find(kOptions, option, &OptionRow::word);
  if (row == std::end(kOptions)) throw Unsupported("the database option " + option);
  constexpr std::int64_t kState = DatabaseStatus::kOffline | DatabaseStatus::kReadOnly |
                                  DatabaseStatus::kSingleUser | DatabaseStatus::kDboOnly;
  const bool closes = (row->set & kState) != 0;
  if (closes && database.IsSystem()) Fail(5058, {option, database.name});
  if (closes && workspace_.instance().InUse(database.dbid, workspace_.spid())) {
    Fail(5070, {database.name});
  }
  if (row->set == DatabaseStatus::kOffline && database.dbid == workspace_.dbid()) {
    Fail(5070, {database.name});
  }
  if (row->clear == DatabaseStatus::kOffline && database.Has(DatabaseStatus::kOffline)) {
    const std::filesystem::path file = workspace_.instance().FileOf(database.dbid);
    if (!IsDatabaseFile(file)) Fail(5105, {file.string()});
  }
  const std::string column = row->column;
  workspace_.connection().Run(
      "update main.sysdatabases set " + column + " = (" + column + " & ~?1) | ?2 where dbid = ?3",
      row->clear, row->set, database.dbid);
}

}  // namespace dbkeeper::server
