#include "server/engine/instance_state.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "server/catalog/catalog.h"
#include "server/catalog/login_store.h"
#include "server/engine/engine_session.h"
#include "server/storage/text_order.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// The server keeps the first numbers for its own tasks; clients come from 51 on.
constexpr int kFirstClient = 51;
constexpr int kMasterId = 1;

// Master, for looking up and changing logins outside of a session.
SqliteConnection OpenMaster(const InstanceState& state) {
  constexpr int kWaitMilliseconds = 10'000;
  SqliteConnection master(state.FileOf(kMasterId).string());
  RegisterServerFunctions(master.handle());
  sqlite3_busy_timeout(master.handle(), kWaitMilliseconds);
  return master;
}

[[noreturn]] void Refuse(const std::string& user, const std::string& reason = {}) {
  throw LoginRefused{MakeMessage(18456, {user, reason})};
}

LoginInfo ReadLogin(SqliteConnection& master, const std::string& name, bool operates) {
  SqliteStatement row = master.Prepare(
      "select name, sysadmin, dbcreator, securityadmin from main.syslogins where name = ?1", name);
  if (!row.Step()) return {.name = name, .sysadmin = operates};
  return {.name = row.Text(0),
          .sysadmin = operates || row.Integer(1) != 0,
          .dbcreator = row.Integer(2) != 0,
          .security_admin = row.Integer(3) != 0};
}

}  // namespace

