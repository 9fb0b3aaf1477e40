// The tree: the nodes of a connected server, and the list that a node shows.

#include <array>

#include "app/main/UnitMain.h"
#include "app/main/nodes/NodeKinds.h"

namespace dbkeeper {

namespace {

struct NodeRow {
  const char* text;
  std::array<const char*, 4> children;  // null-terminated where there are fewer
};

constexpr std::array<NodeRow, 3> kServerNodes = {{
    {"Database", {}},
    {"Management", {"Job", "BackUpDevice", "Process", "Lock"}},
    {"Security", {"Login", "Server role"}},
}};

}  // namespace

void TFormMain::BuildRoots() {
  TreeNode& server = TreeView.AddRoot("SQL Server");
  TreeView.AddRoot("Config");
  TreeView.Select(&server);
}

// Always under the first root: with "Config" selected the server's menu is offered too.
void TFormMain::BuildServerNodes() {
  TreeNode& server = *TreeView.Roots().front();
  server.DeleteChildren();
  for (const NodeRow& row : kServerNodes) {
    TreeNode& node = server.AddChild(row.text);
    for (const char* child : row.children) {
      if (child != nullptr) node.AddChild(child);
    }
  }
  TreeView.Expand(server);
}

void TFormMain::ClearList() {
  // The commands of the list that was shown go with it.
  ListViewMain.Popup = nullptr;
  const ListUpdate update(ListViewMain);
  ListViewMain.ClearItems();
  ListViewMain.ClearColumns();
}

void TFormMain::TreeViewClick() {
  sort_direction_ = -1;
  StatusBar1.SimpleText = " >";
  Browser.Hide();
  ListViewMain.CheckBoxes = false;

  const TreeNode* const node = TreeView.Selected();
  const NodeKind* const kind = KindOf(node, session_);
  if (kind == nullptr) return ClearList();
  ListViewMain.Popup = &Menu(kind->menu->name);
  const std::string database = DatabaseOf(*kind, *node);
  if (kind->status.empty()) return kind->list(workbench_, database);
  RunningStatus status(workbench_);
  kind->list(workbench_, database);
  const bool remarks = kind->remark != nullptr;
  status.Done(std::string(kind->status) + (remarks ? kind->remark(workbench_, database) : ""));
}

void TFormMain::TreeViewKeyUp() { TreeViewClick(); }

void TFormMain::TreeViewMouseDown() {
  // Deliberately the first root's text and not the selected node's: the server's menu is offered on
  // both roots.
  const TreeNode* const node = TreeView.Selected();
  const bool offered = node != nullptr && node->Level() == 0 &&
                       TreeView.Roots().front()->Text().find("SQL Server") != std::string::npos;
  TreeView.Popup = offered ? &Menu(kServerTreeMenu.name) : nullptr;
}

}  // namespace dbkeeper
