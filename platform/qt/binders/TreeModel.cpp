#include "platform/qt/binders/TreeModel.h"

#include <utility>

#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

TreeModel::TreeModel(const TreeView& tree, QObject* parent)
    : QAbstractItemModel(parent), tree_(tree), root_(std::make_unique<Known>()) {
  Sync(*root_);
}

void TreeModel::StructureChanged(const TreeNode* node) {
  if (Known* known = Find(node)) Sync(*known);
}

void TreeModel::TextChanged(const TreeNode& node) {
  Known* known = Find(&node);
  if (known == nullptr) return;
  known->text = ToQt(node.Text());
  const QModelIndex changed = IndexOf(*known);
  Q_EMIT dataChanged(changed, changed);
}

const TreeModel::Nodes& TreeModel::NodesBelow(const Known& known) const {
  return known.node == nullptr ? tree_.Roots() : known.node->Children();
}

void TreeModel::Open(Known& known) {
  known.opened = true;
  Insert(known, NodesBelow(known));
}

void TreeModel::Sync(Known& known) {
  if (!known.opened) {
    if (known.node->HasChildren()) return;
    known.opened = true;
    Q_EMIT layoutChanged();  // the view shows it as a node that can be opened
    return;
  }
  const Nodes& nodes = NodesBelow(known);
  auto& children = known.children;
  std::size_t same = 0;
  while (same < children.size() && same < nodes.size() &&
         children[same]->node == nodes[same].get()) {
    ++same;
  }
  Remove(known, same);
  for (const auto& child : children) {
    // Another node may stand where a deleted one stood.
    if (ToQt(child->node->Text()) != child->text) TextChanged(*child->node);
    Sync(*child);
  }
  Insert(known, nodes);
}

void TreeModel::Remove(Known& known, std::size_t from) {
  auto& children = known.children;
  if (from == children.size()) return;
  beginRemoveRows(IndexOf(known), static_cast<int>(from), static_cast<int>(children.size()) - 1);
  children.resize(from);
  endRemoveRows();
}

void TreeModel::Insert(Known& known, const Nodes& nodes) {
  auto& children = known.children;
  if (children.size() == nodes.size()) return;
  beginInsertRows(IndexOf(known), static_cast<int>(children.size()),
                  static_cast<int>(nodes.size()) - 1);
  for (std::size_t i = children.size(); i < nodes.size(); ++i) {
    auto added = std::make_unique<Known>();
    added->node = nodes[i].get();
    added->parent = &known;
    added->row = static_cast<int>(i);
    added->text = ToQt(nodes[i]->Text());
    added->opened = !nodes[i]->HasChildren();
    children.push_back(std::move(added));
  }
  endInsertRows();
}

TreeModel::Known* TreeModel::KnownAt(const QModelIndex& index) const {
  return index.isValid() ? static_cast<Known*>(index.internalPointer()) : root_.get();
}

TreeModel::Known* TreeModel::Find(const TreeNode* node) {
  if (node == nullptr) return root_.get();
  Known* parent = Find(node->Parent());
  if (parent == nullptr) return nullptr;
  if (!parent->opened) Open(*parent);
  const std::size_t place = node->Index();
  if (place >= parent->children.size() || parent->children[place]->node != node) return nullptr;
  return parent->children[place].get();
}

TreeNode* TreeModel::NodeAt(const QModelIndex& index) const { return KnownAt(index)->node; }

QModelIndex TreeModel::IndexOf(const TreeNode* node) {
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

bool TreeModel::hasChildren(const QModelIndex& parent) const {
  const Known* known = KnownAt(parent);
  return !known->opened || !known->children.empty();
}

bool TreeModel::canFetchMore(const QModelIndex& parent) const { return !KnownAt(parent)->opened; }

void TreeModel::fetchMore(const QModelIndex& parent) {
  if (Known* known = KnownAt(parent); !known->opened) Open(*known);
}

QVariant TreeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Known& known = *KnownAt(index);
  if (role == Qt::DisplayRole) return known.text;
  if (role == Qt::DecorationRole && icon_of_) return icon_of_(*known.node);
  return {};
}

}  // namespace dbkeeper::qt
