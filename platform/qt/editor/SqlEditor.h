// The SQL editor's widget: line numbers, the current line, colours, indenting of selected lines.
// Everything that input methods need is left to the toolkit's editor.
#pragma once

#include <QPlainTextEdit>
#include <functional>

namespace dbkeeper::qt {

class SqlHighlighter;

class SqlEditor : public QPlainTextEdit {
 public:
  explicit SqlEditor(QWidget* parent);

  // Takes the local files that are dropped on the editor or pasted into it.
  std::function<void(const QStringList& files)> OnFiles;
  // Adds to the editor's own context menu before it is shown.
  std::function<void(QMenu& menu)> OnContextMenu;

  // Finds the next or previous place of `text` from the cursor, going on at the other end; false
  // when there is none.
  bool Find(const QString& text, QTextDocument::FindFlags flags);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;

 private:
  class LineNumbers;

  int NumbersWidth() const;
  void PlaceNumbers();
  void PaintNumbers(QPaintEvent* event);
  void MarkCurrentLine();
  // Puts a tab before each line of the selection, or takes one indent away.
  void Indent();
  void Unindent();

  QWidget* numbers_;
  SqlHighlighter* highlighter_ = nullptr;
};

// The paths of a drop or paste that is made of local files only; empty otherwise.
QStringList LocalFiles(const QMimeData& data);

}  // namespace dbkeeper::qt
