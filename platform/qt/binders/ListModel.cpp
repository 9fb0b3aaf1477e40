#include "platform/qt/binders/ListModel.h"

#include "app/support/TextHelpers.h"
#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

constexpr int kShownCharacters = 1000;

// One line of a cell: a row of the list is one text line high. Blanks at its end, which the server
// adds to columns of fixed length, would only make it look cut off.
QString CellText(std::string_view text) {
  QString shown = ToQtLines(WithoutTrailingBlanks(text)).left(kShownCharacters);
  return shown.replace('\n', ' ');
}

Qt::Alignment ToQtAlignment(Alignment align) {
  constexpr Qt::AlignmentFlag kFlags[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};
  return kFlags[static_cast<std::size_t>(align)] | Qt::AlignVCenter;
}

}  // namespace

ListModel::ListModel(ListView& list, const ActionGuard& guard, QObject* parent)
    : QAbstractTableModel(parent), list_(list), guard_(guard) {
  Reload();
}

void ListModel::Reload() {
  beginResetModel();
  rows_ = static_cast<int>(list_.Items().size());
  columns_ = static_cast<int>(list_.Columns().size());
  endResetModel();
}

void ListModel::RowChanged(std::size_t row) {
  const int changed = static_cast<int>(row);
  if (changed >= rows_ || columns_ == 0) return;
  Q_EMIT dataChanged(index(changed, 0), index(changed, columns_ - 1));
}

int ListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int ListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columns_;
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  const auto column = static_cast<std::size_t>(index.column());
  // The control may be ahead of what it has told, while a bulk update goes on.
  if (row >= list_.Items().size() || column >= list_.Columns().size()) return {};
  const ListItem& item = list_.Items()[row];
  switch (role) {
    case Qt::DisplayRole:
      return CellText(item.Cell(column));
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(ToQtAlignment(list_.Columns()[column].Align));
    case Qt::CheckStateRole:
      if (column > 0 || !list_.CheckBoxes()) return {};
      return item.Checked ? Qt::Checked : Qt::Unchecked;
    default:
      return {};
  }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  const auto column = static_cast<std::size_t>(section);
  if (orientation != Qt::Horizontal || column >= list_.Columns().size()) return {};
  const ListColumn& shown = list_.Columns()[column];
  if (role == Qt::DisplayRole) return ToQt(shown.Caption);
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(ToQtAlignment(shown.Align));
  return {};
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
  if (index.column() == 0 && list_.CheckBoxes()) flags |= Qt::ItemIsUserCheckable;
  return flags;
}

bool ListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::CheckStateRole) return false;
  const bool checked = value.toInt() == Qt::Checked;
  guard_.Run([&] { list_.UserCheck(static_cast<std::size_t>(index.row()), checked); });
  return true;
}

}  // namespace dbkeeper::qt
