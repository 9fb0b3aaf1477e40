// dbkeeper-server: the local server as a program of its own.
//
//   dbkeeper-server --data DIR [--port N] [--name NAME] [--standalone]
//   dbkeeper-server --help | --version
//
// It is told what is secret over its standard input, so that nothing of it stands on a command line
// or in a file, one command a line:
//
//   operator NAME<TAB>SECRET   lets NAME in by Windows authentication with SECRET as the password
//   login NAME<TAB>PASSWORD    sets the password of an SQL login
//   start                      starts the agent of jobs, opens the port, prints "port N", serves
//   clock YYYYMMDD HHMMSS      lets the agent's clock go on from that local time (for tests)
//
// It ends when its input ends (whoever started it is gone; not with --standalone), on SIGTERM or
// SIGINT, or when a client runs SHUTDOWN.
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "server/agent/agent.h"
#include "server/instance/open_instance.h"
#include "server/types/job_schedule.h"
#include "server/wire/server.h"

namespace dbkeeper::server {
namespace {

struct Arguments {
  std::filesystem::path data;
  std::uint16_t port = 0;
  std::string name;
  bool standalone = false;
};

Arguments ReadArguments(int count, char** values) {
  Arguments arguments;
  for (int i = 1; i < count; ++i) {
    const std::string_view option = values[i];
    if (option == "--standalone") {
      arguments.standalone = true;
      continue;
    }
    if (i + 1 == count)
      throw std::runtime_error("missing value, or unknown option: " + std::string(option));
    const std::string_view value = values[++i];
    if (option == "--data") {
      arguments.data = value;
    } else if (option == "--name") {
      arguments.name = value;
    } else if (option == "--port") {
      const char* const end = value.data() + value.size();
      if (std::from_chars(value.data(), end, arguments.port).ptr != end) {
        throw std::runtime_error("not a port: " + std::string(value));
      }
    } else {
      throw std::runtime_error("unknown option: " + std::string(option));
    }
  }
  if (arguments.data.empty()) throw std::runtime_error("--data DIR is missing");
  return arguments;
}

constexpr std::string_view kHelp =
    "dbkeeper-server --data DIR [--port N] [--name NAME] [--standalone]\n"
    "\n"
    "The local server of DB Keeper: SQL Server 2000's dialect and protocol over SQLite.\n"
    "\n"
    "  --data DIR     the folder of its databases; made, with samples, when it is not there\n"
    "  --port N       the port on this machine that it serves; a free one without it\n"
    "  --name NAME    the name it has for its clients; the machine's without it\n"
    "  --standalone   goes on when its standard input ends\n"
    "  --help, --version\n"
    "\n"
    "It reads commands from its standard input, one a line: \"operator NAME<TAB>SECRET\",\n"
    "\"login NAME<TAB>PASSWORD\", \"start\".\n";

// Answers an option that asks for words alone; false when there is none.
bool AnswersWithWords(int count, char** values) {
  if (count != 2) return false;
  const std::string_view option = values[1];
  if (option == "--help") {
    std::cout << kHelp;
  } else if (option == "--version") {
    std::cout << "dbkeeper-server " DBKEEPER_VERSION "\n";
  } else {
    return false;
  }
  return true;
}

std::string HostName() {
  std::array<char, 256> name{};
  gethostname(name.data(), name.size() - 1);
  return name.data();
}

// Every client needs a few descriptors for its databases, and the default is made for one user.
void RaiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

// Signals come as something to read, so that one poll waits for all that can happen.
int OpenSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  return signalfd(-1, &signals, SFD_CLOEXEC);
}

// The instance and its server, driven by the lines of the input.
class Program {
 public:
  Program(const Arguments& arguments, int shutdown_event)
      : arguments_(arguments), instance_(OpenInstance(Options(arguments))) {
    instance_->OnShutdown([shutdown_event] { eventfd_write(shutdown_event, 1); });
    instance_->OnKill([this](int spid) {
      if (server_) server_->CloseConnection(spid);
    });
  }

