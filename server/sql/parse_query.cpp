// Select, insert, update, delete, truncate.
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

// Hints change nothing here: locks are those of SQLite.
constexpr std::string_view kHints[] = {
    "NOLOCK",          "HOLDLOCK",       "UPDLOCK",      "TABLOCK", "TABLOCKX",
    "PAGLOCK",         "ROWLOCK",        "READPAST",     "XLOCK",   "READCOMMITTED",
    "READUNCOMMITTED", "REPEATABLEREAD", "SERIALIZABLE", "INDEX",   "FASTFIRSTROW"};

bool IsHint(std::string_view word) {
  for (const std::string_view hint : kHints) {
    if (EqualsKeyword(word, hint)) return true;
  }
  return false;
}

}  // namespace

// ---- select ------------------------------------------------------------------------------------

QueryPtr Parser::ParseQuery() {
  const Depth depth(*this);
  auto query = std::make_unique<Query>();
  query->line = Current().line;
  query->terms.push_back(ParseQueryTerm());
  while (AcceptKeyword("UNION")) {
    query->operators.push_back(AcceptKeyword("ALL") ? SetOperator::kUnionAll : SetOperator::kUnion);
    if (++chain_ > 400) throw MakeError(191, {}, Current().line);
    query->terms.push_back(ParseQueryTerm());
  }
  query->order_by = ParseOrderBy();
  ParseQueryTail();
  return query;
}

Query::Term Parser::ParseQueryTerm() {
  if (!AcceptSymbol("(")) return ParseSelectCore();
  QueryPtr inner = ParseQuery();
  ExpectSymbol(")");
  return inner;
}

SelectCore Parser::ParseSelectCore() {
  SelectCore core;
  core.line = Current().line;
  ExpectKeyword("SELECT");
  if (AcceptKeyword("DISTINCT")) {
    core.distinct = true;
  } else {
    AcceptKeyword("ALL");
  }
  if (IsKeyword("TOP")) core.top = ParseTop();
  do {
    core.items.push_back(ParseSelectItem());
  } while (AcceptSymbol(","));
  if (AcceptKeyword("INTO")) core.into = ExpectObjectName();
  if (AcceptKeyword("FROM")) core.from = ParseFromList();
  core.where = ParseWhere();
  if (AcceptKeyword("GROUP")) {
    ExpectKeyword("BY");
    if (IsKeyword("ALL")) Refuse("GROUP BY ALL");
    do {
      core.group_by.push_back(ParseValue());
    } while (AcceptSymbol(","));
    if (IsKeyword("WITH") && (IsKeywordAt(1, "ROLLUP") || IsKeywordAt(1, "CUBE"))) {
      Refuse("WITH ROLLUP and WITH CUBE");
    }
  }
  if (AcceptKeyword("HAVING")) core.having = ParseCondition();
  return core;
}

ExpressionPtr Parser::ParseTop() {
  ExpectKeyword("TOP");
  const bool parenthesised = AcceptSymbol("(");
  const TokenKind kind = Current().kind;
  if (kind != TokenKind::kInteger && kind != TokenKind::kDecimal && kind != TokenKind::kVariable) {
    Fail();
  }
  ExpressionPtr count = ParsePrimary();
  if (parenthesised) ExpectSymbol(")");
  if (IsKeyword("PERCENT")) Refuse("TOP n PERCENT");
  if (IsKeyword("WITH") && IsKeywordAt(1, "TIES")) Refuse("TOP n WITH TIES");
  return count;
}

SelectItem Parser::ParseSelectItem() {
  SelectItem item;
  const std::size_t first = position_;
  if (AcceptSymbol("*")) {
    item.value = Make(Star{}, first);
    return item;
  }
  if (Current().kind == TokenKind::kVariable && IsSymbolAt(1, "=")) Refuse("variables");
  const bool names = IsName() || Current().kind == TokenKind::kString;
  if (names && IsSymbolAt(1, "=")) {
    item.alias = Current().text;
    Advance();
    Advance();
    item.value = ParseValue();
    return item;
  }
  if (IsName()) {
    // A name, points and a star: t.*
    std::size_t ahead = 0;
    while (IsSymbolAt(ahead + 1, ".") && !IsSymbolAt(ahead + 2, "*")) {
      ahead += IsSymbolAt(ahead + 2, ".") ? 1 : 2;
    }
    if (IsSymbolAt(ahead + 1, ".") && IsSymbolAt(ahead + 2, "*")) {
      Star star;
      while (!AcceptSymbol("*")) {
        if (!AcceptSymbol(".")) star.qualifier.push_back(ExpectName());
      }
      item.value = Make(std::move(star), first);
      return item;
    }
  }
  item.value = ParseValue();
  item.alias = ParseColumnAlias();
  return item;
}

