// The local server, started as a child of this program and gone with it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/odbc/LocalEndpoint.h"

namespace dbkeeper {

// A descriptor that is closed with its owner.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }
  void Take(int number);
  void Close();

 private:
  int number_ = -1;
};

struct LocalServerOptions {
  std::filesystem::path program;      // dbkeeper-server
  std::filesystem::path data_folder;  // made by the server when it is missing
  // Generous: the first start makes the sample databases.
  std::chrono::milliseconds start_timeout{120'000};
  struct Login {
    std::string name;
    std::string password;
  };
  // SQL logins that get a password for as long as they are not given another one.
  std::vector<Login> logins{};
};

// The server beside this program's file, with its data in "server-data" there.
LocalServerOptions LocalServerBeside(const std::filesystem::path& executable);

// The child's standard input is a line to this process: the secret goes through it, and its end,
// which also comes when this process is killed, ends the server.
class LocalServerProcess : public LocalEndpoint {
 public:
  explicit LocalServerProcess(LocalServerOptions options);
  // Ends the server and waits for it.
  ~LocalServerProcess() override;
  LocalServerProcess(const LocalServerProcess&) = delete;
  LocalServerProcess& operator=(const LocalServerProcess&) = delete;

  // Starts the server when it does not run (any more). Windows authentication is that of the
  // operating system's user, with a secret made for this start. Throws SessionError.
  LocalTarget Locate() override;
  // Gives the server the end of its input, a moment to finish, and then no choice.
  void Stop();
  // 0 while it does not run.
  pid_t ProcessId() const { return process_; }

 private:
  void Start();
  void Spawn(int input, int output);
  void Tell(const std::string& lines);
  int ReadPort(int output);
  bool Running();
  bool EndsWithin(std::chrono::milliseconds time);

  const LocalServerOptions options_;
  pid_t process_ = 0;
  Descriptor input_;  // ours, of the child's standard input
  int port_ = 0;
  std::string secret_;
};

}  // namespace dbkeeper
