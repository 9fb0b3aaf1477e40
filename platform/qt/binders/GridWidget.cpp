#include "platform/qt/binders/GridWidget.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <algorithm>
#include <set>

#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/CellEditor.h"
#include "platform/qt/binders/CellViewer.h"
#include "platform/qt/binders/MenuBinder.h"

namespace dbkeeper::qt {

namespace {

constexpr int kNarrowest = 40;
constexpr int kWidest = 320;
constexpr int kCellAir = 16;
constexpr int kEditorWidth = 120;
constexpr int kMarkWidth = 18;
constexpr int kNoteMargin = 3;
// Columns are sized to what these rows hold.
constexpr int kSizedRows = 50;
constexpr qsizetype kSizedCharacters = 100;

bool MakesNull(const QKeyEvent& event) {
  return event.modifiers() == Qt::ControlModifier &&
         (event.key() == Qt::Key_0 || event.key() == Qt::Key_Delete);
}

// Edits a cell in its place. What was not typed into stays as it is, so that a null does not become
// an empty text by being looked at.
class CellDelegate : public QStyledItemDelegate {
 public:
  CellDelegate(DataGrid& grid, const ActionGuard& guard, GridWidget& widget)
      : QStyledItemDelegate(&widget), grid_(grid), guard_(guard), widget_(widget) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                        const QModelIndex& index) const override {
    auto* editor = new CellEditor(parent);
    editor->setObjectName("CellEdit");
    editor->setStyleSheet("QLineEdit { border: 1px solid palette(highlight); }");
    editor->setAlignment(index.data(Qt::TextAlignmentRole).value<Qt::Alignment>());
    const auto column = static_cast<std::size_t>(index.column());
    connect(editor, &QLineEdit::textEdited, this,
            [this, column] { guard_.Run([&] { grid_.UserBeginEdit(column); }); });
    editor->Finish = [this, editor] {
      refused_ = false;
      Q_EMIT const_cast<CellDelegate*>(this)->commitData(editor);
      Q_EMIT const_cast<CellDelegate*>(this)->closeEditor(editor);
      return !refused_;
    };
    return editor;
  }

  // A narrow column's editor goes beyond it, as far as the grid does.
  void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                            const QModelIndex&) const override {
    QRect place = option.rect;
    place.setWidth(std::max(place.width(), Scaled(*editor, kEditorWidth)));
    editor->setGeometry(place & editor->parentWidget()->rect());
  }

  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    guard_.Run([&] {
      const std::string text =
          grid_.Source()->WholeText(index.row(), static_cast<std::size_t>(index.column()));
      static_cast<QLineEdit*>(editor)->setText(ToQt(text));
    });
  }

  void setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex& index) const override {
    auto* line = static_cast<QLineEdit*>(editor);
    if (!line->isModified()) return;
    // First of all: a message box takes the focus away, and the editor asks to be read again.
    line->setModified(false);
    const std::string text = FromQt(line->text());
    refused_ = true;
    guard_.Run([&] {
      grid_.UserSetCell(static_cast<std::size_t>(index.column()), text);
      refused_ = false;
    });
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::KeyPress) {
      const auto& key = *static_cast<QKeyEvent*>(event);
      const bool cancels = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab;
      if (cancels || MakesNull(key)) {
        auto* editor = static_cast<QWidget*>(watched);
        Q_EMIT closeEditor(editor, RevertModelCache);
        if (cancels) {
          widget_.CancelRow();
        } else {
          widget_.SetNull();
        }
        return true;
      }
    }
    return QStyledItemDelegate::eventFilter(watched, event);
  }

 private:
  DataGrid& grid_;
  const ActionGuard& guard_;
  GridWidget& widget_;
  mutable bool refused_ = false;  // the text that was typed last
};

}  // namespace

bool FinishTyping() {
  auto* const editor = dynamic_cast<CellEditor*>(QApplication::focusWidget());
  return editor == nullptr || editor->Finish();
}

