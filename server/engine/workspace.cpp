#include "server/engine/workspace.h"

#include <algorithm>
#include <thread>

#include "server/catalog/system_tables.h"
#include "server/storage/text_order.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

constexpr int kMasterId = 1;
// SQLite takes ten; one is kept free for what a statement names in between.
constexpr std::size_t kMostAttached = 9;

std::string AliasOf(int dbid) { return dbid == kMasterId ? "main" : "d" + std::to_string(dbid); }

std::optional<DatabaseInfo> ReadDatabase(SqliteStatement& row) {
  if (!row.Step()) return std::nullopt;
  return DatabaseInfo{static_cast<int>(row.Integer(0)), row.Text(1), row.Integer(2)};
}

}  // namespace

Workspace::Workspace(InstanceState& instance, LoginInfo login, ServerState& state)
    : instance_(instance),
      login_(std::move(login)),
      connection_(instance.FileOf(kMasterId).string()) {
  RegisterServerFunctions(connection_.handle(), &state);
  sqlite3_busy_handler(connection_.handle(), OnBusy, this);
  connection_.Execute("pragma foreign_keys = on");
}

std::int64_t Workspace::DefinitionVersion(const std::string& alias) {
  auto found = version_of_.find(alias);
  if (found == version_of_.end()) {
    found =
        version_of_
            .emplace(alias, connection_.Prepare("pragma " + QuoteName(alias) + ".schema_version"))
            .first;
  }
  constexpr std::int64_t kVersions = 1'000'000'000;
  found->second.Step();
  const std::int64_t version = found->second.Integer(0);
  found->second.Reset();
  return epoch_ * kVersions + version;
}

std::optional<DatabaseInfo> Workspace::LookUpDatabase(std::string_view name) {
  if (!database_by_name_) {
    database_by_name_ =
        connection_.Prepare("select dbid, name, status from main.sysdatabases where name = ?1");
  }
  database_by_name_->Bind(1, name);
  std::optional<DatabaseInfo> info = ReadDatabase(*database_by_name_);
  database_by_name_->Reset();
  return info;
}

std::optional<DatabaseInfo> Workspace::LookUpDatabase(int dbid) {
  SqliteStatement row =
      connection_.Prepare("select dbid, name, status from main.sysdatabases where dbid = ?1", dbid);
  return ReadDatabase(row);
}

DatabaseInfo Workspace::FindDatabase(std::string_view name, int error) {
  std::optional<DatabaseInfo> database = LookUpDatabase(name);
  if (!database) Fail(error, {name});
  return *database;
}

