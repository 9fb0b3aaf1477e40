// Connection strings: the OLE DB style one that the session composes, and the ODBC one that the
// driver takes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/odbc/LocalEndpoint.h"

namespace dbkeeper {

// What an OLE DB style connection string says.
struct ConnectionRequest {
  std::string database;
  bool windows_authentication = false;
  std::string user;
  std::string password;
  std::string data_source;  // empty: the local default instance
};

// Reads such a string. The password stands in it unquoted and may hold ";": it reaches from
// ";Password=" to the last ";Data Source=", or without one to the closing ";". Throws SessionError
// for a provider other than SQLOLEDB, an unknown key or a part that is no "key=value".
ConnectionRequest ParseConnectionString(std::string_view text);

// A data source taken apart: "host", "host\instance", "host,port", "tcp:host,port".
struct ServerAddress {
  std::string host;
  std::string instance;
  std::optional<int> port;
};

// True for what the provider takes for the default instance of this machine: nothing, ".",
// "(local)" in any case.
bool IsLocalDefault(std::string_view data_source);

// Throws SessionError when the text is no data source, or one that only a pipe or shared memory
// could reach.
ServerAddress ParseDataSource(std::string_view text);

struct DriverSettings {
  std::string driver;  // a registered name, or the path of the library
  std::string tds_version = "7.1";
};

// Throws SessionError for a protocol version that the program does not speak. 7.0 is one: it gives
// no column collations, so that Japanese columns would come garbled.
void RequireUsableTdsVersion(std::string_view version);

// The ODBC string. Throws SessionError for a value that the driver cannot be handed: one with
// "};" inside, or a server name with ";", "{" or "}".
std::string OdbcConnectionString(const ConnectionRequest& request, const ServerAddress& address,
                                 const DriverSettings& settings);

}  // namespace dbkeeper