std::string Parser::ParseColumnAlias() {
  const bool said = AcceptKeyword("AS");
  if (Current().kind == TokenKind::kString || Current().kind == TokenKind::kNationalString) {
    return ExpectString();
  }
  if (!said && !IsName()) return "";
  return ExpectName();
}

std::vector<OrderItem> Parser::ParseOrderBy() {
  std::vector<OrderItem> items;
  if (!IsKeyword("ORDER")) return items;
  Advance();
  ExpectKeyword("BY");
  do {
    OrderItem item;
    item.value = ParseValue();
    item.descending = AcceptKeyword("DESC");
    if (!item.descending) AcceptKeyword("ASC");
    items.push_back(std::move(item));
  } while (AcceptSymbol(","));
  return items;
}

void Parser::ParseQueryTail() {
  if (IsKeyword("COMPUTE")) Refuse("COMPUTE");
  if (IsKeyword("FOR")) {
    if (!IsKeywordAt(1, "BROWSE") && !IsKeywordAt(1, "READ")) Refuse("FOR XML");
    Advance();
    if (AcceptKeyword("READ")) {
      ExpectKeyword("ONLY");
    } else {
      Advance();
    }
  }
  if (!IsKeyword("OPTION") || !IsSymbolAt(1, "(")) return;
  Advance();
  Advance();
  while (!AcceptSymbol(")")) {
    if (Current().kind == TokenKind::kEnd) Fail();
    Advance();
  }
}

// ---- from --------------------------------------------------------------------------------------

std::vector<TableSourcePtr> Parser::ParseFromList() {
  std::vector<TableSourcePtr> sources;
  do {
    sources.push_back(ParseTableSource());
  } while (AcceptSymbol(","));
  return sources;
}

std::optional<JoinKind> Parser::AcceptJoin() {
  struct Row {
    std::string_view word;
    JoinKind kind;
  };
  constexpr Row kRows[] = {{"INNER", JoinKind::kInner},
                           {"LEFT", JoinKind::kLeft},
                           {"RIGHT", JoinKind::kRight},
                           {"FULL", JoinKind::kFull},
                           {"CROSS", JoinKind::kCross}};
  if (AcceptKeyword("JOIN")) return JoinKind::kInner;
  for (const Row& row : kRows) {
    if (!AcceptKeyword(row.word)) continue;
    AcceptKeyword("OUTER");
    // inner hash join: the way to join is SQLite's to choose.
    if (IsKeyword("LOOP") || IsKeyword("HASH") || IsKeyword("MERGE")) Advance();
    ExpectKeyword("JOIN");
    return row.kind;
  }
  return std::nullopt;
}

TableSourcePtr Parser::ParseTableSource() {
  const Depth depth(*this);
  TableSourcePtr source = ParseTablePrimary();
  while (const auto kind = AcceptJoin()) source = ParseJoin(std::move(source), *kind);
  return source;
}

// What stands behind the word join; "a join b join c on .. on .." joins b and c first.
TableSourcePtr Parser::ParseJoin(TableSourcePtr left, JoinKind kind) {
  const Depth depth(*this);
  if (++chain_ > 400) throw MakeError(191, {}, Current().line);
  auto joined = std::make_unique<TableSource>();
  joined->line = left->line;
  TableSourcePtr right = ParseTablePrimary();
  ExpressionPtr condition;
  if (kind != JoinKind::kCross) {
    while (!AcceptKeyword("ON")) {
      const auto inner = AcceptJoin();
      if (!inner) Fail();
      right = ParseJoin(std::move(right), *inner);
    }
    condition = ParseCondition();
  }
  joined->node = JoinedTable{kind, std::move(left), std::move(right), std::move(condition)};
  return joined;
}

TableSourcePtr Parser::ParseTablePrimary() {
  auto source = std::make_unique<TableSource>();
  source->line = Current().line;
  for (const std::string_view word :
       {"OPENROWSET", "OPENQUERY", "OPENDATASOURCE", "OPENXML", "CONTAINSTABLE", "FREETEXTTABLE"}) {
    if (IsKeyword(word)) Refuse(word);
  }
  if (AcceptSymbol("{")) {
    ExpectKeyword("OJ");
    source = ParseTableSource();
    ExpectSymbol("}");
    return source;
  }
  if (AcceptSymbol("(")) {
    if (!IsKeyword("SELECT") && !(IsSymbol("(") && IsKeywordAt(1, "SELECT"))) {
      source = ParseTableSource();
      ExpectSymbol(")");
      return source;
    }
    source->node = DerivedTable{ParseQuery(), {}};
    ExpectSymbol(")");
    ParseTableAlias(*source);
    if (source->alias.empty()) Fail();
    if (IsSymbol("(")) std::get<DerivedTable>(source->node).column_names = ParseNameList();
    return source;
  }
  AcceptSymbol("::");
  ObjectName name = ExpectObjectName();
  const bool hint_only = IsSymbol("(") && Ahead().kind == TokenKind::kWord && IsHint(Ahead().text);
  if (IsSymbol("(") && !hint_only) {
    Advance();
    FunctionTable function{std::move(name), {}};
    while (!AcceptSymbol(")")) {
      if (!function.arguments.empty()) ExpectSymbol(",");
      function.arguments.push_back(ParseValueOrDefault());
    }
    source->node = std::move(function);
  } else {
    source->node = NamedTable{std::move(name)};
  }
  ParseTableHints();
  ParseTableAlias(*source);
  ParseTableHints();
  return source;
}

