#include "platform/qt/binders/TreeModel.h"

#include <utility>

#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

TreeModel::TreeModel(const TreeView& tree, QObject* parent)
    : QAbstractItemModel(parent), tree_(tree), root_(std::make_unique<Known>()) {
  StructureChanged(nullptr);
}

void TreeModel::StructureChanged(const TreeNode* node) {
  if (node == nullptr) {
    Sync(*root_, tree_.Roots(), true);
  } else if (Known* known = Find(node)) {
    Sync(*known, node->Children(), true);
  }
}

void TreeModel::TextChanged(const TreeNode& node) {
  Known* known = Find(&node);
  if (known == nullptr) return;
  known->text = ToQt(node.Text());
  const QModelIndex changed = IndexOf(*known);
  Q_EMIT dataChanged(changed, changed);
}

void TreeModel::Sync(Known& known, const Nodes& nodes, bool deep) {
  auto& children = known.children;
  std::size_t same = 0;
  while (same < children.size() && same < nodes.size() &&
         children[same]->node == nodes[same].get()) {
    ++same;
  }
  const QModelIndex place = IndexOf(known);
  if (same < children.size()) {
    beginRemoveRows(place, static_cast<int>(same), static_cast<int>(children.size()) - 1);
    children.resize(same);
    endRemoveRows();
  }
  if (deep) {
    for (std::size_t i = 0; i < same; ++i) {
      // Another node may stand where a deleted one stood.
      if (ToQt(nodes[i]->Text()) != children[i]->text) TextChanged(*nodes[i]);
      Sync(*children[i], nodes[i]->Children(), true);
    }
  }
  if (same == nodes.size()) return;
  beginInsertRows(place, static_cast<int>(same), static_cast<int>(nodes.size()) - 1);
  for (std::size_t i = same; i < nodes.size(); ++i) {
    auto added = std::make_unique<Known>();
    added->node = nodes[i].get();
    added->parent = &known;
    added->row = static_cast<int>(i);
    added->text = ToQt(nodes[i]->Text());
    children.push_back(std::move(added));
  }
  endInsertRows();
  for (std::size_t i = same; i < nodes.size(); ++i) Sync(*children[i], nodes[i]->Children(), true);
}

TreeModel::Known* TreeModel::KnownAt(const QModelIndex& index) const {
  return index.isValid() ? static_cast<Known*>(index.internalPointer()) : root_.get();
}

TreeModel::Known* TreeModel::Find(const TreeNode* node) const {
  if (node == nullptr) return root_.get();
  Known* parent = Find(node->Parent());
  if (parent == nullptr) return nullptr;
  const std::size_t place = node->Index();
  if (place >= parent->children.size() || parent->children[place]->node != node) return nullptr;
  return parent->children[place].get();
}

TreeNode* TreeModel::NodeAt(const QModelIndex& index) const { return KnownAt(index)->node; }

QModelIndex TreeModel::IndexOf(const TreeNode* node) const {
  const Known* known = Find(node);
  return known == nullptr ? QModelIndex() : IndexOf(*known);
}

QModelIndex TreeModel::IndexOf(const Known& known) const {
  return known.parent == nullptr ? QModelIndex() : createIndex(known.row, 0, &known);
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
  const Known* known = KnownAt(parent);
  if (row < 0 || column != 0 || row >= static_cast<int>(known->children.size())) return {};
  return createIndex(row, 0, known->children[static_cast<std::size_t>(row)].get());
}

QModelIndex TreeModel::parent(const QModelIndex& index) const {
  return index.isValid() ? IndexOf(*KnownAt(index)->parent) : QModelIndex();
}

int TreeModel::rowCount(const QModelIndex& parent) const {
  return static_cast<int>(KnownAt(parent)->children.size());
}

int TreeModel::columnCount(const QModelIndex&) const { return 1; }

QVariant TreeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || role != Qt::DisplayRole) return {};
  return KnownAt(index)->text;
}

}  // namespace dbkeeper::qt
