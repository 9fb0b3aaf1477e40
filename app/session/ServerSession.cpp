#include "app/session/ServerSession.h"

namespace dbkeeper {

ServerSession::ServerSession(Connection& connection, HostLocale& locale)
    : connection_(connection),
      ADOQuerySystem(connection, locale, [this](const auto& name) { current_database_ = name; }),
      ADOQuery_User(connection, locale, [this](const auto& name) { current_database_ = name; }) {}

std::string ServerSession::ConnectionString() const {
  const bool local = ServerName == kLocalServer;
  std::string text = "Provider=SQLOLEDB;Database=master;";
  if (LoginMode == Authentication::kWindows) {
    text += local ? "Integrated Security=SSPI;" : "Integrated Security=SSPI;Data Source=";
  } else {
    text += "User ID=" + LoginName + ";Password=" + Password;
    text += local ? ";" : ";Data Source=";
  }
  return local ? text : text + ServerName;
}

void ServerSession::Open() {
  Close();
  connection_.Open(ConnectionString());
  current_database_ = "master";
}

void ServerSession::Close() {
  ADOQuerySystem.Close();
  ADOQuery_User.Close();
  connection_.Close();
}

}  // namespace dbkeeper
