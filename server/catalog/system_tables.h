// What a database holds from its birth: its system tables, fixed users and types, written in the
// server's own dialect.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "server/catalog/catalog.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

// How a data type stands in syscolumns, and back.
inline constexpr int kSysnameType = 256;
// The number under which the catalog keeps Japanese_CI_AS.
inline constexpr std::int64_t kJapaneseCollationId = 53265;

struct StoredType {
  int xtype = 0;
  int xusertype = 0;
  int length = 0;  // bytes
  int xprec = 0;
  int xscale = 0;
  int type = 0;
  int usertype = 0;
  Cell prec;
  Cell scale;
};

StoredType StoredTypeOf(const SqlType& type, bool is_sysname);
SqlType TypeOfStored(int xtype, int length, int xprec, int xscale);

// "create table" statements of the system tables every database has.
std::string_view DatabaseSystemTables();
// The further tables of master and of msdb.
std::string_view MasterSystemTables();
std::string_view MsdbTables();

// Makes the bare system tables and their SQLite indexes in the database `alias`.
void MakeSystemTables(SqliteConnection& connection, const std::string& alias,
                      std::string_view definitions);

// Enters the tables of `definitions` into the catalog as system tables, ids from `first_id` on.
void RegisterSystemTables(Catalog& catalog, std::string_view definitions, int first_id);

// Makes the file of a new database, in place of what a torn attempt has left there: system tables,
// types, fixed users and roles; dbo is the login with the security id `owner_sid`.
SqliteConnection MakeDatabaseFile(const std::filesystem::path& file, const std::string& owner_sid);

}  // namespace dbkeeper::server
