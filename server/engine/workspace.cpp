#include "server/engine/workspace.h"

#include <algorithm>
#include <thread>

#include "server/catalog/new_database.h"
#include "server/catalog/system_tables.h"
#include "server/engine/engine_messages.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kMasterId = 1;
// SQLite takes ten; one is kept free for what a statement names in between.
constexpr std::size_t kMostAttached = 9;

std::string AliasOf(int dbid) { return dbid == kMasterId ? "main" : "d" + std::to_string(dbid); }

void NextIdentityFunction(sqlite3_context* context, int, sqlite3_value** arguments) {
  auto& workspace = *static_cast<Workspace*>(sqlite3_user_data(context));
  try {
    const auto* alias = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    sqlite3_result_int64(context, workspace.NextIdentity(alias, sqlite3_value_int64(arguments[1])));
  } catch (const std::exception& failure) {
    sqlite3_result_error(context, failure.what(), -1);
  }
}

}  // namespace

Workspace::Workspace(InstanceState& instance, LoginInfo login, ServerState& state)
    : instance_(instance),
      login_(std::move(login)),
      connection_(instance.FileOf(kMasterId).string()) {
  RegisterServerFunctions(connection_.handle(), state);
  sqlite3_create_function(connection_.handle(), "next_identity", 2, SQLITE_UTF8, this,
                          NextIdentityFunction, nullptr, nullptr);
  sqlite3_busy_handler(connection_.handle(), OnBusy, this);
  connection_.Execute("pragma foreign_keys = on");
}

std::optional<DatabaseInfo> Workspace::LookUpDatabase(std::string_view name) {
  SqliteStatement row =
      connection_.Prepare("select dbid, name, status from main.sysdatabases where name = ?1", name);
  if (!row.Step()) return std::nullopt;
  return DatabaseInfo{static_cast<int>(row.Integer(0)), row.Text(1), row.Integer(2)};
}

std::optional<DatabaseInfo> Workspace::LookUpDatabase(int dbid) {
  SqliteStatement row =
      connection_.Prepare("select dbid, name, status from main.sysdatabases where dbid = ?1", dbid);
  if (!row.Step()) return std::nullopt;
  return DatabaseInfo{static_cast<int>(row.Integer(0)), row.Text(1), row.Integer(2)};
}

DatabaseInfo Workspace::FindDatabase(std::string_view name) {
  std::optional<DatabaseInfo> database = LookUpDatabase(name);
  if (!database) Fail(911, {name});
  return *database;
}

std::string Workspace::Open(const DatabaseInfo& database) {
  if (database.Has(DatabaseStatus::kOffline)) Fail(942, {database.name});
  if (database.Has(DatabaseStatus::kSingleUser) && database.dbid != dbid_ &&
      instance_.InUse(database.dbid, spid_)) {
    Fail(924, {database.name});
  }
  const std::string alias = AliasOf(database.dbid);
  if (database.dbid == kMasterId) return alias;
  const int generation = instance_.GenerationOf(database.dbid);
  const auto found = std::ranges::find(attached_, database.dbid, &Attached::dbid);
  if (found != attached_.end() && found->generation == generation) {
    std::rotate(found, found + 1, attached_.end());
    return alias;
  }
  Detach(database.dbid);
  MakeRoomToAttach();
  connection_.Run("attach ?1 as " + alias,
                  "file:" + instance_.FileOf(database.dbid).string() + "?mode=rw");
  attached_.push_back({database.dbid, generation});
  if (!login_.sysadmin) {
    const bool known =
        connection_.IntegerOf(0,
                              "select count(*) from " + alias +
                                  ".sysusers where hasdbaccess = 1 and (name = 'guest' or sid = "
                                  "(select sid from main.syslogins where name = ?1))",
                              login_.name) > 0;
    const bool open_to_all = database.dbid <= 4;
    if (!known && !open_to_all) {
      Detach(database.dbid);
      Fail(916, {login_.name, database.name});
    }
  }
  return alias;
}

