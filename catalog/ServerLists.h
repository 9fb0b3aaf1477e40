// The lists of the server and of what surrounds one database: processes, locks, logins, jobs,
// backup devices, users, roles, server properties, backup history.
//
// Each refills the list from one query and throws what the query throws; rows already read stay.
// The process, lock, job and backup history lists leave the session's current database at msdb.
#pragma once

#include <cstdint>
#include <string>

#include "app/session/Query.h"
#include "controls/ListView.h"

namespace dbkeeper {

void ListProcesses(ListView& list, Query& query);
void ListLocks(ListView& list, Query& query);
void ListLogins(ListView& list, Query& query);
void ListJobs(ListView& list, Query& query);
void ListBackupDevices(ListView& list, Query& query);
void ListUsers(ListView& list, Query& query, const std::string& database);
// Scope "Database" lists the roles of the session's current database, any other scope the fixed
// server roles. The database name is not used: see the source.
void ListRoles(ListView& list, Query& query, const std::string& database, const std::string& scope);
void ListServerProperties(ListView& list, Query& query);
void ListBackupHistory(ListView& list, Query& query, const std::string& database);

// Bytes as kilobytes, rounded to the nearest with halves to even, such as "2KB".
std::string KilobytesText(std::int64_t bytes);

}  // namespace dbkeeper
