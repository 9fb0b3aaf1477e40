// The commands that open the query window.

#include "app/main/UnitMain.h"
#include "query/Unit_Exec_SQL.h"

namespace dbkeeper {

namespace {

constexpr const char* kMaster = "master";

// The text of the selected node's parent where that is a database.
std::string DatabaseOfSelection(const TreeView& tree) {
  const TreeNode* node = tree.Selected();
  const TreeNode* parent = node == nullptr ? nullptr : node->Parent();
  const bool is_database =
      parent != nullptr && parent->Level() == 2 && parent->Parent()->Text() == "Database";
  return is_database ? parent->Text() : kMaster;
}

}  // namespace

void TFormMain::PopupMenu_Databases_SQLClick() {
  StatusBar1.SimpleText = " *";
  PopupMenu_Minimum_SQLClick();
}

void TFormMain::PopupMenu_Minimum_SQLClick() {
  forms_.FormExecSQL.OpenForDatabase(kMaster);
  host_.windows.Show(forms_.FormExecSQL);
}

void TFormMain::PopupMenu_Table_SQLClick() {
  const TreeNode* node = TreeView.Selected();
  const std::string database = DatabaseOfSelection(TreeView);
  if (node != nullptr && node->Text() == "Table") {
    forms_.FormExecSQL.OpenForTables(database);
  } else {
    forms_.FormExecSQL.OpenForDatabase(database);
  }
  host_.windows.Show(forms_.FormExecSQL);
}

}  // namespace dbkeeper
