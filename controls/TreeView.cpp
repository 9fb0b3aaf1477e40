#include "controls/TreeView.h"

#include <utility>

namespace dbkeeper {

TreeNode::TreeNode(TreeView& tree, TreeNode* parent, std::string text)
    : tree_(tree), parent_(parent), text_(std::move(text)) {}

void TreeNode::SetText(std::string text) {
  if (text == text_) return;
  text_ = std::move(text);
  tree_.Tell(TreeView::Change::kText, this);
}

int TreeNode::Level() const {
  int level = 0;
  for (const TreeNode* node = parent_; node != nullptr; node = node->parent_) ++level;
  return level;
}

TreeNode& TreeNode::Append(std::string text) {
  auto& child = children_.emplace_back(std::make_unique<TreeNode>(tree_, this, std::move(text)));
  child->index_ = children_.size() - 1;
  return *child;
}

const std::vector<std::unique_ptr<TreeNode>>& TreeNode::Children() {
  const auto promised = std::exchange(promised_, {});
  children_.reserve(children_.size() + promised.size());
  for (const std::string_view text : promised) Append(std::string(text));
  return children_;
}

TreeNode& TreeNode::AddChild(std::string text) {
  Children();
  TreeNode& child = Append(std::move(text));
  tree_.Tell(TreeView::Change::kStructure, this);
  return child;
}

void TreeNode::PromiseChildren(std::span<const std::string_view> texts) {
  promised_ = texts;
  tree_.Tell(TreeView::Change::kStructure, this);
}

void TreeNode::DeleteChildren() {
  if (!HasChildren()) return;
  promised_ = {};
  for (const TreeNode* node = tree_.selected_; node != nullptr; node = node->parent_) {
    if (node->parent_ == this) tree_.selected_ = this;
  }
  children_.clear();
  tree_.Tell(TreeView::Change::kStructure, this);
}

TreeNode& TreeView::AddRoot(std::string text) {
  auto& root = roots_.emplace_back(std::make_unique<TreeNode>(*this, nullptr, std::move(text)));
  root->index_ = roots_.size() - 1;
  Tell(Change::kStructure, nullptr);
  return *root;
}

void TreeView::Select(TreeNode* node) {
  if (node == selected_) return;
  selected_ = node;
  Tell(Change::kSelection, node);
}

void TreeView::EndUpdate() {
  if (--updating_ > 0) return;
  if (std::exchange(structure_changed_, false)) Changed.Emit(Change::kStructure, nullptr);
}

void TreeView::Tell(Change change, const TreeNode* node) {
  if (updating_ > 0 && change == Change::kStructure) {
    structure_changed_ = true;
  } else {
    Changed.Emit(change, node);
  }
}

void TreeView::UserClick(TreeNode* node) {
  Select(node);
  Raise(OnClick);
}

void TreeView::UserKeyUp(TreeNode* node) {
  Select(node);
  Raise(OnKeyUp);
}

}  // namespace dbkeeper
