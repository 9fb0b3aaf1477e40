// The lists of the server and of what surrounds one database: processes, locks, logins, jobs,
// backup devices, users, roles, server properties, backup history.
//
// List routines. The process, lock, job and backup history lists leave the session's current
// database at msdb.
#pragma once

#include <cstdint>
#include <string>

#include "app/workbench/Workbench.h"

namespace dbkeeper {

void ListProcesses(const Workbench& workbench, const std::string& database);
void ListLocks(const Workbench& workbench, const std::string& database);
void ListLogins(const Workbench& workbench, const std::string& database);
void ListJobs(const Workbench& workbench, const std::string& database);
void ListBackupDevices(const Workbench& workbench, const std::string& database);
void ListUsers(const Workbench& workbench, const std::string& database);
// The roles of the session's current database; `database` is not used: see the source.
void ListDatabaseRoles(const Workbench& workbench, const std::string& database);
// The fixed roles of the server.
void ListServerRoles(const Workbench& workbench, const std::string& database);
void ListServerProperties(const Workbench& workbench, const std::string& database);
void ListBackupHistory(const Workbench& workbench, const std::string& database);

// Bytes as kilobytes, rounded to the nearest with halves to even, such as "2KB".
std::string KilobytesText(std::int64_t bytes);

}  // namespace dbkeeper
