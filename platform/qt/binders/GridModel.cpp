#include "platform/qt/binders/GridModel.h"

#include <QBrush>
#include <QFont>
#include <algorithm>

#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

constexpr const char* kNullText = "(null)";

// Marks that change the direction of what follows.
bool TurnsDirection(QChar c) {
  const char16_t code = c.unicode();
  return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

QChar Shown(QChar c) {
  const char16_t code = c.unicode();
  if (code < 0x20) return {static_cast<char16_t>(0x2400 + code)};  // ␀ to ␟
  if (code == 0x7F) return {u'␡'};
  const bool line_end = code == 0x2028 || code == 0x2029;
  if ((code >= 0x80 && code < 0xA0) || line_end || TurnsDirection(c))
    return QChar::ReplacementCharacter;
  return c;
}

const char* StateMark(GridState state) {
  switch (state) {
    case GridState::kEdit:
      return "I";
    case GridState::kInsert:
      return "*";
    default:
      return "▶";
  }
}

}  // namespace

QString OneLine(QString text) {
  text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  for (QChar& c : text) {
    if (c == '\n' || c == '\r') {
      c = u'↵';
    } else {
      c = Shown(c);
    }
  }
  return text;
}

GridModel::GridModel(DataGrid& grid, const ActionGuard& guard, QObject* parent)
    : QAbstractTableModel(parent), grid_(grid), guard_(guard) {}

int GridModel::ShownRows() const {
  const GridSource* const source = grid_.Source();
  if (source == nullptr) return 0;
  return static_cast<int>(std::min<std::int64_t>(source->RowCount().Rows, kMostRows));
}

void GridModel::Reload() {
  beginResetModel();
  rows_ = ShownRows();
  const GridSource* const source = grid_.Source();
  columns_ = source == nullptr ? 0 : static_cast<int>(source->Columns().size());
  endResetModel();
}

void GridModel::RowsChanged() {
  const int rows = ShownRows();
  // Which rows came or went does not matter to a view that reads every cell again.
  if (rows > rows_) {
    beginInsertRows({}, rows_, rows - 1);
    rows_ = rows;
    endInsertRows();
  } else if (rows < rows_) {
    beginRemoveRows({}, rows, rows_ - 1);
    rows_ = rows;
    endRemoveRows();
  }
  if (rows_ > 0 && columns_ > 0) {
    Q_EMIT dataChanged(index(0, 0), index(rows_ - 1, columns_ - 1));
  }
}

void GridModel::RowChanged(std::int64_t row) {
  if (row < 0 || row >= rows_ || columns_ == 0) return;
  const int changed = static_cast<int>(row);
  Q_EMIT dataChanged(index(changed, 0), index(changed, columns_ - 1));
  CurrentChanged();
}

void GridModel::CurrentChanged() {
  if (rows_ > 0) Q_EMIT headerDataChanged(Qt::Vertical, 0, rows_ - 1);
}

int GridModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int GridModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columns_;
}

QString GridModel::ShownText(const QModelIndex& index) const {
  GridSource* const source = grid_.Source();
  if (source == nullptr) return {};
  const GridCell cell = source->Cell(index.row(), static_cast<std::size_t>(index.column()));
  if (cell.Null) return kNullText;
  const QString text = OneLine(ToQt(cell.Text));
  return cell.Shortened ? text + u'…' : text;
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
  GridSource* const source = grid_.Source();
  const auto column = static_cast<std::size_t>(index.column());
  if (source == nullptr || column >= source->Columns().size()) return {};
  switch (role) {
    case Qt::DisplayRole:
      return ShownText(index);
    case Qt::ForegroundRole:
      if (source->Cell(index.row(), column).Null) return QBrush(Qt::gray);
      return {};
    case Qt::TextAlignmentRole: {
      const bool right = source->Columns()[column].Align == Alignment::kRight;
      return QVariant::fromValue<Qt::Alignment>((right ? Qt::AlignRight : Qt::AlignLeft) |
                                                Qt::AlignVCenter);
    }
    default:
      return {};
  }
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  const GridSource* const source = grid_.Source();
  if (source == nullptr) return {};
  if (orientation == Qt::Vertical) {
    if (role == Qt::DisplayRole) {
      return section == source->CurrentRow() ? QString(StateMark(source->State())) : QString();
    }
    return role == Qt::TextAlignmentRole ? QVariant(Qt::AlignCenter) : QVariant();
  }
  const auto column = static_cast<std::size_t>(section);
  if (column >= source->Columns().size()) return {};
  const GridColumn& shown = source->Columns()[column];
  switch (role) {
    case Qt::DisplayRole:
      return OneLine(ToQt(shown.Caption));
    case Qt::ToolTipRole:
      return ToQt(shown.TypeHint);
    case Qt::TextAlignmentRole: {
      const bool right = shown.Align == Alignment::kRight;
      return QVariant::fromValue<Qt::Alignment>((right ? Qt::AlignRight : Qt::AlignLeft) |
                                                Qt::AlignVCenter);
    }
    default:
      return {};
  }
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
  if (grid_.Editable(static_cast<std::size_t>(index.column()))) flags |= Qt::ItemIsEditable;
  return flags;
}

bool GridModel::canFetchMore(const QModelIndex& parent) const {
  const GridSource* const source = grid_.Source();
  return !parent.isValid() && source != nullptr && !source->RowCount().Exact && rows_ < kMostRows;
}

void GridModel::fetchMore(const QModelIndex&) {
  if (fetching_) return;
  // Not while the view is in the middle of its own work: a failure is shown in a box.
  fetching_ = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        fetching_ = false;
        guard_.Run([this] {
          if (grid_.Source() != nullptr) grid_.Source()->FetchMore();
        });
      },
      Qt::QueuedConnection);
}

}  // namespace dbkeeper::qt
