// Select, insert, update, delete.
#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"
#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

// As deep as SQLite takes a chain of unions or joins.
constexpr int kMaximumTerms = 400;

// Hints change nothing here: locks are those of SQLite.
constexpr std::string_view kHints =
    " NOLOCK HOLDLOCK UPDLOCK TABLOCK TABLOCKX PAGLOCK ROWLOCK READPAST XLOCK READCOMMITTED "
    "READUNCOMMITTED REPEATABLEREAD SERIALIZABLE INDEX FASTFIRSTROW ";

bool IsHint(const Token& token) {
  return token.kind == TokenKind::kWord && HasWord(kHints, token.text);
}

}  // namespace

// ---- select ------------------------------------------------------------------------------------

QueryPtr Parser::ParseQuery() {
  const Depth depth(*this);
  auto query = std::make_unique<Query>();
  query->line = Current().line;
  const auto parse_term = [&] {
    if (IsSymbol("(")) {
      query->terms.emplace_back(ParseEnclosedQuery());
    } else {
      query->terms.emplace_back(ParseSelectCore());
    }
  };
  parse_term();
  while (AcceptKeyword("UNION")) {
    query->operators.push_back(AcceptKeyword("ALL") ? SetOperator::kUnionAll : SetOperator::kUnion);
    if (++chain_ > kMaximumTerms) throw MakeError(191, {}, Current().line);
    parse_term();
  }
  query->order_by = ParseOrderBy();
  ParseQueryTail();
  return query;
}

QueryPtr Parser::ParseEnclosedQuery() {
  return Enclosed([&] { return ParseQuery(); });
}

SelectCore Parser::ParseSelectCore() {
  SelectCore core;
  core.line = Current().line;
  ExpectKeyword("SELECT");
  core.distinct = AcceptKeyword("DISTINCT");
  if (!core.distinct) AcceptKeyword("ALL");
  if (AcceptKeyword("TOP")) core.top = ParseTop();
  core.items = ListOf(&Parser::ParseSelectItem);
  if (AcceptKeyword("INTO")) core.into = ExpectObjectName();
  core.from = ParseFrom();
  core.where = ParseWhere();
  if (AcceptKeyword("GROUP")) {
    ExpectKeyword("BY");
    if (IsKeyword("ALL")) Refuse("GROUP BY ALL");
    core.group_by = ListOf(&Parser::ParseValue);
    if (IsKeyword("WITH") && (IsKeywordAt(1, "ROLLUP") || IsKeywordAt(1, "CUBE"))) {
      Refuse("WITH ROLLUP and WITH CUBE");
    }
  }
  if (AcceptKeyword("HAVING")) core.having = ParseCondition();
  return core;
}

ExpressionPtr Parser::ParseTop() {
  const bool parenthesised = AcceptSymbol("(");
  const TokenKind kind = Current().kind;
  if (kind != TokenKind::kInteger && kind != TokenKind::kDecimal && kind != TokenKind::kVariable) {
    Fail();
  }
  ExpressionPtr count = ParsePrimary();
  if (parenthesised) ExpectSymbol(")");
  if (IsKeyword("PERCENT")) {
    if (count->text != "100") Refuse("TOP n PERCENT");
    Advance();
    // SQLite's way to say all rows.
    count->text = "-1";
  }
  if (IsKeyword("WITH") && IsKeywordAt(1, "TIES")) Refuse("TOP n WITH TIES");
  return count;
}

SelectItem Parser::ParseSelectItem() {
  if (IsSymbol("*")) return {TakeToken(ExpressionKind::kStar), ""};
  if (Current().kind == TokenKind::kVariable && IsSymbolAt(1, "=")) Refuse("variables");
  if ((IsName() || Current().kind == TokenKind::kString) && IsSymbolAt(1, "=")) {
    SelectItem item{nullptr, TakeText()};
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
      ExpressionPtr star = Make(ExpressionKind::kStar);
      while (!AcceptSymbol("*")) {
        if (!AcceptSymbol(".")) star->name.push_back(ExpectName());
      }
      return {std::move(star), ""};
    }
  }
  SelectItem item{ParseValue(), ""};
  item.alias = ParseColumnAlias();
  return item;
}

