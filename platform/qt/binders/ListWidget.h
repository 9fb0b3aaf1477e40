// The report list's widget: columns that a person can widen, whole-row selection of one or many
// rows, type-ahead, a popup menu by mouse or key, and Ctrl+C.
#pragma once

#include <QTreeView>
#include <vector>

#include "controls/ActionGuard.h"
#include "controls/ListView.h"
#include "platform/qt/binders/ListModel.h"

namespace dbkeeper::qt {

class ListWidget : public QTreeView {
 public:
  // Both must outlive the widget.
  ListWidget(ListView& list, const ActionGuard& guard, QWidget* parent);

  // The selected rows, one a line, their cells separated by tabs.
  QString SelectedText() const;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  void Mirror(ListView::Change change, std::size_t row);
  void ShowColumnWidths();
  void ShowSelection();

  ListView& list_;
  const ActionGuard& guard_;
  ListModel model_;
  std::vector<ListColumn> shown_columns_;
  // Set while the program changes the selection, so that it does not come back as a person's.
  bool mirroring_ = false;
};

}  // namespace dbkeeper::qt
