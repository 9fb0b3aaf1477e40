// The objects of one database, and the space that its tables take.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"

namespace dbkeeper {

// List routines. System tables are listed while `ShowSystemTables` is set.

// With the columns "Description" and "Note" while `Advanced` is set; then the session's current
// database becomes `database`.
void ListTables(const Workbench& workbench, const std::string& database);
// Without these columns, whatever `Advanced` says.
void ListTablesAlone(const Workbench& workbench, const std::string& database);
void ListViews(const Workbench& workbench, const std::string& database);
void ListProcedures(const Workbench& workbench, const std::string& database);

// Every table with its space, one round trip each.
void ListCapacity(const Workbench& workbench, const std::string& database);

}  // namespace dbkeeper
