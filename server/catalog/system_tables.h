// What a database holds from its birth: its system tables, fixed users and types, written in the
// server's own dialect.
#pragma once

#include <string_view>

namespace dbkeeper::server {

// "create table" statements of the system tables every database has.
std::string_view DatabaseSystemTables();
// The further tables of master and of msdb.
std::string_view MasterSystemTables();
std::string_view MsdbTables();

}  // namespace dbkeeper::server
