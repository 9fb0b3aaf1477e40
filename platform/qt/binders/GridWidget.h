// The data grid's widget: cells to read, copy and edit, and a viewer for long ones.
#pragma once

#include <QTableView>
#include <set>
#include <vector>

#include "controls/ActionGuard.h"
#include "controls/DataGrid.h"
#include "platform/qt/binders/GridModel.h"

class QLabel;

namespace dbkeeper::qt {

class GridWidget : public QTableView {
 public:
  // Both must outlive the widget.
  GridWidget(DataGrid& grid, const ActionGuard& guard, QWidget* parent);

  // A line to be laid out below the grid: why rows cannot be edited, or that there are more.
  QLabel& Note() const { return *note_; }
  // The selected cells: rows one a line, cells separated by tabs; a null is empty. A single cell
  // is given whole, as it stands.
  QString SelectedText() const;
  // Shows the whole of the focused cell.
  void OpenViewer();
  // Makes the focused cell null where it may be edited.
  void SetNull();
  // Drops the changes of the row.
  void CancelRow();
  // Nothing: looking for what is typed would read a table to its end.
  void keyboardSearch(const QString&) override {}

 protected:
  using QTableView::edit;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  QItemSelectionModel::SelectionFlags selectionCommand(
      const QModelIndex& index, const QEvent* event = nullptr) const override;
  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  void Follow(GridSource* source);
  void Mirror(GridSource::Change change, std::int64_t row);
  void ShowCurrent();
  void KeepColumnWidths();
  void ShowColumnWidths();
  // Widens columns to what these cells show, but none that a person has sized.
  void WidenColumns(int first_row, int last_row, int first_column, int last_column);
  void WidenToSight();
  void ShowNote();
  // Whether a cell is edited in a dialog of its own.
  bool NeedsViewer(const QModelIndex& index) const;

  DataGrid& grid_;
  const ActionGuard& guard_;
  GridModel model_;
  QLabel* note_;
  Subscription source_changes_;
  std::vector<GridColumn> sized_columns_;
  std::vector<int> widths_;  // of these columns, while the grid shows none
  std::set<int> hand_sized_;
  bool sizing_ = false;  // set while the program sizes columns
  // Set while the program moves the focus, so that it does not come back as a person's.
  bool mirroring_ = false;
  bool checking_ = false;
};

}  // namespace dbkeeper::qt
