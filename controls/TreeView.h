// The tree: nodes that carry only their text, and one selected node.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "controls/Control.h"
#include "controls/Menu.h"

namespace dbkeeper {

class TreeView;

class TreeNode {
 public:
  TreeNode(TreeView& tree, TreeNode* parent, std::string text);

  const std::string& Text() const { return text_; }
  void SetText(std::string text);
  TreeNode* Parent() const { return parent_; }
  // 0 for a root.
  int Level() const;
  bool HasChildren() const { return !children_.empty() || !promised_.empty(); }
  const std::vector<std::unique_ptr<TreeNode>>& Children();
  // Place among its siblings.
  std::size_t Index() const { return index_; }
  TreeNode& AddChild(std::string text);
  // Gives a node without children the ones of these texts. They are made when they are first asked
  // for: most nodes of a long list are never opened. The texts must outlive the node.
  void PromiseChildren(std::span<const std::string_view> texts);
  // The selection moves to this node when it was below it.
  void DeleteChildren();

 private:
  friend class TreeView;
  TreeNode& Append(std::string text);

  TreeView& tree_;
  TreeNode* parent_;
  std::size_t index_ = 0;
  std::string text_;
  std::span<const std::string_view> promised_;
  std::vector<std::unique_ptr<TreeNode>> children_;
};

class TreeView : public Control {
 public:
  using Control::Control;

  enum class Change { kText, kStructure, kSelection, kExpand };

  // The node concerned: of the text, the parent whose children changed, the selected one, or the
  // one to be shown open. Null: the roots.
  Signal<Change, const TreeNode*> Changed;
  Event OnClick;
  Event OnKeyUp;
  Event OnRightMouseDown;  // before the popup menu is looked up
  Property<PopupMenu*> Popup{nullptr};

  const std::vector<std::unique_ptr<TreeNode>>& Roots() const { return roots_; }
  TreeNode& AddRoot(std::string text);
  // Null when nothing is selected.
  TreeNode* Selected() const { return selected_; }
  void Select(TreeNode* node);
  // Shows the children of a node.
  void Expand(const TreeNode& node) { Changed.Emit(Change::kExpand, &node); }

  // Between the two, structure changes are collected; the last EndUpdate tells one for the whole
  // tree. Calls nest.
  void BeginUpdate() { ++updating_; }
  void EndUpdate();

  void UserClick(TreeNode* node);
  void UserKeyUp(TreeNode* node);
  // A right press leaves the selection alone, so that the commands of the list keep meaning the
  // node whose list is shown.
  void UserRightMouseDown() { Raise(OnRightMouseDown); }

 private:
  friend class TreeNode;
  void Tell(Change change, const TreeNode* node);

  std::vector<std::unique_ptr<TreeNode>> roots_;
  TreeNode* selected_ = nullptr;
  int updating_ = 0;
  bool structure_changed_ = false;
};

}  // namespace dbkeeper
