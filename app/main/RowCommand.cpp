#include "app/main/RowCommand.h"

#include "app/support/TextFilling.h"

namespace dbkeeper {

RowNames NamesOf(const ListItem& row, const TreeView& tree) {
  const TreeNode* const node = tree.Selected();
  const TreeNode* const parent = node != nullptr ? node->Parent() : nullptr;
  return {std::string(row.SubItem(0)), std::string(row.Caption()),
          parent != nullptr ? parent->Text() : std::string()};
}

void RunRowCommand(const Workbench& workbench, const RowCommand& command) {
  const ListItem* const row = workbench.List.Selected();
  if (row == nullptr) return;
  if (command.rows == RowRule::kOnlySelected && workbench.List.SelCount() != 1) return;
  const RowNames names = NamesOf(*row, workbench.Tree);
  const auto fill = [&names](std::string_view text) {
    return FillText(text, {{'N', names.name}, {'C', names.caption}, {'D', names.database}});
  };
  RunStatements(workbench, {.question = fill(command.question),
                            .use = fill(command.use),
                            .statements = {fill(command.statement)},
                            .status = fill(command.status),
                            .refresh = command.refresh,
                            .database = names.database});
}

}  // namespace dbkeeper
