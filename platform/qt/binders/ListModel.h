// The report list as the toolkit's view asks for it: every cell is read from the control itself, so
// that a long list costs no copy.
#pragma once

#include <QAbstractTableModel>
#include <optional>
#include <vector>

#include "controls/ActionGuard.h"
#include "controls/ListView.h"

namespace dbkeeper::qt {

class ListModel : public QAbstractTableModel {
 public:
  // How long a cell's bar is, from 0 to 1; invalid where there is none.
  static constexpr int kBarRole = Qt::UserRole;

  // Both must outlive the model.
  ListModel(ListView& list, const ActionGuard& guard, QObject* parent);

  // The control has changed its columns or rows. Until the control tells, the view sees the number
  // of rows and columns it was told last.
  void Reload();
  void RowChanged(std::size_t row);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 private:
  QVariant BarOf(const ListItem& item, std::size_t column) const;

  ListView& list_;
  const ActionGuard& guard_;
  int rows_ = 0;
  int columns_ = 0;
  // By column, the number that has the longest bar; absent where it is not known yet.
  mutable std::vector<std::optional<double>> longest_;
};

}  // namespace dbkeeper::qt
