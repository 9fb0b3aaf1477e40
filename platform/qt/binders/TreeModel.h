// The tree as the toolkit's view asks for it.
//
// The control tells what has changed afterwards, the toolkit wants to be asked before. So the model
// keeps the shape that the view knows, a handful of names beside the control's own, and brings it
// in line when the control tells: nodes that stay keep their place and stay open.
#pragma once

#include <QAbstractItemModel>
#include <memory>
#include <vector>

#include "controls/TreeView.h"

namespace dbkeeper::qt {

class TreeModel : public QAbstractItemModel {
 public:
  // The tree must outlive the model.
  TreeModel(const TreeView& tree, QObject* parent);

  // The children of a node (null: the roots, and the whole tree below) have changed.
  void StructureChanged(const TreeNode* node);
  void TextChanged(const TreeNode& node);

  // Null for an invalid index.
  TreeNode* NodeAt(const QModelIndex& index) const;
  QModelIndex IndexOf(const TreeNode* node) const;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  struct Known {
    TreeNode* node = nullptr;
    Known* parent = nullptr;
    int row = 0;  // among its siblings: nodes go only from the end, so it stays
    QString text;
    std::vector<std::unique_ptr<Known>> children;
  };
  using Nodes = std::vector<std::unique_ptr<TreeNode>>;

  Known* KnownAt(const QModelIndex& index) const;
  Known* Find(const TreeNode* node) const;
  QModelIndex IndexOf(const Known& known) const;
  // Makes the known children those of the control; `deep` also all those below them.
  void Sync(Known& known, const Nodes& nodes, bool deep);

  const TreeView& tree_;
  std::unique_ptr<Known> root_;
};

}  // namespace dbkeeper::qt
