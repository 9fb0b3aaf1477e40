#include "platform/qt/editor/SqlHighlighter.h"

#include <QSet>

namespace dbkeeper::qt {

namespace {

// How a line ends: plainly, inside a text, or inside comments nested so deep.
constexpr int kPlain = 0;
constexpr int kInText = 1;
constexpr int kInComment = 2;  // and one more for each further comment inside

const QSet<QString>& Keywords() {
  static const QSet<QString> words = [] {
    const QString list =
        "add all alter and any as asc authorization backup begin between break browse bulk by "
        "cascade case check checkpoint close clustered coalesce collate column commit compute "
        "constraint contains continue convert create cross current cursor database dbcc deallocate "
        "declare default delete deny desc distinct distributed drop dump else end errlvl escape "
        "except exec execute exists exit fetch file fillfactor for foreign from full function go "
        "goto grant group having holdlock identity identity_insert if in index inner insert into "
        "is join key kill left like load national nocheck nonclustered not null nullif of off on "
        "open option or order outer output over percent plan precision primary print proc "
        "procedure public raiserror read reconfigure references replication restore restrict "
        "return revoke right rollback rowcount rule save schema select set setuser shutdown some "
        "statistics table textsize then to top tran transaction trigger truncate union unique "
        "update updatetext use user values varying view waitfor when where while with writetext "
        "bigint binary bit char datetime decimal float image int money nchar ntext numeric "
        "nvarchar real smalldatetime smallint smallmoney sql_variant sysname text timestamp "
        "tinyint uniqueidentifier varbinary varchar";
    const QStringList words_of_list = list.split(' ');
    return QSet<QString>(words_of_list.begin(), words_of_list.end());
  }();
  return words;
}

QTextCharFormat Coloured(const QColor& color) {
  QTextCharFormat format;
  format.setForeground(color);
  return format;
}

bool StartsWord(QChar c) { return c.isLetter() || c == '_' || c == '@' || c == '#'; }
bool InWord(QChar c) {
  return c.isLetterOrNumber() || c == '_' || c == '@' || c == '#' || c == '$';
}

}  // namespace

SqlHighlighter::SqlHighlighter(QTextDocument* document, bool dark) : QSyntaxHighlighter(document) {
  SetColors(dark);
}

void SqlHighlighter::SetColors(bool dark) {
  keyword_ = Coloured(dark ? QColor(0x7a, 0xb0, 0xf5) : QColor(0x00, 0x33, 0xb3));
  text_ = Coloured(dark ? QColor(0xf0, 0x8f, 0x86) : QColor(0xb0, 0x20, 0x20));
  comment_ = Coloured(dark ? QColor(0x7f, 0xc4, 0x86) : QColor(0x2e, 0x7d, 0x32));
  number_ = Coloured(dark ? QColor(0xe0, 0xb0, 0x70) : QColor(0x80, 0x40, 0x00));
  name_ = Coloured(dark ? QColor(0xb0, 0xb8, 0xc2) : QColor(0x55, 0x55, 0x55));
  rehighlight();
}

void SqlHighlighter::highlightBlock(const QString& text) {
  setCurrentBlockState(kPlain);
  qsizetype at = 0;
  const int before = previousBlockState();
  if (before == kInText) at = Quoted(text, 0, 0);
  if (before >= kInComment) at = Comment(text, 0, before - kInComment + 1);
  while (at < text.size()) {
    const QChar c = text[at];
    const QStringView two = QStringView(text).mid(at, 2);
    if (two == u"--") {
      setFormat(static_cast<int>(at), static_cast<int>(text.size() - at), comment_);
      return;
    }
    if (two == u"/*") {
      at = Comment(text, at, 0);
    } else if (c == '\'' || c == '"' || c == '[') {
      at = Quoted(text, at, at + 1);
    } else if (StartsWord(c)) {
      at = Word(text, at);
    } else if (c.isDigit()) {
      at = Number(text, at);
    } else {
      ++at;
    }
  }
}

qsizetype SqlHighlighter::Comment(const QString& text, qsizetype at, int depth) {
  const qsizetype start = at;
  while (at < text.size()) {
    const QStringView two = QStringView(text).mid(at, 2);
    if (two == u"/*") {
      ++depth;
      at += 2;
    } else if (two == u"*/") {
      at += 2;
      if (--depth == 0) break;
    } else {
      ++at;
    }
  }
  if (depth > 0) setCurrentBlockState(kInComment + depth - 1);
  setFormat(static_cast<int>(start), static_cast<int>(at - start), comment_);
  return at;
}

// A doubled quote begins another text right behind the first, which is coloured the same.
qsizetype SqlHighlighter::Quoted(const QString& text, qsizetype at, qsizetype from) {
  const QChar open = from > at ? text[at] : QChar('\'');
  const qsizetype end = text.indexOf(open == '[' ? QChar(']') : open, from);
  const qsizetype behind = end < 0 ? text.size() : end + 1;
  if (end < 0 && open == '\'') setCurrentBlockState(kInText);
  setFormat(static_cast<int>(at), static_cast<int>(behind - at), open == '\'' ? text_ : name_);
  return behind;
}

qsizetype SqlHighlighter::Word(const QString& text, qsizetype at) {
  qsizetype end = at;
  while (end < text.size() && InWord(text[end])) ++end;
  if (Keywords().contains(text.mid(at, end - at).toLower())) {
    setFormat(static_cast<int>(at), static_cast<int>(end - at), keyword_);
  }
  return end;
}

qsizetype SqlHighlighter::Number(const QString& text, qsizetype at) {
  qsizetype end = at;
  while (end < text.size() && (text[end].isLetterOrNumber() || text[end] == '.')) ++end;
  setFormat(static_cast<int>(at), static_cast<int>(end - at), number_);
  return end;
}

}  // namespace dbkeeper::qt
