#include "tests/server/e2e/server_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace dbkeeper::server {
namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "dbkeeper-e2e-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

ServerProcess::ServerProcess(const std::filesystem::path& data) {
  std::array<int, 2> to_server{};
  std::array<int, 2> from_server{};
  if (pipe2(to_server.data(), O_CLOEXEC) != 0 || pipe2(from_server.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  const std::string folder = data.string();
  process_ = fork();
  if (process_ == 0) {
    dup2(to_server[0], STDIN_FILENO);
    dup2(from_server[1], STDOUT_FILENO);
    execl(DBKEEPER_SERVER, DBKEEPER_SERVER, "--data", folder.c_str(), nullptr);
    _exit(127);
  }
  close(to_server[0]);
  close(from_server[1]);
  input_ = to_server[1];
  output_ = from_server[0];
  const std::string lines = "operator operator\tone-time\nlogin tester\tSecret_1\nstart\n";
  if (write(input_, lines.data(), lines.size()) < 0) throw std::runtime_error("no input");
}

ServerProcess::~ServerProcess() {
  Kill();
  CloseInput();
  close(output_);
}

std::uint16_t ServerProcess::port() {
  std::string line;
  char byte = 0;
  while (port_ == 0 && read(output_, &byte, 1) == 1) {
    if (byte != '\n') {
      line.push_back(byte);
    } else if (line.starts_with("port ")) {
      port_ = static_cast<std::uint16_t>(std::stoi(line.substr(5)));
    } else {
      line.clear();
    }
  }
  if (port_ == 0) throw std::runtime_error("the server did not start");
  return port_;
}

void ServerProcess::CloseInput() {
  if (input_ >= 0) close(input_);
  input_ = -1;
}

void ServerProcess::Signal(int number) const { kill(process_, number); }

int ServerProcess::Wait() {
  int status = 0;
  waitpid(process_, &status, 0);
  process_ = -1;
  return status;
}

void ServerProcess::Kill() {
  if (process_ < 0) return;
  Signal(SIGKILL);
  Wait();
}

long ServerProcess::PeakMemory() const {
  std::ifstream status("/proc/" + std::to_string(process_) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::atol(line.c_str() + 6);
  }
  return 0;
}

ToolResult RunTool(const std::string& command, const std::string& input) {
  const TemporaryFolder folder;
  const std::filesystem::path in = folder.path() / "in";
  const std::filesystem::path out = folder.path() / "out";
  std::ofstream(in, std::ios::binary) << input;
  const std::string line =
      "(" + command + ") < '" + in.string() + "' > '" + out.string() + "' 2>&1";
  ToolResult result;
  result.status = std::system(line.c_str());  // NOLINT: a test runs the tools of the system
  result.output = ReadFile(out);
  return result;
}

}  // namespace dbkeeper::server
