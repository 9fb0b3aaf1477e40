// The main properties of one database.
#pragma once

#include <string>

#include "app/session/Query.h"
#include "controls/ListView.h"

namespace dbkeeper {

// Lists the properties as numbered rows of item and value. The session's current database becomes
// `database`; later lists rely on that. Throws what the query throws.
void ListDatabaseProperties(const std::string& database, ListView& list, Query& query);

}  // namespace dbkeeper
