// What SQLite says when a constraint fails, taken apart; the engine finds the names for the
// server's message in the catalog.
#pragma once

#include <string>
#include <vector>

struct sqlite3;

namespace dbkeeper::server {

enum class ConstraintFailureKind { kNone, kUnique, kNotNull, kCheck, kForeignKey };

struct ConstraintFailure {
  ConstraintFailureKind kind = ConstraintFailureKind::kNone;
  std::vector<std::string> columns;  // of unique and not null
  // Of a check: the constraint's name or its text; of unique: an index of expressions.
  std::string name;
};

// The failure of the last call on `connection`; kNone when it was no constraint.
ConstraintFailure FailedConstraint(sqlite3* connection);

}  // namespace dbkeeper::server
