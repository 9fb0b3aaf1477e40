#include "tests/support/LocalServer.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <system_error>

namespace dbkeeper {

namespace {

std::filesystem::path MakeFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "dbkeeper-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), pattern);
  }
  return pattern;
}

}  // namespace

LocalServer::LocalServer()
    : folder_(MakeFolder()),
      process_({.program = DBKEEPER_SERVER_PROGRAM,
                .data_folder = folder_ / "data",
                .logins = {{.name = kLogin, .password = kPassword},
                           {.name = kJapaneseLogin, .password = kJapanesePassword}}}) {
  process_.Locate();
}

LocalServer::~LocalServer() {
  process_.Stop();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

int LocalServer::Port() {
  const std::string source = DataSource();
  return std::stoi(source.substr(source.find(',') + 1));
}

std::string LocalServer::ConnectionString() {
  return std::string("Provider=SQLOLEDB;Database=master;User ID=") + kLogin +
         ";Password=" + kPassword + ";Data Source=" + DataSource();
}

void LocalServer::Kill() {
  const pid_t process = process_.ProcessId();
  kill(process, SIGKILL);
  // Until it is gone altogether, and still there for its owner to notice.
  siginfo_t ended{};
  waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT);
}

}  // namespace dbkeeper
