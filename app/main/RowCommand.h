// Commands on the selected row of the main list that ask, run one statement, tell it in the status
// bar and refresh the list, as data.
//
// In the texts "%N" stands for the row's name (sub-item 0), "%C" for its caption and "%D" for the
// database, which is the text of the selected tree node's parent. Nothing is escaped.
#pragma once

#include <string>
#include <string_view>

#include "app/workbench/StatementRun.h"

namespace dbkeeper {

struct RowNames {
  std::string name;
  std::string caption;
  std::string database;  // empty where the selected node has no parent
};

// The selected row's names.
RowNames NamesOf(const ListItem& row, const TreeView& tree);

enum class RowRule { kFirstSelected, kOnlySelected };

struct RowCommand {
  RowRule rows = RowRule::kOnlySelected;
  std::string_view question = {};  // empty: nothing is asked
  std::string_view use = {};       // a statement of its own before the real one; empty: none
  std::string_view statement = {};
  std::string_view status = {};   // empty: the statement
  ListRoutine refresh = nullptr;  // null: no list is read anew
};

// Does nothing without the selected row that the command needs, or when the operator cancels.
// Throws ServerError, with status and list as they stand.
void RunRowCommand(const Workbench& workbench, const RowCommand& command);

}  // namespace dbkeeper
