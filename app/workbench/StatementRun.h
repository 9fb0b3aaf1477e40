// What a command or a dialog does on the server, as a value: the question before it, its statements
// in order, what the status bar tells, and the list that is read anew behind it.
#pragma once

#include <string>
#include <vector>

#include "app/workbench/Workbench.h"

namespace dbkeeper {

// When the status bar tells what runs.
enum class StatusRule {
  kAround,  // " *" from the beginning, " >" and the text when everything has run
  kBefore,  // " >" and the text when "use" has run
  kNone,
};

struct StatementRun {
  std::string question = {};                 // empty: nothing is asked
  std::string use = {};                      // a statement of its own before the others; or empty
  std::vector<std::string> statements = {};  // each is sent by itself
  std::string status = {};                   // empty: the last statement
  StatusRule rule = StatusRule::kAround;
  ListRoutine refresh = nullptr;  // null: no list is read anew
  std::string database = {};      // of the refresh
};

// Runs it under the waiting cursor; gives false, with nothing done, when the operator cancels. The
// first statement that fails ends it: throws ServerError, with status and list as they stand.
bool RunStatements(const Workbench& workbench, const StatementRun& run);

}  // namespace dbkeeper
