// Section ODBC of the settings file:
//   Driver        a registered ODBC driver or the path of its library (default: FreeTDS)
//   TDSVersion    7.1 for SQL Server 2000, 7.4 for newer servers
//   LoginTimeout  seconds, from 1 on (default 15)
//   Local         the server that "(local)" means, as "host", "host\instance" or "host,port";
//                 without it the program starts the local server that comes with it
#pragma once

#include <filesystem>

#include "app/support/SettingsFile.h"
#include "platform/host/LocalServerProcess.h"
#include "platform/odbc/LocalEndpoint.h"
#include "platform/odbc/OdbcConnection.h"

namespace dbkeeper::host {

// What the settings say, defaults where they say nothing or nothing usable. A settings file that
// cannot be read is told where the program itself reads it.
OdbcOptions ReadOdbcOptions(const SettingsFile& settings);

// The local server's program beside this running program, its data beside `program_file`.
LocalServerOptions LocalServerOf(const std::filesystem::path& program_file);

// "(local)": the configured server, or the one that this program starts.
class LocalServerChoice : public LocalEndpoint {
 public:
  // Both must outlive this.
  LocalServerChoice(const SettingsFile& settings, LocalEndpoint& started)
      : settings_(settings), started_(started) {}

  // Reads the settings anew each time. Throws FileError and what the started server throws.
  LocalTarget Locate() override;

 private:
  const SettingsFile& settings_;
  LocalEndpoint& started_;
};

}  // namespace dbkeeper::host
