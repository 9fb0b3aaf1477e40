// What the catalog says of the table behind a result: which of its columns each field is, and what
// names a row.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"

namespace dbkeeper {

struct EditedColumn {
  Field field;
  std::string name;       // in the table; empty for a computed expression
  bool writable = false;  // false for what is computed, or what the server fills itself
  bool identity = false;
  bool in_key = false;
  bool comparable = false;  // the server can compare its values
};

struct EditedTable {
  std::string name;  // with its database and owner, so that a later "use" does not change it
  std::vector<EditedColumn> columns;  // one for each field of the result
  std::string refusal;                // why no row can be written; empty when rows can

  bool HasKey() const;
};

// Asks the server in the connection's present database for the table behind a result of `sql`,
// whose fields are `fields`. Throws ServerError, and RowError when the answer cannot be read.
EditedTable ReadEditedTable(Connection& connection, std::string_view sql,
                            const std::vector<Field>& fields);

}  // namespace dbkeeper