std::string Parser::ParseColumnAlias() {
  const bool said = AcceptKeyword("AS");
  if (IsString()) return TakeText();
  return said || IsName() ? ExpectName() : "";
}

std::vector<OrderItem> Parser::ParseOrderBy() {
  if (!AcceptKeyword("ORDER")) return {};
  ExpectKeyword("BY");
  return ListOf([&] {
    OrderItem item{ParseValue()};
    item.descending = AcceptDescending();
    return item;
  });
}

bool Parser::AcceptDescending() { return AcceptAny({"DESC", "ASC"}) == "DESC"; }

void Parser::ParseQueryTail() {
  if (IsKeyword("COMPUTE")) Refuse("COMPUTE");
  if (IsKeyword("FOR")) {
    if (!IsKeywordAt(1, "BROWSE") && !IsKeywordAt(1, "READ")) Refuse("FOR XML");
    Advance();
    if (!AcceptKeyword("BROWSE")) {
      Advance();
      ExpectKeyword("ONLY");
    }
  }
  if (!IsKeyword("OPTION") || !IsSymbolAt(1, "(")) return;
  Advance();
  SkipOptions();
}

// ---- from --------------------------------------------------------------------------------------

std::vector<TableSourcePtr> Parser::ParseFrom() {
  if (!AcceptKeyword("FROM")) return {};
  return ListOf(&Parser::ParseTableSource);
}

