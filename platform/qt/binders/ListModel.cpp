#include "platform/qt/binders/ListModel.h"

#include <algorithm>
#include <charconv>

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

// The number at the beginning of a text such as "80 KB"; 0 where there is none.
double LeadingNumber(std::string_view text) {
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
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
  longest_.assign(list_.Columns().size(), std::nullopt);
  endResetModel();
}

void ListModel::RowChanged(std::size_t row) {
  const int changed = static_cast<int>(row);
  if (changed >= rows_ || columns_ == 0) return;
  longest_.assign(longest_.size(), std::nullopt);
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
    case kBarRole:
      return BarOf(item, column);
    default:
      return {};
  }
}

QVariant ListModel::BarOf(const ListItem& item, std::size_t column) const {
  const bool barred = list_.Columns()[column].Picture == ColumnPicture::kBar;
  if (!barred || column >= longest_.size()) return {};
  std::optional<double>& longest = longest_[column];
  if (!longest) {
    longest = 0;
    for (const ListItem& row : list_.Items()) {
      longest = std::max(*longest, LeadingNumber(row.Cell(column)));
    }
  }
  return *longest > 0 ? QVariant(LeadingNumber(item.Cell(column)) / *longest) : QVariant();
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