void Workspace::MakeRoomToAttach() {
  while (attached_.size() >= kMostAttached) {
    const int oldest = attached_[attached_.front().dbid == dbid_ ? 1 : 0].dbid;
    if (connection_.InTransaction()) {
      throw Unsupported("more than 9 databases in one transaction");
    }
    Detach(oldest);
  }
}

void Workspace::Detach(int dbid) {
  const auto found = std::ranges::find(attached_, dbid, &Attached::dbid);
  if (found == attached_.end()) return;
  connection_.Execute("detach " + AliasOf(dbid));
  attached_.erase(found);
}

Catalog Workspace::CatalogOf(std::string_view database) {
  if (database == "#") {
    PrepareTemporary();
    return {connection_, "temp"};
  }
  return {connection_, Open(FindDatabase(database.empty() ? database_ : database))};
}

void Workspace::PrepareTemporary() {
  // A rolled back transaction takes the tables with it, so they are looked for each time.
  if (connection_.IntegerOf(0, "select 1 from temp.sqlite_schema where name = '#identity'") == 0) {
    MakeSystemTables(connection_, "temp", DatabaseSystemTables());
  }
}

void Workspace::SetCurrent(const DatabaseInfo& database) {
  database_ = database.name;
  dbid_ = database.dbid;
}

bool Workspace::IsOwner(const DatabaseInfo& database) {
  if (login_.sysadmin) return true;
  const std::string users = QuoteName(Open(database)) + ".";
  return connection_.IntegerOf(
             0,
             "select count(*) from " + users + "sysusers u left join " + users +
                 "sysmembers m on m.memberuid = u.uid and m.groupuid = 16384 where u.sid = (select "
                 "sid from main.syslogins where name = ?1) and (u.uid = 1 or m.groupuid = 16384)",
             login_.name) > 0;
}

void Workspace::BeginTransaction() { ++transaction_count_; }

void Workspace::CommitTransaction() {
  if (transaction_count_ == 0) Fail(3902);
  if (--transaction_count_ > 0) return;
  try {
    if (connection_.InTransaction()) connection_.Execute("commit");
  } catch (const SqliteError&) {
    transaction_count_ = 1;
    RollbackTransaction();
    throw;
  }
  instance_.Update(spid_, [](SessionRecord& record) { record.locks.clear(); });
}

void Workspace::RollbackTransaction() {
  if (transaction_count_ == 0) Fail(3903);
  transaction_count_ = 0;
  if (connection_.InTransaction()) connection_.Execute("rollback");
  instance_.Update(spid_, [](SessionRecord& record) { record.locks.clear(); });
}

bool Workspace::LostTransaction() {
  bool wrote = false;
  instance_.Update(spid_, [&](SessionRecord& record) { wrote = !record.locks.empty(); });
  if (transaction_count_ == 0 || !wrote || connection_.InTransaction()) return false;
  RollbackTransaction();
  return true;
}

std::int64_t Workspace::NextIdentity(const std::string& alias, std::int64_t table) {
  const auto [found, is_new] = identities_.try_emplace({alias, table});
  Counter& counter = found->second;
  if (is_new) {
    SqliteStatement row = connection_.Prepare(
        "select seed, increment, last from " + QuoteName(alias) + ".\"#identity\" where id = ?1",
        table);
    if (!row.Step()) throw SqliteError(SQLITE_CORRUPT, "identity column without a counter");
    counter.increment = row.Integer(1);
    counter.next = row.IsNull(2) ? row.Integer(0) : row.Integer(2) + counter.increment;
  }
  counter.last = counter.next;
  counter.next += counter.increment;
  return *counter.last;
}

void Workspace::SaveIdentities() {
  for (const auto& [key, counter] : identities_) {
    if (!counter.last) continue;
    connection_.Run("update " + QuoteName(key.first) + ".\"#identity\" set last = ?1 where id = ?2",
                    *counter.last, key.second);
    last_identity = counter.last;
  }
  identities_.clear();
}

void Workspace::Interrupt() {
  interrupted_ = true;
  sqlite3_interrupt(connection_.handle());
}

int Workspace::OnBusy(void* self, int calls) {
  return static_cast<Workspace*>(self)->Wait(calls) ? 1 : 0;
}