std::optional<JoinKind> Parser::AcceptJoin() {
  constexpr std::string_view kWords[] = {"INNER", "LEFT", "RIGHT", "FULL", "CROSS"};
  if (AcceptKeyword("JOIN")) return JoinKind::kInner;
  for (std::size_t i = 0; i < std::size(kWords); ++i) {
    if (!AcceptKeyword(kWords[i])) continue;
    AcceptKeyword("OUTER");
    // inner hash join: the way to join is SQLite's to choose.
    AcceptAny({"LOOP", "HASH", "MERGE"});
    ExpectKeyword("JOIN");
    return static_cast<JoinKind>(i);
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
  if (++chain_ > kMaximumTerms) throw MakeError(191, {}, Current().line);
  auto joined = std::make_unique<TableSource>();
  joined->kind = TableSource::Kind::kJoined;
  joined->line = left->line;
  joined->join = kind;
  joined->left = std::move(left);
  joined->right = ParseTablePrimary();
  if (kind == JoinKind::kCross) return joined;
  while (!AcceptKeyword("ON")) {
    const auto inner = AcceptJoin();
    if (!inner) Fail();
    joined->right = ParseJoin(std::move(joined->right), *inner);
  }
  joined->condition = ParseCondition();
  return joined;
}

TableSourcePtr Parser::ParseTablePrimary() {
  auto source = std::make_unique<TableSource>();
  source->line = Current().line;
  RefuseAny(
      {"OPENROWSET", "OPENQUERY", "OPENDATASOURCE", "OPENXML", "CONTAINSTABLE", "FREETEXTTABLE"});
  if (AcceptSymbol("{")) {
    ExpectKeyword("OJ");
    source = ParseTableSource();
    ExpectSymbol("}");
    return source;
  }
  if (IsSymbol("(")) {
    if (!IsKeywordAt(1, "SELECT") && !(IsSymbolAt(1, "(") && IsKeywordAt(2, "SELECT"))) {
      return Enclosed([&] { return ParseTableSource(); });
    }
    source->kind = TableSource::Kind::kDerived;
    source->query = ParseEnclosedQuery();
    ParseTableAlias(*source);
    if (source->alias.empty()) Fail();
    if (IsSymbol("(")) source->column_names = EnclosedListOf(&Parser::ExpectName);
    return source;
  }
  AcceptSymbol("::");
  source->name = ExpectObjectName();
  if (IsSymbol("(") && !IsHint(Ahead())) {
    source->kind = TableSource::Kind::kFunction;
    Advance();
    while (!AcceptSymbol(")")) {
      if (!source->arguments.empty()) ExpectSymbol(",");
      source->arguments.push_back(ParseValueOrDefault());
    }
  }
  ParseTableHints();
  ParseTableAlias(*source);
  ParseTableHints();
  return source;
}

void Parser::ParseTableAlias(TableSource& source) {
  if (AcceptKeyword("AS") || IsName()) source.alias = ExpectName();
}

void Parser::ParseTableHints() {
  const std::size_t open = IsKeyword("WITH") ? 1 : 0;
  if (!IsSymbolAt(open, "(") || !IsHint(Ahead(open + 1))) return;
  position_ += open + 1;
  for (int depth = 1; depth > 0; Advance()) {
    if (Current().kind == TokenKind::kEnd) Fail();
    if (IsSymbol("(")) ++depth;
    if (IsSymbol(")")) --depth;
  }
}

ExpressionPtr Parser::ParseWhere() {
  if (!AcceptKeyword("WHERE")) return nullptr;
  if (IsKeyword("CURRENT") && IsKeywordAt(1, "OF")) Refuse("WHERE CURRENT OF");
  return ParseCondition();
}

// ---- changes of rows ---------------------------------------------------------------------------

ExpressionPtr Parser::ParseValueOrDefault() {
  return IsKeyword("DEFAULT") ? TakeToken(ExpressionKind::kDefault) : ParseValue();
}

Parser::Node Parser::ParseInsert() {
  if (AcceptKeyword("BULK")) return ParseInsertBulk();
  InsertStatement insert;
  AcceptKeyword("INTO");
  insert.table = ExpectObjectName();
  ParseTableHints();
  if (IsSymbol("(") && !IsKeywordAt(1, "SELECT")) {
    insert.columns = EnclosedListOf(&Parser::ExpectName);
  }
  if (AcceptKeyword("DEFAULT")) {
    ExpectKeyword("VALUES");
    insert.default_values = true;
  } else if (AcceptKeyword("VALUES")) {
    insert.values = EnclosedListOf(&Parser::ParseValueOrDefault);
  } else {
    if (IsKeyword("EXEC") || IsKeyword("EXECUTE")) Refuse("INSERT with EXECUTE");
    if (!IsKeyword("SELECT") && !IsSymbol("(")) Fail();
    insert.query = ParseQuery();
  }
  return insert;
}

Parser::Node Parser::ParseInsertBulk() {
  InsertBulkStatement bulk;
  bulk.table = ExpectObjectName();
  if (IsSymbol("(")) bulk.columns = EnclosedListOf(&Parser::ParseColumnDefinition);
  if (AcceptKeyword("WITH")) SkipOptions();
  return bulk;
}

Parser::Node Parser::ParseUpdate() {
  UpdateStatement update;
  if (IsKeyword("STATISTICS")) Refuse("UPDATE STATISTICS");
  update.table = ExpectObjectName();
  ParseTableHints();
  ExpectKeyword("SET");
  update.assignments = ListOf([&] {
    if (Current().kind == TokenKind::kVariable) Refuse("variables");
    Assignment assignment{ParseDottedName(), nullptr};
    ExpectSymbol("=");
    assignment.value = ParseValueOrDefault();
    return assignment;
  });
  update.from = ParseFrom();
  update.where = ParseWhere();
  ParseQueryTail();
  return update;
}

Parser::Node Parser::ParseDelete() {
  DeleteStatement statement;
  AcceptKeyword("FROM");
  statement.table = ExpectObjectName();
  ParseTableHints();
  statement.from = ParseFrom();
  statement.where = ParseWhere();
  ParseQueryTail();
  return statement;
}

}  // namespace dbkeeper::server