std::string Workspace::Open(const DatabaseInfo& database) {
  const FileState file = instance_.FileStateOf(database.dbid);
  if (file.restoring) Fail(927, {database.name});
  if (database.Has(DatabaseStatus::kOffline)) Fail(942, {database.name});
  if (database.Has(DatabaseStatus::kSingleUser) && database.dbid != dbid_ &&
      instance_.InUse(database.dbid, spid_)) {
    Fail(924, {database.name});
  }
  std::string alias = AliasOf(database.dbid);
  if (database.dbid == kMasterId) return alias;
  const auto found = std::ranges::find(attached_, database.dbid, &Attached::dbid);
  if (found != attached_.end() && found->generation == file.generation) {
    std::rotate(found, found + 1, attached_.end());
    return alias;
  }
  Detach(database.dbid);
  MakeRoomToAttach();
  connection_.Run("attach ?1 as " + alias, FileUri(instance_.FileOf(database.dbid), "mode=rw"));
  attached_.push_back({database.dbid, file.generation});
  try {
    RenewTextOrder(connection_, alias, database.name);
  } catch (const SqlError&) {
    Detach(database.dbid);
    throw;
  }
  if (!login_.sysadmin) {
    const bool known =
        Catalog(connection_, alias)
            .IntegerOf(0,
                       "select count(*) from {}sysusers where hasdbaccess = 1 and (name = 'guest' "
                       "or sid = (select sid from main.syslogins where name = ?1))",
                       login_.name) > 0;
    if (!known && !database.IsSystem()) {
      Detach(database.dbid);
      Fail(916, {login_.name, database.name});
    }
    if (database.Has(DatabaseStatus::kDboOnly) && !login_.dbcreator && !IsOwner(database)) {
      Detach(database.dbid);
      Fail(923, {database.name});
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
  ++epoch_;
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

std::string Workspace::UserName(const DatabaseInfo& database) {
  if (login_.sysadmin) return "dbo";
  const std::string name =
      Catalog(connection_, Open(database))
          .TextOf(
              "select name from {}sysusers where sid = (select sid from main.syslogins where name "
              "= ?1)",
              login_.name);
  return name.empty() ? "guest" : name;
}

bool Workspace::IsIn(const DatabaseInfo& database, std::int64_t role) {
  return Catalog(connection_, Open(database))
             .IntegerOf(0,
                        "select count(*) from {}sysusers u left join {}sysmembers m on m.memberuid "
                        "= u.uid and m.groupuid = ?2 where u.sid = (select sid from main.syslogins "
                        "where name = ?1) and (u.uid = 1 or m.groupuid is not null)",
                        login_.name, role) > 0;
}

bool Workspace::Holds(int dbid, std::int64_t object_id) const {
  return std::ranges::find(held_, std::pair(dbid, object_id)) != held_.end();
}

void Workspace::ReleaseLocks() {
  held_.clear();
  instance_.Update(spid_, [](SessionRecord& record) { record.locks.clear(); });
}

void Workspace::NeedOwner(const DatabaseInfo& database, std::string_view statement) {
  if (!IsOwner(database)) Fail(262, {statement, database.name});
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
  ReleaseLocks();
}

void Workspace::RollbackTransaction() {
  if (transaction_count_ == 0) Fail(3903);
  transaction_count_ = 0;
  if (connection_.InTransaction()) connection_.Execute("rollback");
  ++epoch_;
  ReleaseLocks();
}

bool Workspace::LostTransaction() {
  if (transaction_count_ == 0 || held_.empty() || connection_.InTransaction()) return false;
  RollbackTransaction();
  return true;
}

std::int64_t Workspace::NextIdentity(const std::string& alias, std::int64_t table,
                                     const SqlType& type) {
  const auto [found, is_new] = identities_.try_emplace({alias, table});
  Counter& counter = found->second;
  if (is_new) {
    SqliteStatement row =
        Catalog(connection_, alias)
            .Prepare("select seed, increment, last from {}\"#identity\" where id = ?1", table);
    if (!row.Step()) throw std::runtime_error("identity column without a counter");
    counter.increment = row.Integer(1);
    counter.next.value = row.IsNull(2) ? row.Integer(0) : row.Integer(2);
    if (!row.IsNull(2)) counter.next.value += counter.increment;
  }
  if (!FitsType(counter.next, type) || !FitsInteger(counter.next, TypeId::kBigInt)) {
    Fail(8115, {"IDENTITY", NameOf(type.id)});
  }
  counter.last = static_cast<std::int64_t>(counter.next.value);
  counter.next.value += counter.increment;
  return *counter.last;
}

void Workspace::SaveIdentities() {
  for (const auto& [key, counter] : identities_) {
    if (!counter.last) continue;
    connection_.Run("update " + QuoteName(key.first) + ".\"#identity\" set last = ?1 where id = ?2",
                    *counter.last, key.second);
    last_identity = last_insert_identity = counter.last;
  }
  identities_.clear();
}

void Workspace::Interrupt() {
  interrupted_ = true;
  sqlite3_interrupt(connection_.handle());
}

void Workspace::StopIfInterrupted() const {
  if (interrupted_) Fail(3617);
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
  const auto limit = LockTimeout();
  const bool for_ever = limit.count() < 0;
  const bool goes_on = !interrupted_ && (for_ever || now - wait_start_ < limit);
  if (goes_on) {
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(calls + 1, 10)));
  }
  return goes_on;
}

WriteScope::WriteScope(Workspace& workspace, const DatabaseInfo& database, const std::string& alias,
                       std::int64_t object_id, Undo undo)
    : workspace_(workspace),
      own_transaction_(workspace.transaction_count() == 0),
      savepoint_(!own_transaction_ && undo == Undo::kAll) {
  if (database.Has(DatabaseStatus::kReadOnly) && alias != "temp") Fail(3906, {database.name});
  workspace_.ForgetIdentities();
  const bool begins = !workspace_.connection().InTransaction();
  if (begins) workspace_.connection().Execute("begin");
  try {
    Lock(database, alias, object_id);
  } catch (...) {
    if (begins) workspace_.connection().Execute("rollback");
    throw;
  }
  if (savepoint_) workspace_.connection().Execute("savepoint statement");
  open_ = true;
}

void WriteScope::Lock(const DatabaseInfo& database, const std::string& alias,
                      std::int64_t object_id) {
  if (alias == "temp" || workspace_.Holds(database.dbid, object_id)) return;
  // Each file has a log of its own, so that a kill could leave half of a commit to two of them.
  constexpr int kTempdb = 2;
  for (const auto& [held, object] : workspace_.held_) {
    if (own_transaction_ || held == database.dbid) continue;
    if (held == kTempdb || database.dbid == kTempdb) continue;  // new with each start anyway
    throw Unsupported("a transaction that changes '" + database.name + "' beside '" +
                      workspace_.LookUpDatabase(held)->name + "'");
  }
  InstanceState& instance = workspace_.instance();
  const LockRecord wanted{database.dbid, object_id, true};
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
  const auto attached =
      std::ranges::find(workspace_.attached_, database.dbid, &Workspace::Attached::dbid);
  if (attached != workspace_.attached_.end() &&
      attached->generation != instance.FileStateOf(database.dbid).generation) {
    // While it waited, a restore has given the database another file.
    Forget(database.dbid, object_id);
    Fail(1222);
  }
  instance.Update(workspace_.spid(), [&](SessionRecord& record) {
    record.blocked_by = 0;
    record.locks.back().waiting = false;
  });
  workspace_.held_.emplace_back(database.dbid, object_id);
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
  ++workspace_.epoch_;
  sqlite3* connection = workspace_.connection().handle();
  // An interrupted write may have rolled everything back already; then there is nothing to undo.
  if (own_transaction_) {
    sqlite3_exec(connection, "rollback", nullptr, nullptr, nullptr);
    workspace_.ReleaseLocks();
  } else if (savepoint_) {
    sqlite3_exec(connection, "rollback to statement; release statement", nullptr, nullptr, nullptr);
  }
}

void WriteScope::Commit() {
  workspace_.SaveIdentities();
  if (savepoint_) workspace_.connection().Execute("release statement");
  if (own_transaction_) {
    workspace_.connection().Execute("commit");
    workspace_.ReleaseLocks();
  }
  open_ = false;
}

}  // namespace dbkeeper::server
