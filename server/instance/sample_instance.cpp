#include "server/instance/sample_instance.h"

#include <stdexcept>

#include "server/catalog/login_store.h"
#include "server/catalog/system_tables.h"
#include "server/engine/database_definition.h"
#include "server/engine/engine_session.h"
#include "server/procedures/procedure_call.h"

namespace dbkeeper::server {

namespace {

constexpr int kMasterId = 1;
constexpr int kTempId = 2;
constexpr int kModelId = 3;
constexpr int kMsdbId = 4;
constexpr int kFirstMasterTable = 30;
constexpr const char* kAdministratorSid = "\x01";

// Bits that SQL Server 2000 itself has on its system databases.
constexpr std::int64_t kMasterStatus =
    DatabaseStatus::kTruncateLog | DatabaseStatus::kTornPageDetection;
constexpr std::int64_t kTempStatus = DatabaseStatus::kTruncateLog;
constexpr std::int64_t kModelStatus =
    DatabaseStatus::kCleanlyShut | DatabaseStatus::kTornPageDetection;

// A failure of the set-up is a fault of the program or the disk, and told as such.
class FailingSink : public QuietSink {
 public:
  void OnMessage(const ServerMessage& message) override {
    if (message.IsError()) throw std::runtime_error("sample set-up: " + message.text);
  }
};

void MakeMaster(const InstanceState& state) {
  SqliteConnection connection = MakeDatabaseFile(state.FileOf(kMasterId), kAdministratorSid);
  connection.Execute("begin");
  MakeSystemTables(connection, "main", MasterSystemTables());
  Catalog catalog(connection, "main");
  RegisterSystemTables(catalog, MasterSystemTables(), kFirstMasterTable);
  StoreLogin(connection, {.name = "sa", .sysadmin = true});
  StorePassword(connection, "sa", "");
  StoreLogin(
      connection,
      {.name = "BUILTIN\\Administrators", .kind = LoginKind::kWindowsGroup, .sysadmin = true});
  connection.Run(
      "insert into main.sysdatabases values ('master', 1, x'01', 0, ?1, 1090519040, ?2, 0, 0, 80, "
      "?3, 539)",
      kMasterStatus, CurrentTime(), state.FileOf(kMasterId).string());
  connection.Run(
      "insert into main.syslanguages values (0, 'mdy', 7, 0, 'us_english', 'English', "
      "'', '', '', 1033, 1033)");
  connection.Run(
      "insert into main.syslanguages values (3, 'ymd', 7, 0, '日本語', 'Japanese', "
      "'', '', '', 1041, 1041)");
  connection.Run(
      "insert into main.sysservers values (0, 0, ?1, 'SQL Server', 'SQLOLEDB', ?1, null, null, ?2, "
      "0, 0, null, null, 0, 0, ?1)",
      state.options().server_name, CurrentTime());
  connection.Execute("commit");
}

}  // namespace

bool HoldsInstance(const InstanceState& state) {
  return std::filesystem::exists(state.FileOf(kMasterId));
}

void RenewTemporaryDatabase(InstanceState& state) {
  MakeDatabaseFile(state.FileOf(kTempId), kAdministratorSid);
}

void MakeSampleInstance(const InstanceOptions& options) {
  InstanceOptions apart = options;
  apart.folder = options.folder / "new";
  std::filesystem::remove_all(apart.folder);
  std::filesystem::create_directories(apart.folder);
  InstanceState state(apart, RunSystemProcedure);
  MakeMaster(state);
  {
    EngineSession session(state, {.name = "sa", .sysadmin = true});
    session.Enter({}, "master");
    Workspace& workspace = session.workspace();
    const InstanceState final_place(options, RunSystemProcedure);
    const auto make = [&](int dbid, const std::string& name, std::int64_t status) {
      MakeDatabaseFile(state.FileOf(dbid), kAdministratorSid);
      ListDatabase(workspace, dbid, {name, final_place.FileOf(dbid).string(), status});
    };
    workspace.connection().Run("update main.sysdatabases set filename = ?",
                               final_place.FileOf(kMasterId).string());
    make(kTempId, "tempdb", kTempStatus);
    make(kModelId, "model", kModelStatus);
    make(kMsdbId, "msdb", kMasterStatus);
    FailingSink sink;
    session.RunBatch("use msdb", sink);
    session.RunBatch(MsdbTables(), sink);
    for (const SampleDatabase& sample : SampleDatabases()) {
      make(sample.dbid, std::string(sample.name), kMasterStatus);
    }
    for (const std::string& batch : SampleBatches()) session.RunBatch(batch, sink);
    workspace.connection().Execute("pragma main.wal_checkpoint(truncate)");
  }
  // Whoever closed a file last has folded its log in; master comes last, for it is what the next
  // start looks for.
  std::filesystem::path master;
  for (const auto& entry : std::filesystem::directory_iterator(apart.folder)) {
    if (entry.path().filename() == state.FileOf(kMasterId).filename()) {
      master = entry.path();
      continue;
    }
    std::filesystem::rename(entry.path(), options.folder / entry.path().filename());
  }
  std::filesystem::rename(master, options.folder / master.filename());
  std::filesystem::remove(apart.folder);
}

}  // namespace dbkeeper::server