bool Workspace::Wait(int calls) {
  const auto now = std::chrono::steady_clock::now();
  if (calls == 0) {
    wait_start_ = now;
    const int writer = instance_.WriterOf(waiting_for_dbid_);
    instance_.Update(spid_, [&](SessionRecord& record) { record.blocked_by = writer; });
  }
  const auto limit = options_.lock_timeout.value_or(instance_.options().lock_timeout);
  const bool for_ever = limit.count() < 0;
  const bool goes_on = !interrupted_ && (for_ever || now - wait_start_ < limit);
  if (goes_on) {
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(calls + 1, 10)));
  }
  return goes_on;
}

WriteScope::WriteScope(Workspace& workspace, const DatabaseInfo& database, const std::string& alias,
                       std::int64_t object_id)
    : workspace_(workspace), own_transaction_(workspace.transaction_count() == 0) {
  if (database.Has(DatabaseStatus::kReadOnly) && alias != "temp") Fail(3906, {database.name});
  workspace_.ForgetIdentities();
  if (!workspace_.connection().InTransaction()) {
    workspace_.connection().Execute("begin");
    began_ = true;
  }
  try {
    Lock(database, alias, object_id);
  } catch (...) {
    if (began_) workspace_.connection().Execute("rollback");
    throw;
  }
  workspace_.connection().Execute("savepoint statement");
  open_ = true;
}

void WriteScope::Lock(const DatabaseInfo& database, const std::string& alias,
                      std::int64_t object_id) {
  if (alias == "temp") return;
  InstanceState& instance = workspace_.instance();
  const LockRecord wanted{database.dbid, object_id, "TAB", "IX", true};
  workspace_.waiting_for_dbid_ = database.dbid;
  instance.Update(workspace_.spid(),
                  [&](SessionRecord& record) { record.locks.push_back(wanted); });
  try {
    // Changes nothing, but takes SQLite's write lock before anything of the file is read.
    workspace_.connection().Execute("update " + QuoteName(alias) +
                                    ".\"#identity\" set id = id where 0");
  } catch (const SqliteError& failure) {
    Forget(database.dbid, object_id);
    const int code = failure.code() & 0xFF;
    if (failure.code() == SQLITE_BUSY_SNAPSHOT) Fail(1205, {std::to_string(workspace_.spid())});
    if (code == SQLITE_BUSY && !workspace_.interrupted()) Fail(1222);
    throw;
  }
  instance.Update(workspace_.spid(), [&](SessionRecord& record) {
    record.blocked_by = 0;
    LockRecord granted = record.locks.back();
    record.locks.pop_back();
    granted.waiting = false;
    const bool held = std::ranges::any_of(record.locks, [&](const LockRecord& lock) {
      return lock.dbid == granted.dbid && lock.object_id == granted.object_id;
    });
    if (!held) record.locks.push_back(granted);
  });
}

void WriteScope::Forget(int dbid, std::int64_t object_id) {
  workspace_.instance().Update(workspace_.spid(), [&](SessionRecord& record) {
    record.blocked_by = 0;
    std::erase_if(record.locks, [&](const LockRecord& lock) {
      return lock.waiting && lock.dbid == dbid && lock.object_id == object_id;
    });
  });
}

WriteScope::~WriteScope() {
  if (!open_) return;
  workspace_.ForgetIdentities();
  sqlite3* connection = workspace_.connection().handle();
  const char* undo = own_transaction_ ? "rollback" : "rollback to statement; release statement";
  // An interrupted write may have rolled everything back already; then there is nothing to undo.
  sqlite3_exec(connection, undo, nullptr, nullptr, nullptr);
  if (own_transaction_) {
    workspace_.instance().Update(workspace_.spid(),
                                 [](SessionRecord& record) { record.locks.clear(); });
  }
}

void WriteScope::Commit() {
  workspace_.SaveIdentities();
  workspace_.connection().Execute("release statement");
  if (own_transaction_) {
    workspace_.connection().Execute("commit");
    workspace_.instance().Update(workspace_.spid(),
                                 [](SessionRecord& record) { record.locks.clear(); });
  }
  open_ = false;
}

}  // namespace dbkeeper::server
