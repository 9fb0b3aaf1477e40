// What one session works with: its SQLite connection, the databases attached to it, its
// transaction, its options, and its counters.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "server/catalog/catalog.h"
#include "server/engine/instance_state.h"
#include "server/storage/sqlite.h"
#include "server/types/decimal.h"

namespace dbkeeper::server {

// Bits of sysdatabases.status.
struct DatabaseStatus {
  static constexpr std::int64_t kAutoClose = 1;
  static constexpr std::int64_t kTruncateLog = 8;
  static constexpr std::int64_t kTornPageDetection = 16;
  static constexpr std::int64_t kOffline = 512;
  static constexpr std::int64_t kReadOnly = 1024;
  static constexpr std::int64_t kDboOnly = 2048;
  static constexpr std::int64_t kSingleUser = 4096;
  static constexpr std::int64_t kAutoShrink = 4194304;
  static constexpr std::int64_t kCleanlyShut = 1073741824;
};

struct DatabaseInfo {
  int dbid = 0;
  std::string name;
  std::int64_t status = 0;
  bool Has(std::int64_t bit) const { return (status & bit) != 0; }
  // master, tempdb, model, msdb
  bool IsSystem() const { return dbid <= 4; }
};

// Numbers of fixed roles in sysusers.
inline constexpr std::int64_t kOwners = 16384;
inline constexpr std::int64_t kAccessAdministrators = 16385;
inline constexpr std::int64_t kSecurityAdministrators = 16386;
inline constexpr std::int64_t kBackupOperators = 16389;

struct SessionOptions {
  bool no_count = false;
  bool format_only = false;
  bool no_execute = false;
  bool quoted_identifiers = true;
  std::int64_t row_count = 0;                             // 0: no limit
  std::optional<std::chrono::milliseconds> lock_timeout;  // none: the instance's
  std::string identity_insert;  // "database.table" in lower case; empty: none
};

struct LoginInfo {
  std::string name;
  bool sysadmin = false;
  bool dbcreator = false;
  bool security_admin = false;
};

class Workspace {
 public:
  // `state` answers for the functions of translated statements.
  Workspace(InstanceState& instance, LoginInfo login, ServerState& state);

  SqliteConnection& connection() { return connection_; }
  InstanceState& instance() { return instance_; }
  const LoginInfo& login() const { return login_; }
  SessionOptions& options() { return options_; }
  // Whether a statement is the server's own, so that nobody's rights count.
  bool for_server() const { return for_server_; }
  // How long to wait for a lock; negative: for ever.
  std::chrono::milliseconds LockTimeout() const {
    return options_.lock_timeout.value_or(instance_.options().lock_timeout);
  }

  int spid() const { return spid_; }
  void set_spid(int spid) { spid_ = spid; }
  const std::string& database() const { return database_; }
  int dbid() const { return dbid_; }

  // Rises when SQLite's definitions of the database `alias` change; part of it counts what was
  // rolled back or detached, so that a number never comes back with other definitions.
  std::int64_t DefinitionVersion(const std::string& alias);

  // Throws `error` with the name when there is none.
  DatabaseInfo FindDatabase(std::string_view name, int error = 911);
  std::optional<DatabaseInfo> LookUpDatabase(std::string_view name);
  std::optional<DatabaseInfo> LookUpDatabase(int dbid);
  // Attaches the database when it is not; gives its alias. Throws 927, 942, 924, 916.
  std::string Open(const DatabaseInfo& database);
  // The catalog of a database by name; an empty name is the current one, "#" the temporary tables.
  Catalog CatalogOf(std::string_view database);
  // Lets go of the database's file, so that it can be changed or removed.
  void Detach(int dbid);
  // Makes the database current, without telling anybody.
  void SetCurrent(const DatabaseInfo& database);
  // The user that the login is in the database.
  std::string UserName(const DatabaseInfo& database);
  // Whether the login is the owner of the database or in the role that owns it.
  bool IsOwner(const DatabaseInfo& database) { return login_.sysadmin || IsIn(database, kOwners); }
  // Whether the login's user is dbo, or a member of the role itself.
  bool IsIn(const DatabaseInfo& database, std::int64_t role);
  // Throws 262 when the login is not the owner.
  void NeedOwner(const DatabaseInfo& database, std::string_view statement);