GridWidget::GridWidget(DataGrid& grid, const ActionGuard& guard, QWidget* parent)
    : QTableView(parent),
      grid_(grid),
      guard_(guard),
      model_(grid, guard, nullptr),
      note_(new QLabel(parent)) {
  setModel(&model_);
  setItemDelegate(new CellDelegate(grid, guard, *this));
  // Several cells to copy, and the current one always among them.
  setSelectionMode(ContiguousSelection);
  setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setHorizontalScrollMode(ScrollPerPixel);
  horizontalHeader()->setSectionsMovable(false);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setMinimumSectionSize(Scaled(*this, kNarrowest));
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + Scaled(*this, 6));
  verticalHeader()->setMinimumSectionSize(1);
  verticalHeader()->setFixedWidth(Scaled(*this, kMarkWidth));
  verticalHeader()->setHighlightSections(false);
  setCornerButtonEnabled(false);
  note_->setObjectName("GridNote");
  note_->setTextFormat(Qt::PlainText);
  note_->setWordWrap(true);
  note_->setMargin(Scaled(*this, kNoteMargin));

  connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column) {
    if (!sizing_) hand_sized_.insert(column);
  });
  Keep(*this, grid_.Source.Observe([this](GridSource* source) { Follow(source); }));
  Keep(*this, grid_.ReadOnly.Observe([this](bool) { ShowNote(); }));
}

void GridWidget::Follow(GridSource* source) {
  source_changes_ = Subscription();
  if (source != nullptr) {
    source_changes_ = source->Changed.Connect(
        [this](GridSource::Change change, std::int64_t row) { Mirror(change, row); });
  }
  Mirror(GridSource::Change::kAll, 0);
}

void GridWidget::Mirror(GridSource::Change change, std::int64_t row) {
  switch (change) {
    case GridSource::Change::kAll: {
      const QScopedValueRollback quiet(mirroring_, true);
      const QScopedValueRollback programs(sizing_, true);
      KeepColumnWidths();
      model_.Reload();
      ShowColumnWidths();
      ShowCurrent();
      ShowNote();
      break;
    }
    case GridSource::Change::kRows: {
      const QScopedValueRollback quiet(mirroring_, true);
      model_.RowsChanged();
      ShowCurrent();
      break;
    }
    case GridSource::Change::kRow:
      model_.RowChanged(row);
      WidenToSight();
      break;
    case GridSource::Change::kCurrent:
      ShowCurrent();
      model_.CurrentChanged();
      break;
    case GridSource::Change::kState:
      model_.CurrentChanged();
      ShowNote();
      break;
  }
}

void GridWidget::ShowCurrent() {
  const QScopedValueRollback quiet(mirroring_, true);
  const GridSource* const source = grid_.Source();
  const std::int64_t row = source == nullptr ? -1 : source->CurrentRow();
  if (row < 0 || row >= model_.rowCount() || model_.columnCount() == 0) {
    grid_.CurrentColumn = -1;
    return;
  }
  const int column = std::clamp(grid_.CurrentColumn(), 0, model_.columnCount() - 1);
  grid_.CurrentColumn = column;
  const QModelIndex index = model_.index(static_cast<int>(row), column);
  if (currentIndex() == index && selectionModel()->isSelected(index)) return;
  // Whatever keys are held: the row that commands mean is the one that is marked.
  selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
}

void GridWidget::KeepColumnWidths() {
  if (model_.columnCount() == 0) return;
  widths_.clear();
  for (int column = 0; column < model_.columnCount(); ++column) {
    widths_.push_back(columnWidth(column));
  }
}