// Keeps other processes out of the folder.
class FolderLock {
 public:
  explicit FolderLock(const std::filesystem::path& folder)
      : file_(open((folder / "lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600)) {
    if (file_ < 0 || flock(file_, LOCK_EX | LOCK_NB) != 0) {
      if (file_ >= 0) close(file_);
      throw std::runtime_error("the folder " + folder.string() + " is in use or not writable");
    }
  }
  ~FolderLock() { close(file_); }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int file_;
};

InstanceState::InstanceState(InstanceOptions options, SystemProcedures run)
    : options_(std::move(options)), run_procedure_(run), places_(options_.folder) {}

InstanceState::~InstanceState() = default;

void InstanceState::LockFolder() { lock_ = std::make_unique<FolderLock>(options_.folder); }

void InstanceState::LoadPlaces() {
  SqliteConnection master = OpenMaster(*this);
  RenewTextOrder(master, "main", "master");
  places_.Load(master);
}

FileState InstanceState::FileStateOf(int dbid) const {
  const std::scoped_lock lock(mutex_);
  const auto found = files_.find(dbid);
  return found == files_.end() ? FileState{} : found->second;
}

void InstanceState::NewGeneration(int dbid) {
  const std::scoped_lock lock(mutex_);
  ++files_[dbid].generation;
}

bool InstanceState::BeginRestore(int dbid, int spid) {
  const std::scoped_lock lock(mutex_);
  if (InUseUnlocked(dbid, spid)) return false;
  files_[dbid].restoring = true;
  return true;
}

void InstanceState::EndRestore(int dbid) {
  const std::scoped_lock lock(mutex_);
  files_[dbid].restoring = false;
}

std::string InstanceState::NextTimestamp() {
  const std::scoped_lock lock(mutex_);
  // The clock keeps the numbers rising from one run of the server to the next.
  const auto now =
      static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
  last_timestamp_ = std::max(last_timestamp_ + 1, now);
  std::string bytes;
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(last_timestamp_ >> shift & 0xFF);
  }
  return bytes;
}

int InstanceState::Enter(Session& session, const std::string& login, const ClientInfo& client,
                         int dbid) {
  const std::scoped_lock lock(mutex_);
  int spid = kFirstClient;
  while (sessions_.contains(spid)) ++spid;
  SessionRecord& record = sessions_[spid];
  record.spid = spid;
  record.login = login;
  record.client = client;
  record.login_time = record.last_batch = CurrentTime();
  record.dbid = dbid;
  record.session = &session;
  return spid;
}

void InstanceState::Leave(int spid) {
  const std::scoped_lock lock(mutex_);
  sessions_.erase(spid);
}

void InstanceState::Update(int spid, const std::function<void(SessionRecord&)>& change) {
  const std::scoped_lock lock(mutex_);
  const auto found = sessions_.find(spid);
  if (found != sessions_.end()) change(found->second);
}

std::vector<SessionRecord> InstanceState::Sessions() const {
  const std::scoped_lock lock(mutex_);
  std::vector<SessionRecord> records;
  for (const auto& [spid, record] : sessions_) records.push_back(record);
  return records;
}

std::optional<SessionRecord> InstanceState::Find(int spid) const {
  const std::scoped_lock lock(mutex_);
  const auto found = sessions_.find(spid);
  return found == sessions_.end() ? std::nullopt : std::optional(found->second);
}

bool InstanceState::InUse(int dbid, int spid) const {
  const std::scoped_lock lock(mutex_);
  return InUseUnlocked(dbid, spid);
}

bool InstanceState::InUseUnlocked(int dbid, int spid) const {
  const auto file = files_.find(dbid);
  if (file != files_.end() && file->second.restoring) return true;
  return std::ranges::any_of(sessions_, [&](const auto& entry) {
    const SessionRecord& record = entry.second;
    return record.spid != spid && record.dbid == dbid;
  });
}

int InstanceState::WriterOf(int dbid) const {
  const std::scoped_lock lock(mutex_);
  for (const auto& [spid, record] : sessions_) {
    for (const LockRecord& held : record.locks) {
      if (held.dbid == dbid && !held.waiting) return spid;
    }
  }
  return 0;
}

void InstanceState::Kill(int spid, int killer) {
  constexpr int kHighestProcess = 32767;
  if (spid == killer) Fail(6104);
  if (spid < 1 || spid > kHighestProcess) {
    Fail(6101, {std::to_string(spid), std::to_string(kHighestProcess)});
  }
  std::function<void(int)> close;
  {
    const std::scoped_lock lock(mutex_);
    const auto found = sessions_.find(spid);
    if (found == sessions_.end()) Fail(6106, {std::to_string(spid)});
    found->second.session->Interrupt();
    close = on_kill_;
  }
  if (close) close(spid);
}

void InstanceState::RequestShutdown() {
  std::function<void()> callback;
  {
    const std::scoped_lock lock(mutex_);
    callback = on_shutdown_;
  }
  if (callback) callback();
}

void InstanceState::SetOperator(const std::string& windows_name, const std::string& secret) {
  const std::scoped_lock lock(mutex_);
  operator_name_ = windows_name;
  operator_secret_ = secret;
}

bool InstanceState::IsOperator(const std::string& name, const std::string& secret) const {
  const std::scoped_lock lock(mutex_);
  return !operator_secret_.empty() && SameName(name, operator_name_) &&
         SecretEquals(secret, operator_secret_);
}

void InstanceState::OnShutdown(std::function<void()> callback) {
  const std::scoped_lock lock(mutex_);
  on_shutdown_ = std::move(callback);
}

void InstanceState::OnKill(std::function<void(int)> callback) {
  const std::scoped_lock lock(mutex_);
  on_kill_ = std::move(callback);
}

void InstanceState::SetLoginPassword(const std::string& name, const std::string& password) {
  SqliteConnection master = OpenMaster(*this);
  master.Execute("begin immediate");
  if (master.IntegerOf(0, "select 1 from main.syslogins where name = ?1", name) == 0) {
    StoreLogin(master, {.name = name, .sysadmin = true});
  }
  StorePassword(master, name, password);
  master.Execute("commit");
}

std::unique_ptr<Session> InstanceState::Login(const LoginRequest& request) {
  const bool operates = IsOperator(request.user, request.password);
  LoginInfo login;
  std::string database = request.database;
  try {
    SqliteConnection master = OpenMaster(*this);
    if (!operates && SameName(request.user, "sa") && !HasPassword(master, "sa")) {
      Refuse(request.user,
             " Reason: The login has no password and cannot be used until one is set.");
    }
    if (!operates && !PasswordFits(master, request.user, request.password)) Refuse(request.user);
    login = ReadLogin(master, request.user, operates);
    if (database.empty()) {
      database = master.TextOf("select dbname from main.syslogins where name = ?1", request.user);
    }
    if (database.empty()) database = "master";
    return Enter(login, request.client, database);
  } catch (const SqlError&) {
    throw LoginRefused{request.database.empty() ? MakeMessage(4064)
                                                : MakeMessage(4060, {request.database})};
  }
}

std::unique_ptr<Session> InstanceState::Admit(const std::string& login, const ClientInfo& client,
                                              const std::string& database) {
  SqliteConnection master = OpenMaster(*this);
  return Enter(ReadLogin(master, login, false), client, database);
}

std::unique_ptr<Session> InstanceState::Enter(const LoginInfo& login, const ClientInfo& client,
                                              const std::string& database) {
  auto session = std::make_unique<EngineSession>(*this, login);
  session->Enter(client, database);
  return session;
}

}  // namespace dbkeeper::server
