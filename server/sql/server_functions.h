// Functions that the translated statements call at run time, and what SQLite's failures mean.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "server/types/cell.h"
#include "server/types/messages.h"

struct sqlite3;

namespace dbkeeper::server {

// What functions of the server's state answer. `function` is the name in lower case: the rows of
// function_table.cpp marked "state", and what the translated statements and the system tables ask
// of their own accord: "next_timestamp", "next_identity", "statement_time" and the like. Arguments
// left out by the statement are left out here. Called while a statement runs on the same
// connection. May throw SqlError.
class ServerState {
 public:
  virtual ~ServerState() = default;
  virtual Cell Evaluate(std::string_view function, const std::vector<Cell>& arguments) = 0;
};

// Registers the collations MSTEXT and MSDECIMAL and every function that translated statements use.
// `state` outlives the connection; null where no statement asks for it.
void RegisterServerFunctions(sqlite3* connection, ServerState* state = nullptr);

// The server's message of a failed SQLite call: one that a function raised is given back as it was
// raised (number, severity, state, text), anything else by its code (SQLITE_FULL 1105,
// SQLITE_INTERRUPT 3617 ...).
ServerMessage MessageOfFailure(sqlite3* connection);

// What SQLite says when a constraint fails, taken apart; the engine finds the names for the
// server's message in the catalog.
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
