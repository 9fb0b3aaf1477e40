// What SQLite says when a constraint fails, taken apart, and the server's messages for it. The
// engine looks up the names in the catalog in between.
#pragma once

#include <string>
#include <vector>

#include "server/engine/result_sink.h"

struct sqlite3;

namespace dbkeeper::server {

enum class ConstraintFailureKind { kNone, kUnique, kNotNull, kCheck, kForeignKey };

struct ConstraintFailure {
  ConstraintFailureKind kind = ConstraintFailureKind::kNone;
  std::string table;                 // SQLite's name of the table; empty for a foreign key
  std::vector<std::string> columns;  // of unique and not null
  std::string name;                  // of a check: the constraint's name or its text; of a unique
                                     // index over expressions: the index's name
};

// The failure of the last call on `connection`; kNone when it was no constraint.
ConstraintFailure FailedConstraint(sqlite3* connection);

// 2627: primary key or unique constraint.
ServerMessage UniqueConstraintMessage(bool primary_key, const std::string& constraint,
                                      const std::string& table, int line);
// 2601: unique index.
ServerMessage UniqueIndexMessage(const std::string& index, const std::string& table, int line);
// 515; `verb` is "INSERT" or "UPDATE", `table` the full name "db.dbo.t".
ServerMessage NotNullMessage(const std::string& verb, const std::string& column,
                             const std::string& table, int line);
// 547 of a check; `column` empty for one over several columns.
ServerMessage CheckMessage(const std::string& verb, const std::string& constraint,
                           const std::string& database, const std::string& table,
                           const std::string& column, int line);
// 547 of a foreign key; `referenced_side` when rows elsewhere still point to the changed row.
enum class ForeignKeySide { kReferencing, kReferenced };
ServerMessage ForeignKeyMessage(ForeignKeySide side, const std::string& verb,
                                const std::string& constraint, const std::string& database,
                                const std::string& table, const std::string& column, int line);

}  // namespace dbkeeper::server