  // Transactions of the client: SQLite's begins with the first write, so that reads before it see
  // what others have committed meanwhile, and a write never meets an outdated snapshot.
  int transaction_count() const { return transaction_count_; }
  void BeginTransaction();
  void CommitTransaction();
  void RollbackTransaction();
  // Notices that SQLite gave up the transaction; true when it did.
  bool LostTransaction();

  // Identity columns; inserts take from them. Throws SqlError 8115 when a column of the type cannot
  // hold the next value.
  std::int64_t NextIdentity(const std::string& alias, std::int64_t table, const SqlType& type);
  void SaveIdentities();
  void ForgetIdentities() { identities_.clear(); }
  std::optional<std::int64_t> last_identity;         // that an insert took
  std::optional<std::int64_t> last_insert_identity;  // none: the last insert took none

  void Interrupt();
  void ClearInterrupt() { interrupted_ = false; }
  bool interrupted() const { return interrupted_; }
  // Throws SqlError 3617.
  void StopIfInterrupted() const;

  std::int64_t last_row_count = 0;
  int last_error = 0;
  std::int64_t statement_time = 0;

 private:
  friend class WriteScope;
  friend class ServerWork;
  struct Counter {
    std::int64_t increment = 1;
    Decimal next{1, 0};
    std::optional<std::int64_t> last;
  };

  bool Holds(int dbid, std::int64_t object_id) const;
  void ReleaseLocks();

  static int OnBusy(void* self, int calls);
  bool Wait(int calls);
  void MakeRoomToAttach();
  void PrepareTemporary();

  InstanceState& instance_;
  const LoginInfo login_;
  SqliteConnection connection_;
  // Statements that nearly every statement of a client needs.
  std::optional<SqliteStatement> database_by_name_;
  std::map<std::string, SqliteStatement, std::less<>> version_of_;
  std::int64_t epoch_ = 0;
  std::vector<std::pair<int, std::int64_t>> held_;  // write locks: database and object
  SessionOptions options_;
  int spid_ = 0;
  std::string database_ = "master";
  int dbid_ = 1;
  bool for_server_ = false;
  struct Attached {
    int dbid;
    int generation;  // of the file, see FileState
  };
  std::vector<Attached> attached_;  // the least recently used first
  int transaction_count_ = 0;
  int waiting_for_dbid_ = 0;
  std::chrono::steady_clock::time_point wait_start_;
  std::map<std::pair<std::string, std::int64_t>, Counter> identities_;
  std::atomic<bool> interrupted_ = false;
};

// While this lives, the session's statements are the server's own.
class ServerWork {
 public:
  explicit ServerWork(Workspace& workspace) : workspace_(workspace) {
    workspace_.for_server_ = true;
  }
  ~ServerWork() { workspace_.for_server_ = false; }
  ServerWork(const ServerWork&) = delete;
  ServerWork& operator=(const ServerWork&) = delete;

 private:
  Workspace& workspace_;
};

// The writing part of a statement: the database is locked for writing, and what was written is
// undone unless it is committed. Outside a client's transaction it is one of its own.
class WriteScope {
 public:
  // What is undone when the scope is not committed: all that was run in it, or nothing, because it
  // is one statement that SQLite itself undoes when it fails.
  enum class Undo { kAll, kNothing };

  // Throws SqlError 1222, 3906. `object_id` is the table that the lock is shown for, or 0.
  WriteScope(Workspace& workspace, const DatabaseInfo& database, const std::string& alias,
             std::int64_t object_id = 0, Undo undo = Undo::kAll);
  // Of a change of master.
  explicit WriteScope(Workspace& workspace)
      : WriteScope(workspace, workspace.FindDatabase("master"), "main") {}
  ~WriteScope();
  WriteScope(const WriteScope&) = delete;
  WriteScope& operator=(const WriteScope&) = delete;

  void Commit();

 private:
  void Lock(const DatabaseInfo& database, const std::string& alias, std::int64_t object_id);
  void Forget(int dbid, std::int64_t object_id);

  Workspace& workspace_;
  bool own_transaction_ = false;
  bool open_ = false;
  const bool savepoint_;
};

}  // namespace dbkeeper::server
