// A local server of a test's own, in a temporary folder, over the real wire.
#pragma once

#include <filesystem>
#include <string>

#include "platform/host/LocalServerProcess.h"

namespace dbkeeper {

class LocalServer {
 public:
  // The SQL logins that are set, system administrators.
  static constexpr const char* kLogin = "tester";
  static constexpr const char* kPassword = "pass;word}1";
  static constexpr const char* kJapaneseLogin = "検査";
  static constexpr const char* kJapanesePassword = "ひみつ;1";

  // Starts dbkeeper-server; throws SessionError when it does not come up.
  LocalServer();
  ~LocalServer();
  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;

  // Where "(local)" leads in the test.
  LocalServerProcess& Endpoint() { return process_; }
  // "127.0.0.1,PORT".
  std::string DataSource() { return process_.Locate().data_source; }
  int Port();
  // The connection string of the first login to the master database.
  std::string ConnectionString();
  const std::filesystem::path& DataFolder() const { return folder_; }
  // Ends the server at once, as a crash would.
  void Kill();

 private:
  std::filesystem::path folder_;
  LocalServerProcess process_;
};

}  // namespace dbkeeper
