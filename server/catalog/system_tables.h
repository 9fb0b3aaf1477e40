// What a database holds from its birth: its system tables, fixed users and types, written in the
// server's own dialect.
#pragma once

#include <string_view>
#include <vector>

namespace dbkeeper::server {

// A type of systypes.
struct SystemType {
  std::string_view name;
  int xtype;
  int xusertype;
  int length;  // bytes
  int precision;
  int scale;  // -1: none
  int usertype;
  int type;  // the type number for a column that allows nulls
  bool collated;
};

const std::vector<SystemType>& SystemTypes();

// "create table" statements of the system tables every database has.
std::string_view DatabaseSystemTables();
// The further tables of master and of msdb.
std::string_view MasterSystemTables();
std::string_view MsdbTables();

}  // namespace dbkeeper::server