void GridWidget::ShowColumnWidths() {
  GridSource* const source = grid_.Source();
  const std::vector<GridColumn> none;
  const auto& columns = source == nullptr ? none : source->Columns();
  const bool same =
      std::equal(columns.begin(), columns.end(), sized_columns_.begin(), sized_columns_.end(),
                 [](const GridColumn& a, const GridColumn& b) { return a.Caption == b.Caption; });
  if (columns.empty()) return;
  if (!same) hand_sized_.clear();
  for (int column = 0; column < model_.columnCount(); ++column) {
    // As at a refresh: the widths that a person has chosen stay.
    const int width = same ? widths_[static_cast<std::size_t>(column)] : Scaled(*this, kNarrowest);
    setColumnWidth(column, width);
  }
  sized_columns_ = columns;
  WidenColumns(0, std::min(model_.rowCount(), kSizedRows) - 1, 0, model_.columnCount() - 1);
}

void GridWidget::WidenColumns(int first_row, int last_row, int first_column, int last_column) {
  const QScopedValueRollback quiet(sizing_, true);
  const QFontMetrics metrics = fontMetrics();
  for (int column = first_column; column <= last_column; ++column) {
    if (hand_sized_.count(column) > 0) continue;
    int width = metrics.horizontalAdvance(
        model_.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    for (int row = first_row; row <= last_row; ++row) {
      const QString text = model_.ShownText(model_.index(row, column)).left(kSizedCharacters);
      width = std::max(width, metrics.horizontalAdvance(text));
    }
    width = std::min(width + Scaled(*this, kCellAir), Scaled(*this, kWidest));
    if (width > columnWidth(column)) setColumnWidth(column, width);
  }
}

// So that no number is cut because the first rows had shorter ones.
void GridWidget::WidenToSight() {
  const int first_row = rowAt(0);
  const int first_column = columnAt(0);
  if (first_row < 0 || first_column < 0) return;
  const int rows = viewport()->height() / verticalHeader()->defaultSectionSize() + 1;
  const int last_column = columnAt(viewport()->width() - 1);
  WidenColumns(first_row, std::min(first_row + rows, model_.rowCount()) - 1, first_column,
               last_column < 0 ? model_.columnCount() - 1 : last_column);
}

void GridWidget::scrollContentsBy(int dx, int dy) {
  QTableView::scrollContentsBy(dx, dy);
  WidenToSight();
}

void GridWidget::ShowNote() {
  const GridSource* const source = grid_.Source();
  QString text;
  if (source != nullptr && !grid_.ReadOnly()) text = ToQtLines(source->EditRefusal());
  if (source != nullptr && source->RowCount().Rows > GridModel::kMostRows) {
    text = QString("最初の %L1 行を表示しています。").arg(GridModel::kMostRows);
  }
  note_->setText(text);
  note_->setVisible(!text.isEmpty());
}

void GridWidget::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  GridSource* const source = grid_.Source();
  if (source == nullptr || !source->HasFailure() || checking_) return;
  // A row could not be read; the box that says so must not open while the view paints.
  checking_ = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        checking_ = false;
        guard_.Run([this] {
          if (grid_.Source() != nullptr) grid_.Source()->Check();
        });
      },
      Qt::QueuedConnection);
}

void GridWidget::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  if (mirroring_ || !current.isValid()) return;
  guard_.Run([&] { grid_.UserMoveTo(current.row(), current.column()); });
  const GridSource* const source = grid_.Source();
  if (source == nullptr || source->CurrentRow() == current.row()) return;
  // The row left behind could not be written: the focus goes back to it.
  QMetaObject::invokeMethod(
      this, [this] { ShowCurrent(); }, Qt::QueuedConnection);
}

QItemSelectionModel::SelectionFlags GridWidget::selectionCommand(const QModelIndex& index,
                                                                 const QEvent* event) const {
  // A press beside the cells would leave the current one unmarked.
  if (!index.isValid()) return QItemSelectionModel::NoUpdate;
  return QTableView::selectionCommand(index, event);
}