void Parser::ParseTableAlias(TableSource& source) {
  const bool said = AcceptKeyword("AS");
  if (!said && !IsName()) return;
  source.alias = ExpectName();
}

void Parser::ParseTableHints() {
  const bool with = IsKeyword("WITH") && IsSymbolAt(1, "(");
  const std::size_t open = with ? 1 : 0;
  if (!IsSymbolAt(open, "(") || Ahead(open + 1).kind != TokenKind::kWord ||
      !IsHint(Ahead(open + 1).text)) {
    return;
  }
  if (with) Advance();
  Advance();
  int depth = 1;
  while (depth > 0) {
    if (Current().kind == TokenKind::kEnd) Fail();
    if (IsSymbol("(")) ++depth;
    if (IsSymbol(")")) --depth;
    Advance();
  }
}

ExpressionPtr Parser::ParseWhere() {
  if (!AcceptKeyword("WHERE")) return nullptr;
  if (IsKeyword("CURRENT") && IsKeywordAt(1, "OF")) Refuse("WHERE CURRENT OF");
  return ParseCondition();
}

Parser::Node Parser::ParseSelect() { return SelectStatement{ParseQuery()}; }

// ---- changes of rows ---------------------------------------------------------------------------

ExpressionPtr Parser::ParseValueOrDefault() {
  const std::size_t first = position_;
  if (AcceptKeyword("DEFAULT")) return Make(DefaultValue{}, first);
  return ParseValue();
}

Parser::Node Parser::ParseInsert() {
  if (AcceptKeyword("BULK")) return ParseInsertBulk();
  InsertStatement insert;
  AcceptKeyword("INTO");
  insert.table = ExpectObjectName();
  ParseTableHints();
  if (IsSymbol("(") && !IsKeywordAt(1, "SELECT")) {
    insert.columns = ParseNameList();
  }
  if (AcceptKeyword("DEFAULT")) {
    ExpectKeyword("VALUES");
    insert.default_values = true;
    return insert;
  }
  if (AcceptKeyword("VALUES")) {
    ExpectSymbol("(");
    do {
      insert.values.push_back(ParseValueOrDefault());
    } while (AcceptSymbol(","));
    ExpectSymbol(")");
    return insert;
  }
  if (IsKeyword("EXEC") || IsKeyword("EXECUTE")) Refuse("INSERT with EXECUTE");
  if (!IsKeyword("SELECT") && !IsSymbol("(")) Fail();
  insert.query = ParseQuery();
  return insert;
}

Parser::Node Parser::ParseInsertBulk() {
  InsertBulkStatement bulk;
  bulk.table = ExpectObjectName();
  if (AcceptSymbol("(")) {
    do {
      bulk.columns.push_back(ParseColumnDefinition());
    } while (AcceptSymbol(","));
    ExpectSymbol(")");
  }
  if (!AcceptKeyword("WITH")) return bulk;
  ExpectSymbol("(");
  while (!AcceptSymbol(")")) {
    if (Current().kind == TokenKind::kEnd) Fail();
    Advance();
  }
  return bulk;
}

Parser::Node Parser::ParseUpdate() {
  UpdateStatement update;
  if (IsKeyword("STATISTICS")) Refuse("UPDATE STATISTICS");
  update.table = ExpectObjectName();
  ParseTableHints();
  ExpectKeyword("SET");
  do {
    if (Current().kind == TokenKind::kVariable) Refuse("variables");
    Assignment assignment;
    assignment.column = ParseDottedName();
    ExpectSymbol("=");
    assignment.value = ParseValueOrDefault();
    update.assignments.push_back(std::move(assignment));
  } while (AcceptSymbol(","));
  if (AcceptKeyword("FROM")) update.from = ParseFromList();
  update.where = ParseWhere();
  ParseQueryTail();
  return update;
}

Parser::Node Parser::ParseDelete() {
  DeleteStatement statement;
  AcceptKeyword("FROM");
  statement.table = ExpectObjectName();
  ParseTableHints();
  if (AcceptKeyword("FROM")) statement.from = ParseFromList();
  statement.where = ParseWhere();
  ParseQueryTail();
  return statement;
}

Parser::Node Parser::ParseTruncate() {
  ExpectKeyword("TABLE");
  return TruncateStatement{ExpectObjectName()};
}

}  // namespace dbkeeper::server
