// The server's column types: how a column is described, fetched and written as text.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"
#include "platform/odbc/Driver.h"

namespace dbkeeper::odbc {

struct ColumnType {
  Field field;
  SQLSMALLINT c_type = SQL_C_CHAR;  // the form in which its values are fetched
  std::size_t width = 0;            // bytes of the largest value in that form
  bool in_pieces = false;           // no largest value is known: read piece by piece
};

// The columns of the statement's present result.
std::vector<ColumnType> DescribeColumns(const Statement& statement);

// The text of a fetched value that is not null. A value that is text already is given as it
// stands; of others the text is put into `scratch`.
std::string_view TextOfValue(SQLSMALLINT c_type, std::string_view value, std::string& scratch);

}  // namespace dbkeeper::odbc
