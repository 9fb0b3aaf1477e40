#include "server/engine/instance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

#include "server/catalog/login_store.h"
#include "server/catalog/sample_instance.h"
#include "server/engine/engine_session.h"
#include "server/engine/instance_state.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kMasterId = 1;

// Master, for looking up and changing logins outside of a session.
class MasterConnection {
 public:
  explicit MasterConnection(const InstanceState& state)
      : connection_(state.FileOf(kMasterId).string()) {
    constexpr int kWaitMilliseconds = 10'000;
    RegisterServerFunctions(connection_.handle());
    sqlite3_busy_timeout(connection_.handle(), kWaitMilliseconds);
  }
  SqliteConnection& operator*() { return connection_; }
  SqliteConnection* operator->() { return &connection_; }

 private:
  SqliteConnection connection_;
};

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

Instance::Instance(std::unique_ptr<FolderLock> lock, std::unique_ptr<InstanceState> state)
    : lock_(std::move(lock)), state_(std::move(state)) {}

Instance::~Instance() = default;

std::unique_ptr<Instance> Instance::Open(const InstanceOptions& options) {
  std::filesystem::create_directories(options.folder);
  std::filesystem::permissions(options.folder, std::filesystem::perms::owner_all);
  auto lock = std::make_unique<FolderLock>(options.folder);
  auto state = std::make_unique<InstanceState>(options);
  if (!std::filesystem::exists(state->FileOf(kMasterId))) MakeSampleInstance(options);
  state->places().Load(*MasterConnection(*state));
  RenewTemporaryDatabase(*state);
  return std::unique_ptr<Instance>(new Instance(std::move(lock), std::move(state)));
}

void Instance::SetOperator(const std::string& windows_name, const std::string& secret) {
  state_->SetOperator(windows_name, secret);
}

void Instance::SetLoginPassword(const std::string& name, const std::string& password) {
  MasterConnection master(*state_);
  master->Execute("begin immediate");
  if (master->IntegerOf(0, "select 1 from main.syslogins where name = ?1", name) == 0) {
    StoreLogin(*master, {.name = name, .sysadmin = true});
  }
  StorePassword(*master, name, password);
  master->Execute("commit");
}

void Instance::OnShutdown(std::function<void()> callback) {
  state_->OnShutdown(std::move(callback));
}

void Instance::OnKill(std::function<void(int)> callback) { state_->OnKill(std::move(callback)); }

std::string Instance::server_name() const { return state_->options().server_name; }

std::unique_ptr<Session> Instance::Login(const LoginRequest& request) {
  const bool operates = state_->IsOperator(request.user, request.password);
  LoginInfo login;
  std::string database = request.database;
  try {
    MasterConnection master(*state_);
    if (!operates && SameName(request.user, "sa") && !HasPassword(*master, "sa")) {
      Refuse(request.user,
             " Reason: The login has no password and cannot be used until one is set.");
    }
    if (!operates && !PasswordFits(*master, request.user, request.password)) Refuse(request.user);
    login = ReadLogin(*master, request.user, operates);
    if (database.empty()) {
      database = master->TextOf("select dbname from main.syslogins where name = ?1", request.user);
    }
    if (database.empty()) database = "master";
    auto session = std::make_unique<EngineSession>(*state_, login);
    session->Enter(request.client, database);
    return session;
  } catch (const SqlError&) {
    throw LoginRefused{request.database.empty() ? MakeMessage(4064)
                                                : MakeMessage(4060, {request.database})};
  }
}

}  // namespace dbkeeper::server
