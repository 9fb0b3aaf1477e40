// Reads from the server's catalog what tables and modules are.
//
// Reading takes a fixed number of statements, for one table and for all tables of a database
// alike. They name the database themselves: the connection's current database stays.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Query.h"
#include "catalog/TableDefinition.h"

namespace dbkeeper {

// Every user table of a database in the order of names. Throws ServerError.
std::vector<TableDefinition> ReadTables(Query& query, const std::string& database);

// The user table of that name that dbo owns; absence when there is none. Throws ServerError.
std::optional<TableDefinition> ReadTable(Query& query, const std::string& database,
                                         const std::string& table);

// The text of the view, procedure or trigger of that name that dbo owns; none when there is no such
// object, and one for each member of a group of procedures. `type` is its type in sysobjects, such
// as "V". Throws ServerError.
std::vector<ModuleText> ReadModule(Query& query, const std::string& database,
                                   const std::string& name, std::string_view type);

}  // namespace dbkeeper
