// What a table is, read from the server's catalog in a fixed number of statements. Database and
// table are named in full: the current database stays what it is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/session/Query.h"

namespace dbkeeper {

struct TableColumn {
  std::string name;
  std::string type;            // of systypes; a user's own type has its own name
  std::int64_t length = 0;     // bytes
  std::int64_t precision = 0;  // 0 where the type is no number
  std::int64_t scale = 0;
  bool nullable = true;
  std::string identity_seed;  // empty: no identity
  std::string identity_increment;
  std::string default_text;  // as the server keeps it, such as "(0)"
};

struct CheckConstraint {
  std::string name;
  std::string text;  // as the server keeps it
};

struct Trigger {
  std::string id;
  std::string name;
  std::string created;
  std::string text;  // the whole of its statement; empty where it is encrypted
};

// The parts of a table that dbo owns, columns in their order and the others by name. A table that
// is not there has none. Throw ServerError.
std::vector<TableColumn> ReadColumns(Query& query, const std::string& database,
                                     const std::string& table);
std::vector<CheckConstraint> ReadChecks(Query& query, const std::string& database,
                                        const std::string& table);
std::vector<Trigger> ReadTriggers(Query& query, const std::string& database,
                                  const std::string& table);

}  // namespace dbkeeper
