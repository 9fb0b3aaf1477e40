#include "app/main/nodes/NodeKinds.h"

#include <algorithm>

namespace dbkeeper {

namespace {

constexpr const NodeKind* kNodeKinds[] = {
    &kServerNode,        &kDatabasesNode, &kDatabaseNode,     &kUserNode,
    &kRoleNode,          &kJobNode,       &kBackUpDeviceNode, &kProcessNode,
    &kLockNode,          &kTableNode,     &kViewNode,         &kProcedureNode,
    &kBackupHistoryNode, &kLoginNode,     &kServerRoleNode,   &kConfigNode,
};

bool IsOfKind(const NodeKind& kind, const TreeNode& node, const ServerSession& session) {
  if (node.Level() != kind.level) return false;
  switch (kind.match) {
    case Match::kText:
      return node.Text() == kind.text;
    case Match::kParentText:
      return node.Parent()->Text() == kind.text;
    case Match::kTextHoldsAndConnected:
      return node.Text().find(kind.text) != std::string::npos && session.Connected();
  }
  return false;
}

}  // namespace

std::span<const NodeKind* const> NodeKinds() { return kNodeKinds; }

std::vector<const MenuTable*> MainMenus() {
  std::vector<const MenuTable*> menus = {&kServerTreeMenu, &kFirstMenu};
  for (const NodeKind* kind : kNodeKinds) {
    if (std::ranges::find(menus, kind->menu) == menus.end()) menus.push_back(kind->menu);
  }
  return menus;
}

const NodeKind* KindOf(const TreeNode* node, const ServerSession& session) {
  if (node == nullptr) return nullptr;
  const auto* const found = std::ranges::find_if(
      kNodeKinds, [&](const NodeKind* kind) { return IsOfKind(*kind, *node, session); });
  return found == std::end(kNodeKinds) ? nullptr : *found;
}

std::string DatabaseOf(const NodeKind& kind, const TreeNode& node) {
  if (kind.match == Match::kParentText) return node.Text();
  return node.Parent() == nullptr ? std::string() : node.Parent()->Text();
}

}  // namespace dbkeeper
