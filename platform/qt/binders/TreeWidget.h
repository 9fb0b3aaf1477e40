// The tree's widget: a left click or a key tells the control, a right press leaves the selection
// alone and shows the popup menu that the control then names.
#pragma once

#include <QTreeView>

#include "controls/ActionGuard.h"
#include "platform/qt/binders/TreeModel.h"

namespace dbkeeper::qt {

class TreeWidget : public QTreeView {
 public:
  // Both must outlive the widget.
  TreeWidget(TreeView& tree, const ActionGuard& guard, QWidget* parent);

  TreeModel& Model() { return model_; }

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

 private:
  void Mirror(TreeView::Change change, const TreeNode* node);
  void ShowSelection();
  void TellClick(const QModelIndex& index);

  TreeView& tree_;
  const ActionGuard& guard_;
  TreeModel model_;
  // Set while the program changes the selection, and while the view gets its model.
  bool mirroring_ = true;
  int pressed_key_ = 0;  // the key whose press came here, and whose release therefore counts
  bool moved_ = false;   // a person has selected another node, which is not told yet
};

}  // namespace dbkeeper::qt
