#include "platform/qt/binders/ListWidget.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <algorithm>
#include <utility>

#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/MenuBinder.h"

namespace dbkeeper::qt {

namespace {

// A cell in a text whose cells end at tabs and whose rows end at line breaks.
QString PlainCell(std::string_view text) {
  return ToQtLines(text).replace('\n', ' ').replace('\t', ' ');
}

// Rows in rising order as runs of neighbours, so that a long selection stays a short one.
QItemSelection SelectionOf(const std::vector<std::size_t>& rows, const QAbstractItemModel& model) {
  QItemSelection selection;
  const int last_column = model.columnCount() - 1;
  for (std::size_t i = 0; i < rows.size();) {
    std::size_t end = i + 1;
    while (end < rows.size() && rows[end] == rows[end - 1] + 1) ++end;
    selection.select(model.index(static_cast<int>(rows[i]), 0),
                     model.index(static_cast<int>(rows[end - 1]), last_column));
    i = end;
  }
  return selection;
}

std::vector<std::size_t> RowsOf(const QItemSelection& selection) {
  std::vector<std::size_t> rows;
  for (const QItemSelectionRange& range : selection) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      rows.push_back(static_cast<std::size_t>(row));
    }
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

// Draws the bar of a cell that has one between its background and its text.
class BarDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    const QVariant length = index.data(ListModel::kBarRole);
    if (!length.isValid()) return QStyledItemDelegate::paint(painter, option, index);
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QString text = std::exchange(cell.text, QString());
    QStyle& style = *cell.widget->style();
    style.drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    painter->fillRect(BarPlace(cell.rect, length.toDouble()), BarColor(cell));
    // The text alone: the background is drawn.
    cell.text = text;
    cell.state.setFlag(QStyle::State_Selected, false);
    cell.state.setFlag(QStyle::State_HasFocus, false);
    cell.backgroundBrush = Qt::NoBrush;
    if (IsHighlighted(option)) cell.palette.setColor(QPalette::Text, SelectedText(option));
    style.drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
  }

 private:
  static QRect BarPlace(const QRect& cell, double length) {
    constexpr int kAir = 3;
    QRect place = cell.adjusted(1, kAir, -1, -kAir);
    place.setWidth(static_cast<int>(place.width() * length));
    return place;
  }
  static bool IsHighlighted(const QStyleOptionViewItem& cell) {
    return cell.state.testFlag(QStyle::State_Selected) && cell.widget->hasFocus();
  }
  static QColor SelectedText(const QStyleOptionViewItem& cell) {
    return cell.palette.color(QPalette::HighlightedText);
  }
  static QColor BarColor(const QStyleOptionViewItem& cell) {
    constexpr int kThin = 70;
    QColor color =
        IsHighlighted(cell) ? SelectedText(cell) : cell.palette.color(QPalette::Highlight);
    color.setAlpha(kThin);
    return color;
  }
};

}  // namespace

ListWidget::ListWidget(ListView& list, const ActionGuard& guard, QWidget* parent)
    : QTreeView(parent), list_(list), guard_(guard), model_(list, guard, nullptr) {
  setModel(&model_);
  setItemDelegate(new BarDelegate(this));
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  setSelectionBehavior(SelectRows);
  setEditTriggers(NoEditTriggers);
  setHorizontalScrollMode(ScrollPerPixel);
  header()->setStretchLastSection(false);
  header()->setSectionsMovable(false);
  header()->setSectionsClickable(true);
  header()->setHighlightSections(false);
  header()->setMinimumSectionSize(0);

  Keep(*this, list_.Changed.Connect(
                  [this](ListView::Change change, std::size_t row) { Mirror(change, row); }));
  Keep(*this, list_.MultiSelect.Observe([this](bool several) {
    setSelectionMode(several ? ExtendedSelection : SingleSelection);
  }));
  Keep(*this, list_.CheckBoxes.Observe([this](bool) { viewport()->update(); }));
  QObject::connect(this, &QTreeView::doubleClicked, this,
                   [this](const QModelIndex&) { guard_.Run([this] { list_.UserDblClick(); }); });
  QObject::connect(header(), &QHeaderView::sectionClicked, this, [this](int column) {
    guard_.Run([&] { list_.UserColumnClick(static_cast<std::size_t>(column)); });
  });
  ShowColumnWidths();
  ShowSelection();
}

QString ListWidget::SelectedText() const {
  QString text;
  for (const std::size_t row : list_.Selection()) {
    if (!text.isEmpty()) text += '\n';
    for (std::size_t column = 0; column < list_.Columns().size(); ++column) {
      if (column > 0) text += '\t';
      text += PlainCell(list_.Items()[row].Cell(column));
    }
  }
  return text;
}

void ListWidget::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    if (list_.SelCount() > 0) QGuiApplication::clipboard()->setText(SelectedText());
    return;
  }
  QTreeView::keyPressEvent(event);
}

void ListWidget::mouseReleaseEvent(QMouseEvent* event) {
  QTreeView::mouseReleaseEvent(event);
  if (event->button() == Qt::LeftButton) guard_.Run([this] { list_.UserClick(); });
}

void ListWidget::contextMenuEvent(QContextMenuEvent* event) {
  if (list_.Popup() == nullptr) return;
  QPoint place = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    // Below the row that the keyboard is on.
    place = viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft());
  }
  ShowPopup(*list_.Popup(), guard_, *this, place);
}

void ListWidget::selectionChanged(const QItemSelection& selected,
                                  const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  if (mirroring_) return;
  std::vector<std::size_t> rows = RowsOf(selectionModel()->selection());
  if (rows != list_.Selection()) guard_.Run([&] { list_.UserSelect(std::move(rows)); });
}

void ListWidget::Mirror(ListView::Change change, std::size_t row) {
  switch (change) {
    case ListView::Change::kColumns:
    case ListView::Change::kRows: {
      const QScopedValueRollback quiet(mirroring_, true);
      model_.Reload();
      ShowColumnWidths();
      ShowSelection();
      break;
    }
    case ListView::Change::kRow:
      model_.RowChanged(row);
      break;
    case ListView::Change::kSelection:
      ShowSelection();
      break;
    case ListView::Change::kCheckBoxes:
      viewport()->update();
      break;
  }
}

void ListWidget::ShowColumnWidths() {
  // The same columns again, as at a refresh: the widths that a person has chosen stay.
  if (list_.Columns() == shown_columns_) return;
  shown_columns_ = list_.Columns();
  for (std::size_t column = 0; column < shown_columns_.size(); ++column) {
    header()->resizeSection(static_cast<int>(column),
                            ColumnPixels(*this, shown_columns_[column].Width));
  }
}

void ListWidget::ShowSelection() {
  const QScopedValueRollback quiet(mirroring_, true);
  const std::vector<std::size_t>& rows = list_.Selection();
  if (rows == RowsOf(selectionModel()->selection())) return;
  selectionModel()->select(SelectionOf(rows, model_),
                           QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  if (rows.empty()) return;
  const QModelIndex first = model_.index(static_cast<int>(rows.front()), 0);
  selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
  scrollTo(first);
}

ListWidget* Binder::Make(ListView& list) const {
  auto* widget = new ListWidget(list, guard_, &window_);
  BindCommon(list, *widget);
  return widget;
}

}  // namespace dbkeeper::qt
