// The objects of one database, and the space that its tables take.
#pragma once

#include <string>

#include "app/session/Query.h"
#include "controls/ListView.h"

namespace dbkeeper {

enum class SystemTables { kHidden, kShown };
// The columns "Description" and "Note".
enum class Descriptions { kHidden, kShown };

// Lists the tables, views or procedures of a database; `kind` is "Table", "View" or "Procedure".
// With descriptions the session's current database becomes `database`. Throws what the query
// throws.
void ListObjects(const std::string& database, ListView& list, Query& query, const std::string& kind,
                 SystemTables system_tables, Descriptions descriptions);

// Lists every table with its space, one round trip each. Throws what the query throws.
void ListCapacity(const std::string& database, ListView& list, Query& query);

}  // namespace dbkeeper
