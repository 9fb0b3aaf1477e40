// The rows of a grid as the toolkit's view asks for them: every cell is read from the source
// itself, so that a long result costs no copy.
#pragma once

#include <QAbstractTableModel>

#include "controls/ActionGuard.h"
#include "controls/DataGrid.h"

namespace dbkeeper::qt {

class GridModel : public QAbstractTableModel {
 public:
  // The view's headers take memory for every row; rows from here on are not shown.
  static constexpr int kMostRows = 10'000'000;

  // Both must outlive the model.
  GridModel(DataGrid& grid, const ActionGuard& guard, QObject* parent);

  // The source has other columns and rows, or is another one.
  void Reload();
  // The source has another number of rows, or other rows.
  void RowsChanged();
  void RowChanged(std::int64_t row);
  void CurrentChanged();
  // What a person reads and copies of a cell: one line.
  QString ShownText(const QModelIndex& index) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool canFetchMore(const QModelIndex& parent) const override;
  void fetchMore(const QModelIndex& parent) override;

 private:
  int ShownRows() const;

  DataGrid& grid_;
  const ActionGuard& guard_;
  int rows_ = 0;
  int columns_ = 0;
  bool fetching_ = false;
};

// One line of a text: line breaks, tabs and other control characters are shown as signs of their
// own, so that no content can disturb the row or hide in it.
QString OneLine(QString text);

}  // namespace dbkeeper::qt
