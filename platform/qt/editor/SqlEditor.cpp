#include "platform/qt/editor/SqlEditor.h"

#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QTextBlock>
#include <QUrl>
#include <algorithm>
#include <memory>

#include "platform/qt/Look.h"
#include "platform/qt/editor/SqlHighlighter.h"

namespace dbkeeper::qt {

namespace {

constexpr int kTabCharacters = 4;
constexpr int kNumbersMargin = 6;

QColor CurrentLineColor(const QPalette& palette) {
  return IsDark(palette) ? QColor(0x28, 0x2f, 0x38) : QColor(0xee, 0xf4, 0xfb);
}

}  // namespace

class SqlEditor::LineNumbers : public QWidget {
 public:
  explicit LineNumbers(SqlEditor& editor) : QWidget(&editor), editor_(editor) {}

 protected:
  void paintEvent(QPaintEvent* event) override { editor_.PaintNumbers(event); }

 private:
  SqlEditor& editor_;
};

SqlEditor::SqlEditor(QWidget* parent) : QPlainTextEdit(parent), numbers_(new LineNumbers(*this)) {
  setFont(CodeFont(*this));
  setLineWrapMode(NoWrap);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setTabStopDistance(kTabCharacters * fontMetrics().horizontalAdvance(' '));
  highlighter_ = new SqlHighlighter(document(), IsDark(palette()));
  connect(this, &QPlainTextEdit::blockCountChanged, this, [this] { PlaceNumbers(); });
  connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] { MarkCurrentLine(); });
  connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& area, int scrolled) {
    if (scrolled != 0) {
      numbers_->scroll(0, scrolled);
    } else {
      numbers_->update(0, area.y(), numbers_->width(), area.height());
    }
  });
  PlaceNumbers();
  MarkCurrentLine();
}

int SqlEditor::NumbersWidth() const {
  const auto digits = std::max<qsizetype>(3, QString::number(blockCount()).size());
  return static_cast<int>(digits) * fontMetrics().horizontalAdvance('9') + 2 * kNumbersMargin;
}

void SqlEditor::PlaceNumbers() {
  setViewportMargins(NumbersWidth(), 0, 0, 0);
  const QRect inside = contentsRect();
  numbers_->setGeometry(inside.left(), inside.top(), NumbersWidth(), inside.height());
}

void SqlEditor::PaintNumbers(QPaintEvent* event) {
  QPainter painter(numbers_);
  painter.fillRect(event->rect(), palette().window());
  painter.setFont(font());
  QTextBlock block = firstVisibleBlock();
  QRectF line = blockBoundingGeometry(block).translated(contentOffset());
  for (; block.isValid() && line.top() <= event->rect().bottom(); block = block.next()) {
    line = blockBoundingGeometry(block).translated(contentOffset());
    if (!block.isVisible() || line.bottom() < event->rect().top()) continue;
    const bool current = block.blockNumber() == textCursor().blockNumber();
    painter.setPen(current ? palette().text().color() : palette().placeholderText().color());
    const QRect place(0, static_cast<int>(line.top()), numbers_->width() - kNumbersMargin,
                      fontMetrics().height());
    painter.drawText(place, Qt::AlignRight, QString::number(block.blockNumber() + 1));
  }
}

void SqlEditor::MarkCurrentLine() {
  QTextEdit::ExtraSelection line;
  line.format.setBackground(CurrentLineColor(palette()));
  line.format.setProperty(QTextFormat::FullWidthSelection, true);
  line.cursor = textCursor();
  line.cursor.clearSelection();
  setExtraSelections({line});
  numbers_->update();
}

void SqlEditor::resizeEvent(QResizeEvent* event) {
  QPlainTextEdit::resizeEvent(event);
  PlaceNumbers();
}

void SqlEditor::changeEvent(QEvent* event) {
  QPlainTextEdit::changeEvent(event);
  if (event->type() == QEvent::FontChange && numbers_ != nullptr) PlaceNumbers();
  if (event->type() == QEvent::PaletteChange && highlighter_ != nullptr) {
    highlighter_->SetColors(IsDark(palette()));
    MarkCurrentLine();
  }
}

void SqlEditor::keyPressEvent(QKeyEvent* event) {
  // While an input method composes, every key is its own.
  const bool composing = !textCursor().block().layout()->preeditAreaText().isEmpty();
  const bool unindent = event->key() == Qt::Key_Backtab;
  const bool indent = event->key() == Qt::Key_Tab && textCursor().hasSelection();
  if (composing || isReadOnly() || (!indent && !unindent)) {
    QPlainTextEdit::keyPressEvent(event);
  } else if (indent) {
    Indent();
  } else {
    Unindent();
  }
}

void SqlEditor::Indent() {
  QTextCursor cursor = textCursor();
  const int end = cursor.selectionEnd();
  QTextBlock block = document()->findBlock(cursor.selectionStart());
  const QTextBlock last = document()->findBlock(end);
  // A selection that ends before a line's first letter does not mean that line.
  const bool without_last = last != block && end == last.position();
  const int behind = last.blockNumber() + (without_last ? 0 : 1);
  cursor.beginEditBlock();
  for (; block.isValid() && block.blockNumber() < behind; block = block.next()) {
    QTextCursor(block).insertText("\t");
  }
  cursor.endEditBlock();
}

void SqlEditor::Unindent() {
  QTextCursor cursor = textCursor();
  QTextBlock block = document()->findBlock(cursor.selectionStart());
  const int last = document()->findBlock(cursor.selectionEnd()).blockNumber();
  cursor.beginEditBlock();
  for (; block.isValid() && block.blockNumber() <= last; block = block.next()) {
    const QString text = block.text();
    int blanks = 0;
    while (blanks < kTabCharacters && blanks < text.size() && text[blanks] == ' ') ++blanks;
    const int taken = text.startsWith('\t') ? 1 : blanks;
    QTextCursor line(block);
    line.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, taken);
    line.removeSelectedText();
  }
  cursor.endEditBlock();
}

void SqlEditor::contextMenuEvent(QContextMenuEvent* event) {
  QMenu* menu = createStandardContextMenu(event->pos());
  menu->setAttribute(Qt::WA_DeleteOnClose);
  if (OnContextMenu) OnContextMenu(*menu);
  menu->popup(event->globalPos());
}

bool SqlEditor::canInsertFromMimeData(const QMimeData* source) const {
  return !LocalFiles(*source).isEmpty() || QPlainTextEdit::canInsertFromMimeData(source);
}

void SqlEditor::insertFromMimeData(const QMimeData* source) {
  const QStringList files = LocalFiles(*source);
  if (files.isEmpty()) {
    QPlainTextEdit::insertFromMimeData(source);
  } else if (OnFiles) {
    OnFiles(files);
  }
}

bool SqlEditor::Find(const QString& text, QTextDocument::FindFlags flags) {
  if (find(text, flags)) return true;
  const QTextCursor before = textCursor();
  const bool backward = flags.testFlag(QTextDocument::FindBackward);
  moveCursor(backward ? QTextCursor::End : QTextCursor::Start);
  if (find(text, flags)) return true;
  setTextCursor(before);
  return false;
}

QStringList LocalFiles(const QMimeData& data) {
  QStringList files;
  for (const QUrl& url : data.urls()) {
    if (!url.isLocalFile()) return {};
    files.push_back(url.toLocalFile());
  }
  return files;
}

}  // namespace dbkeeper::qt
