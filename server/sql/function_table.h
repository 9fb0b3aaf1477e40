// The functions of the dialect as data: name, arguments, result, and the SQLite text of a call.
#pragma once

#include <string_view>

namespace dbkeeper::server {

// What a call gives; "first" and so on mean the type of that argument.
enum class ResultRule {
  kInt,
  kBigInt,
  kFloat,
  kDateTime,
  kGuid,
  kIdentity,  // numeric(38,0)
  kName,      // nvarchar(128)
  kVarChar,   // varchar of `length`
  kNVarChar,  // nvarchar of `length`
  kVariant,
  kBinary,    // varbinary of `length`
  kFirst,     // as the first argument
  kNumber,    // as the first argument, small integers as int, texts as float
  kWhole,     // as kNumber, decimals without decimals
  kText,      // the first argument as a variable text of its own length
  kWideText,  // ... of the greatest length
};

// How an argument is taken; one letter each, the last one again for further arguments:
//   a any, t text, b text or binary, i int, f float, d datetime, n number as it is, p date part
struct FunctionRow {
  std::string_view name;  // in lower case
  int least;
  int most;
  std::string_view arguments;
  ResultRule result;
  int length;  // of the result, where its rule asks
  // "$*" stands for the arguments, "$1" for the first of them (NULL when there is none), "$d" for
  // the current database, "$t" for the time of the statement; empty: "ms_<name>($*)". Rows of the
  // server's state read "state": the call goes to ServerState.
  std::string_view sql;
};

// Null when there is no such function.
const FunctionRow* FindFunction(std::string_view lower_name);

}  // namespace dbkeeper::server
