// The kinds of tree nodes. Each kind stands in a file of its own with its menu and its commands.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/main/MenuTable.h"
#include "app/workbench/Workbench.h"

namespace dbkeeper {

// What decides whether a node is of a kind, beyond its level.
enum class Match {
  kText,                   // the node's text
  kParentText,             // its parent's text
  kTextHoldsAndConnected,  // a part of the node's text, while the session is connected
};

struct NodeKind {
  int level;  // 0 for a root
  Match match;
  std::string_view text;
  ListRoutine list;
  const MenuTable* menu;    // of the list
  std::string_view status;  // after listing; empty: the status bar keeps " >"
  // What the status bar says behind that; null: nothing.
  std::string (*remark)(const Workbench& workbench, const std::string& database) = nullptr;
};

extern const NodeKind kServerNode;
extern const NodeKind kDatabasesNode;
extern const NodeKind kDatabaseNode;
extern const NodeKind kUserNode;
extern const NodeKind kRoleNode;
extern const NodeKind kJobNode;
extern const NodeKind kBackUpDeviceNode;
extern const NodeKind kProcessNode;
extern const NodeKind kLockNode;
extern const NodeKind kTableNode;
extern const NodeKind kViewNode;
extern const NodeKind kProcedureNode;
extern const NodeKind kBackupHistoryNode;
extern const NodeKind kLoginNode;
extern const NodeKind kServerRoleNode;
extern const NodeKind kConfigNode;

// Menus beside those of the kinds: of the server in the tree, and of the list before and without a
// kind of its own.
extern const MenuTable kServerTreeMenu;
extern const MenuTable kFirstMenu;
extern const MenuTable kMinimumMenu;

// All kinds in the order in which a node is held against them: the first match wins.
std::span<const NodeKind* const> NodeKinds();

// The menus of all kinds and those beside them, each once.
std::vector<const MenuTable*> MainMenus();

// The kind of a node, or null.
const NodeKind* KindOf(const TreeNode* node, const ServerSession& session);

// The database that a node of the kind is or stands in.
std::string DatabaseOf(const NodeKind& kind, const TreeNode& node);

}  // namespace dbkeeper