bool GridWidget::NeedsViewer(const QModelIndex& index) const {
  GridSource* const source = grid_.Source();
  const auto column = static_cast<std::size_t>(index.column());
  const GridCell cell = source->Cell(index.row(), column);
  return cell.Shortened || cell.Text.find_first_of("\r\n") != std::string_view::npos;
}

bool GridWidget::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  const bool asked = trigger == DoubleClicked || trigger == EditKeyPressed;
  if (!index.isValid() || grid_.Source() == nullptr) return false;
  const bool editable = (model_.flags(index) & Qt::ItemIsEditable) != 0;
  if (editable && !NeedsViewer(index)) return QTableView::edit(index, trigger, event);
  if (asked)
    QMetaObject::invokeMethod(
        this, [this] { OpenViewer(); }, Qt::QueuedConnection);
  return false;
}

void GridWidget::OpenViewer() {
  GridSource* const source = grid_.Source();
  const QModelIndex index = currentIndex();
  if (source == nullptr || !index.isValid()) return;
  const auto column = static_cast<std::size_t>(index.column());
  guard_.Run([&] {
    const CellUse use = grid_.Editable(column) ? CellUse::kChange : CellUse::kRead;
    CellViewer viewer(source->Columns()[column], source->WholeText(index.row(), column), use, this);
    viewer.exec();
    if (viewer.HasChange()) grid_.UserSetCell(column, viewer.NewText());
  });
}

void GridWidget::SetNull() {
  const QModelIndex index = currentIndex();
  if (!index.isValid()) return;
  guard_.Run([&] { grid_.UserSetCell(static_cast<std::size_t>(index.column()), std::nullopt); });
}

void GridWidget::CancelRow() {
  guard_.Run([this] { grid_.UserCancel(); });
}

QString GridWidget::SelectedText() const {
  GridSource* const source = grid_.Source();
  const QItemSelection selection = selectionModel()->selection();
  if (source == nullptr || selection.isEmpty()) return {};
  std::set<int> columns;
  std::set<std::pair<int, int>> spans;  // first and last row
  for (const QItemSelectionRange& range : selection) {
    spans.insert({range.top(), range.bottom()});
    for (int column = range.left(); column <= range.right(); ++column) columns.insert(column);
  }
  const auto whole = [source](int row, int column) {
    return ToQtLines(source->WholeText(row, static_cast<std::size_t>(column)));
  };
  if (columns.size() == 1 && spans.size() == 1 && spans.begin()->first == spans.begin()->second) {
    return whole(spans.begin()->first, *columns.begin());
  }
  QString text;
  int next_row = 0;
  for (const auto& [first, last] : spans) {
    for (int row = std::max(first, next_row); row <= last; ++row) {
      if (!text.isEmpty()) text += '\n';
      for (const int column : columns) {
        if (column != *columns.begin()) text += '\t';
        if (!selectionModel()->isSelected(model_.index(row, column))) continue;
        // A cell of its own: its line breaks and tabs would begin others.
        text += whole(row, column).replace('\n', ' ').replace('\t', ' ');
      }
    }
    next_row = std::max(next_row, last + 1);
  }
  return text;
}

void GridWidget::keyPressEvent(QKeyEvent* event) {
  const GridSource* const source = grid_.Source();
  const bool changing = source != nullptr && (source->State() == GridState::kEdit ||
                                              source->State() == GridState::kInsert);
  if (event->matches(QKeySequence::Copy)) {
    guard_.Run([this] { QApplication::clipboard()->setText(SelectedText()); });
  } else if (MakesNull(*event)) {
    SetNull();
  } else if (changing && (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Tab)) {
    CancelRow();
  } else {
    QTableView::keyPressEvent(event);
  }
}

void GridWidget::contextMenuEvent(QContextMenuEvent* event) {
  if (grid_.Popup() == nullptr) return;
  QPoint place = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    place = viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft());
  }
  ShowPopup(*grid_.Popup(), guard_, *this, place);
}

}  // namespace dbkeeper::qt
