// The main properties of one database.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"

namespace dbkeeper {

// A list routine: numbered rows of item and value. The session's current database becomes
// `database`; later lists rely on that.
void ListDatabaseProperties(const Workbench& workbench, const std::string& database);

}  // namespace dbkeeper
