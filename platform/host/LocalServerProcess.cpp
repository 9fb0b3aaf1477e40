#include "platform/host/LocalServerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pwd.h>
#include <signal.h>
#include <spawn.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>
#include <thread>
#include <utility>

#include "app/support/Errors.h"
#include "app/support/Hexadecimal.h"
#include "app/support/Messages.h"

namespace dbkeeper {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

[[noreturn]] void FailToStart(std::string_view why) {
  throw SessionError(messages::Fill(messages::kNoLocalServer, why));
}

std::string SystemMessage() { return std::strerror(errno); }

// 256 bits of the system's randomness, in hexadecimal.
std::string MakeSecret() {
  std::array<char, 32> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    FailToStart(SystemMessage());
  }
  return ToHexadecimal({bytes.data(), bytes.size()});
}

// Without the computer before it: the driver takes a name with a backslash for a login at a domain
// controller and then sends no password.
std::string OperatorName() {
  const passwd* entry = getpwuid(getuid());
  return entry != nullptr ? entry->pw_name : "uid" + std::to_string(getuid());
}

// The port in a line "port N", 0 when it is none.
int PortOf(std::string_view line) {
  constexpr std::string_view kWord = "port ";
  int port = 0;
  if (line.starts_with(kWord)) {
    std::from_chars(line.data() + kWord.size(), line.data() + line.size(), port);
  }
  return port;
}

class SpawnActions {
 public:
  SpawnActions() { posix_spawn_file_actions_init(&actions_); }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;

  void Use(int descriptor, int as) { posix_spawn_file_actions_adddup2(&actions_, descriptor, as); }
  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

}  // namespace

void Descriptor::Take(int number) {
  Close();
  number_ = number;
}

void Descriptor::Close() {
  if (number_ >= 0) close(number_);
  number_ = -1;
}

LocalServerOptions LocalServerBeside(const std::filesystem::path& executable) {
  const std::filesystem::path folder = executable.parent_path();
  return {.program = folder / "dbkeeper-server", .data_folder = folder / "server-data"};
}

LocalServerProcess::LocalServerProcess(LocalServerOptions options) : options_(std::move(options)) {}

LocalServerProcess::~LocalServerProcess() { Stop(); }

LocalTarget LocalServerProcess::Locate() {
  if (!Running()) Start();
  return {.data_source = "127.0.0.1," + std::to_string(port_),
          .user = OperatorName(),
          .secret = secret_};
}

void LocalServerProcess::Start() {
  Stop();
  // A socket rather than a pipe: writing to a child that has ended is an error, not a signal. None
  // of the descriptors goes to other children, or the server would outlive this process with them.
  int input[2];
  int output[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input) != 0) FailToStart(SystemMessage());
  input_.Take(input[0]);
  const Descriptor child_input(input[1]);
  if (pipe2(output, O_CLOEXEC) != 0) FailToStart(SystemMessage());
  const Descriptor our_output(output[0]);
  Descriptor child_output(output[1]);
  try {
    Spawn(child_input.Number(), child_output.Number());
    child_output.Close();
    secret_ = MakeSecret();
    std::string lines = "operator " + OperatorName() + "\t" + secret_ + "\n";
    for (const auto& login : options_.logins) {
      lines += "login " + login.name + "\t" + login.password + "\n";
    }
    Tell(lines + "start\n");
    port_ = ReadPort(our_output.Number());
  } catch (...) {
    Stop();
    throw;
  }
}

void LocalServerProcess::Spawn(int input, int output) {
  SpawnActions actions;
  actions.Use(input, STDIN_FILENO);
  actions.Use(output, STDOUT_FILENO);
  std::string program = options_.program.string();
  std::string option = "--data";
  std::string folder = options_.data_folder.string();
  const std::array<char*, 4> arguments = {program.data(), option.data(), folder.data(), nullptr};
  const int problem =
      posix_spawn(&process_, program.c_str(), actions.Get(), nullptr, arguments.data(), environ);
  if (problem == 0) return;
  process_ = 0;
  FailToStart(program + ": " + std::strerror(problem));
}

void LocalServerProcess::Tell(const std::string& lines) {
  for (std::string_view rest = lines; !rest.empty();) {
    const ssize_t sent = send(input_.Number(), rest.data(), rest.size(), MSG_NOSIGNAL);
    if (sent > 0) {
      rest.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno != EINTR) {
      FailToStart(SystemMessage());
    }
  }
}

int LocalServerProcess::ReadPort(int output) {
  const auto deadline = steady_clock::now() + options_.start_timeout;
  std::string line;
  while (line.find('\n') == std::string::npos) {
    const auto left =
        std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now()).count();
    pollfd wait{output, POLLIN, 0};
    if (left <= 0 || poll(&wait, 1, static_cast<int>(left)) == 0) {
      FailToStart(messages::kNoPortInTime);
    }
    std::array<char, 256> bytes{};
    const ssize_t count = read(output, bytes.data(), bytes.size());
    if (count == 0) FailToStart(messages::kEndedAtOnce);
    if (count > 0) line.append(bytes.data(), static_cast<std::size_t>(count));
  }
  const int port = PortOf(line);
  if (port == 0) FailToStart(line.substr(0, line.find('\n')));
  return port;
}

bool LocalServerProcess::Running() {
  if (process_ == 0) return false;
  if (waitpid(process_, nullptr, WNOHANG) == 0) return true;
  process_ = 0;
  return false;
}

bool LocalServerProcess::EndsWithin(milliseconds time) {
  constexpr milliseconds kStep{10};
  for (milliseconds waited{0}; waited < time; waited += kStep) {
    if (!Running()) return true;
    std::this_thread::sleep_for(kStep);
  }
  return !Running();
}

void LocalServerProcess::Stop() {
  constexpr milliseconds kTimeToFinish{5000};
  constexpr milliseconds kTimeToTerminate{2000};
  input_.Close();
  port_ = 0;
  secret_.clear();
  if (EndsWithin(kTimeToFinish)) return;
  kill(process_, SIGTERM);
  if (EndsWithin(kTimeToTerminate)) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = 0;
}

}  // namespace dbkeeper
