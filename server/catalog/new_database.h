// What a new database starts with.
#pragma once

#include <string>
#include <string_view>

#include "server/catalog/catalog.h"
#include "server/engine/sqlite.h"

namespace dbkeeper::server {

// Makes the bare system tables and their SQLite indexes in the database `alias`.
void MakeSystemTables(SqliteConnection& connection, const std::string& alias,
                      std::string_view definitions);

// Enters the tables of `definitions` into the catalog as system tables, ids from `first_id` on.
void RegisterSystemTables(Catalog& catalog, std::string_view definitions, int first_id);

// Makes the contents of an empty database: system tables, types, fixed users and roles; dbo is the
// login with the security id `owner_sid`.
void FillNewDatabase(SqliteConnection& connection, const std::string& alias,
                     const std::string& owner_sid);

}  // namespace dbkeeper::server
