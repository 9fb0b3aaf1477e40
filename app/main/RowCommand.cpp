#include "app/main/RowCommand.h"

#include "catalog/DatabaseList.h"

namespace dbkeeper {

RowNames NamesOf(const ListItem& row, const TreeView& tree) {
  const TreeNode* const node = tree.Selected();
  const TreeNode* const parent = node != nullptr ? node->Parent() : nullptr;
  return {std::string(row.SubItem(0)), std::string(row.Caption()),
          parent != nullptr ? parent->Text() : std::string()};
}

// One pass, because a name may hold what looks like a placeholder.
std::string FillNames(std::string_view text, const RowNames& names) {
  std::string filled;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char kind = text[at] == '%' && at + 1 < text.size() ? text[at + 1] : '\0';
    if (kind != 'N' && kind != 'C' && kind != 'D') {
      filled += text[at];
      continue;
    }
    filled += kind == 'N' ? names.name : kind == 'C' ? names.caption : names.database;
    ++at;
  }
  return filled;
}

void RunRowCommand(const Workbench& workbench, const RowCommand& command) {
  const ListItem* const row = workbench.List.Selected();
  if (row == nullptr) return;
  if (command.rows == RowRule::kOnlySelected && workbench.List.SelCount() != 1) return;
  // Copies, because the refresh replaces the row.
  const RowNames names = NamesOf(*row, workbench.Tree);
  if (!command.question.empty() && !workbench.ConfirmCaution(FillNames(command.question, names))) {
    return;
  }
  RunningStatus status(workbench);
  Query& query = workbench.Session.ADOQuerySystem;
  if (!command.use.empty()) query.Command(FillNames(command.use, names));
  query.Command(FillNames(command.statement, names));
  status.Done(FillNames(command.status.empty() ? command.statement : command.status, names));
  command.refresh(workbench, names);
}

void RefreshDatabases(const Workbench& workbench, const RowNames&) {
  if (TreeNode* const node = workbench.Tree.Selected()) node->DeleteChildren();
  ListDatabases(workbench.Tree, workbench.List, workbench.Session.ADOQuerySystem);
}

}  // namespace dbkeeper
