// The tree as the toolkit's view asks for it.
//
// The control tells what has changed afterwards, the toolkit wants to be asked before. So the model
// keeps the shape that the view knows, a handful of names beside the control's own, and brings it
// in line when the control tells: nodes that stay keep their place and stay open. What is below a
// new node is looked at when the view opens it.
#pragma once

#include <QAbstractItemModel>
#include <QIcon>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "controls/TreeView.h"

namespace dbkeeper::qt {

class TreeModel : public QAbstractItemModel {
 public:
  // The tree must outlive the model.
  TreeModel(const TreeView& tree, QObject* parent);

  // The picture of a node; an icon of none leaves its place empty.
  void SetIcons(std::function<QIcon(const TreeNode& node)> icon_of) {
    icon_of_ = std::move(icon_of);
  }

  // The children of a node (null: the roots, and the whole tree below) have changed.
  void StructureChanged(const TreeNode* node);
  void TextChanged(const TreeNode& node);

  // Null for an invalid index.
  TreeNode* NodeAt(const QModelIndex& index) const;
  QModelIndex IndexOf(const TreeNode* node);

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  bool hasChildren(const QModelIndex& parent = {}) const override;
  bool canFetchMore(const QModelIndex& parent) const override;
  void fetchMore(const QModelIndex& parent) override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  struct Known {
    TreeNode* node = nullptr;  // null: the root above all roots
    Known* parent = nullptr;
    int row = 0;  // among its siblings: nodes go only from the end, so it stays
    QString text;
    bool opened = true;  // false: has children that were not looked at yet
    std::vector<std::unique_ptr<Known>> children;
  };
  using Nodes = std::vector<std::unique_ptr<TreeNode>>;

  Known* KnownAt(const QModelIndex& index) const;
  Known* Find(const TreeNode* node);
  QModelIndex IndexOf(const Known& known) const;
  const Nodes& NodesBelow(const Known& known) const;
  void Open(Known& known);
  // Makes the known children those of the control, and all those below the ones that stay.
  void Sync(Known& known);
  void Remove(Known& known, std::size_t from);
  void Insert(Known& known, const Nodes& nodes);

  const TreeView& tree_;
  std::function<QIcon(const TreeNode& node)> icon_of_;
  std::unique_ptr<Known> root_;
};

}  // namespace dbkeeper::qt
