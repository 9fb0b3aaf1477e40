// The one connection of the program, its shared query, and the names that go with it.
#pragma once

#include <string>

#include "app/session/BrowseQuery.h"
#include "app/session/Connection.h"
#include "app/session/Query.h"

namespace dbkeeper {

enum class Authentication { kSqlServer, kWindows };

// The server name that stands for the local default instance.
inline constexpr const char* kLocalServer = "(local)";

class ServerSession {
 public:
  ServerSession(Connection& connection, HostLocale& locale);

  std::string ServerName;
  std::string LoginName;
  std::string Password;
  Authentication LoginMode = Authentication::kSqlServer;

  // The connection string that the names above make.
  std::string ConnectionString() const;
  // Opens with that string; afterwards the current database is "master". Throws ServerError.
  void Open();
  // Closes both queries and the connection.
  void Close();
  bool Connected() const { return connection_.IsOpen(); }

  // The name recorded at the last "use" that went through the session, or by the query window.
  const std::string& CurrentDatabase() const { return current_database_; }
  void RecordCurrentDatabase(const std::string& name) { current_database_ = name; }

  Connection& TheConnection() { return connection_; }

 private:
  Connection& connection_;
  std::string current_database_;

 public:
  // The shared query of every list, dialog and command.
  Query ADOQuerySystem;
  // The table browser's.
  BrowseQuery ADOQuery_User;
};

}  // namespace dbkeeper
