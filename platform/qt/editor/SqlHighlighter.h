// Colours for Transact-SQL: keywords, texts, comments, numbers, quoted names.
#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

namespace dbkeeper::qt {

class SqlHighlighter : public QSyntaxHighlighter {
 public:
  // `dark` where the letters stand on a dark background.
  SqlHighlighter(QTextDocument* document, bool dark);

  void SetColors(bool dark);

 protected:
  void highlightBlock(const QString& text) override;

 private:
  // Each colours from `at` on and gives the place behind.
  qsizetype Comment(const QString& text, qsizetype at, int depth);
  qsizetype Quoted(const QString& text, qsizetype at, qsizetype from);
  qsizetype Word(const QString& text, qsizetype at);
  qsizetype Number(const QString& text, qsizetype at);

  QTextCharFormat keyword_, text_, comment_, number_, name_;
};

}  // namespace dbkeeper::qt
