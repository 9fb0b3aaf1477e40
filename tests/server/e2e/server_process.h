// The real server program, on a folder of its own.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace dbkeeper::server {

// A folder that goes away with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// One run of the program. It has the login "tester" with the password "Secret_1", and the operator
// "operator" with the secret "one-time".
class ServerProcess {
 public:
  // Starts the program on `data`. Does not wait for it.
  explicit ServerProcess(const std::filesystem::path& data);
  // Kills it when it still runs.
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  // Waits until it serves and gives its port. Throws std::runtime_error when it ends before.
  std::uint16_t port();
  // Ends its input.
  void CloseInput();
  void Signal(int number) const;
  // Waits for its end and gives the exit status as of waitpid.
  int Wait();
  // Kills it at once, as a power cut would.
  void Kill();
  // The peak of its memory in KiB.
  long PeakMemory() const;

 private:
  pid_t process_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::uint16_t port_ = 0;
};

struct ToolResult {
  int status = 0;
  std::string output;  // errors included
};

// Runs a shell command with `input` and waits for it.
ToolResult RunTool(const std::string& command, const std::string& input = "");

}  // namespace dbkeeper::server