  void RunCommand(std::string_view line) {
    const std::string_view command = line.substr(0, line.find(' '));
    const std::string_view rest = line.substr(std::min(command.size() + 1, line.size()));
    const std::size_t tab = rest.find('\t');
    if (command == "start" && rest.empty()) return Start();
    if (command == "clock") return SetClock(rest);
    const bool is_operator = command == "operator";
    if (tab == std::string_view::npos || (!is_operator && command != "login")) {
      throw std::runtime_error("unknown command: " + std::string(command));
    }
    const std::string name(rest.substr(0, tab));
    const std::string secret(rest.substr(tab + 1));
    if (is_operator) {
      instance_->SetOperator(name, secret);
    } else {
      instance_->SetLoginPassword(name, secret);
    }
  }

 private:
  static InstanceOptions Options(const Arguments& arguments) {
    InstanceOptions options;
    options.folder = arguments.data;
    options.machine_name = HostName();
    options.server_name = arguments.name.empty() ? options.machine_name : arguments.name;
    return options;
  }

  void Start() {
    if (server_) throw std::runtime_error("already started");
    ServerOptions options;
    options.port = arguments_.port;
    agent_.emplace(*instance_);
    server_.emplace(*instance_, options);
    std::cout << "port " << server_->port() << std::endl;
  }

  void SetClock(std::string_view text) {
    AgentTime time;
    const char* const end = text.data() + text.size();
    const char* const blank = std::from_chars(text.data(), end, time.date).ptr;
    const bool two = blank != end && std::from_chars(blank + 1, end, time.time).ptr == end;
    if (!two || !IsAgentDate(time.date) || !IsAgentClock(time.time)) {
      throw std::runtime_error("not a date and a time: " + std::string(text));
    }
    if (!agent_) throw std::runtime_error("not started yet");
    agent_->SetClock(FromAgentTime(time));
  }

  const Arguments arguments_;
  const std::unique_ptr<Instance> instance_;
  std::optional<Agent> agent_;
  std::optional<Server> server_;
};

// Takes what came on the input, and runs the lines that are whole. False at the end of the input.
bool ReadCommands(std::string& pending, Program& program) {
  std::array<char, 4096> bytes{};
  const ssize_t got = read(STDIN_FILENO, bytes.data(), bytes.size());
  if (got <= 0) return false;
  pending.append(bytes.data(), static_cast<std::size_t>(got));
  for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
    const std::string line = pending.substr(0, end);
    pending.erase(0, end + 1);
    try {
      program.RunCommand(line);
    } catch (const std::runtime_error& error) {
      std::cerr << "dbkeeper-server: " << error.what() << '\n';
    }
  }
  return true;
}

void Run(const Arguments& arguments) {
  RaiseDescriptorLimit();
  // Databases and backups hold what is nobody else's, wherever they are made.
  umask(S_IRWXG | S_IRWXO);
  const int signals = OpenSignals();
  const int shutdown_event = eventfd(0, EFD_CLOEXEC);
  Program program(arguments, shutdown_event);
  std::array<pollfd, 3> wait = {
      {{STDIN_FILENO, POLLIN, 0}, {signals, POLLIN, 0}, {shutdown_event, POLLIN, 0}}};
  std::string pending;
  while (wait[1].revents == 0 && wait[2].revents == 0) {
    poll(wait.data(), wait.size(), -1);
    if (wait[0].revents == 0 || ReadCommands(pending, program)) continue;
    if (!arguments.standalone) return;
    wait[0].fd = -1;  // poll leaves it out
  }
}

}  // namespace
}  // namespace dbkeeper::server

int main(int count, char** values) {
  try {
    if (dbkeeper::server::AnswersWithWords(count, values)) return 0;
    dbkeeper::server::Run(dbkeeper::server::ReadArguments(count, values));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "dbkeeper-server: " << error.what() << '\n';
    return 1;
  }
}
