#include "platform/qt/binders/TreeWidget.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScopedValueRollback>

#include "platform/qt/Keep.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/MenuBinder.h"

namespace dbkeeper::qt {

TreeWidget::TreeWidget(TreeView& tree, const ActionGuard& guard, QWidget* parent)
    : QTreeView(parent), tree_(tree), guard_(guard), model_(tree, nullptr) {
  setModel(&model_);
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setEditTriggers(NoEditTriggers);
  Keep(*this, tree_.Changed.Connect(
                  [this](TreeView::Change change, const TreeNode* node) { Mirror(change, node); }));
  QObject::connect(this, &QTreeView::clicked, this,
                   [this](const QModelIndex& index) { TellClick(index); });
  ShowSelection();
  mirroring_ = false;
}

void TreeWidget::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) QTreeView::mousePressEvent(event);
}

void TreeWidget::mouseReleaseEvent(QMouseEvent* event) {
  QTreeView::mouseReleaseEvent(event);
  // A press that slid to another node before the release selected it without a click.
  if (moved_) TellClick(currentIndex());
}

void TreeWidget::TellClick(const QModelIndex& index) {
  moved_ = false;
  guard_.Run([&] { tree_.UserClick(model_.NodeAt(index)); });
}

void TreeWidget::keyPressEvent(QKeyEvent* event) {
  pressed_key_ = event->key();
  QTreeView::keyPressEvent(event);
}

void TreeWidget::keyReleaseEvent(QKeyEvent* event) {
  QTreeView::keyReleaseEvent(event);
  // A key that is held down releases only once, and one that brought the focus here not at all;
  // of two keys at a time the first to go tells where both have moved to.
  if (event->isAutoRepeat()) return;
  const bool pressed_here = event->key() == pressed_key_;
  if (pressed_here) pressed_key_ = 0;
  TreeNode* node = model_.NodeAt(currentIndex());
  if (node == nullptr || !(pressed_here || moved_)) return;
  moved_ = false;
  guard_.Run([&] { tree_.UserKeyUp(node); });
}

void TreeWidget::contextMenuEvent(QContextMenuEvent* event) {
  pressed_key_ = 0;
  guard_.Run([this] { tree_.UserRightMouseDown(); });
  if (tree_.Popup() == nullptr) return;
  QPoint place = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    place = viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft());
  }
  ShowPopup(*tree_.Popup(), guard_, *this, place);
}

void TreeWidget::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  if (mirroring_) return;
  moved_ = true;
  guard_.Run([&] { tree_.Select(model_.NodeAt(current)); });
}

void TreeWidget::Mirror(TreeView::Change change, const TreeNode* node) {
  const QScopedValueRollback quiet(mirroring_, true);
  switch (change) {
    case TreeView::Change::kText:
      model_.TextChanged(*node);
      break;
    case TreeView::Change::kStructure:
      model_.StructureChanged(node);
      ShowSelection();
      break;
    case TreeView::Change::kSelection:
      ShowSelection();
      break;
    case TreeView::Change::kExpand:
      expand(model_.IndexOf(node));
      break;
  }
}

void TreeWidget::ShowSelection() {
  const QScopedValueRollback quiet(mirroring_, true);
  const QModelIndex selected = model_.IndexOf(tree_.Selected());
  if (selected == currentIndex()) return;
  selectionModel()->setCurrentIndex(selected, QItemSelectionModel::ClearAndSelect);
}

TreeWidget* Binder::Make(TreeView& tree) const {
  auto* widget = new TreeWidget(tree, guard_, &window_);
  BindCommon(tree, *widget);
  return widget;
}

}  // namespace dbkeeper::qt
