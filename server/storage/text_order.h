// The indexes of a database file stand in the order of texts that the file was made with.
#pragma once

#include <string>

#include "server/storage/sqlite.h"

namespace dbkeeper::server {

// Says of the new file `alias` that its indexes are in the order of today.
void MarkTextOrder(SqliteConnection& connection, const std::string& alias);

// Builds the indexes of the database `alias`, by name `database`, anew when they are in another
// order. Throws SqlError 50013 when rows that were different are equal now, and leaves the file as
// it was.
void RenewTextOrder(SqliteConnection& connection, const std::string& alias,
                    const std::string& database);

}  // namespace dbkeeper::server
