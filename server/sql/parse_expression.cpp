// Expressions: values and predicates in one grammar, told apart where only one may stand.
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

// A chain of operators is a tree as deep as it is long, and SQLite refuses deep trees.
constexpr int kMaximumChain = 900;

struct ComparisonRow {
  std::string_view symbol;
  BinaryOperator op;
};
constexpr ComparisonRow kComparisons[] = {
    {"=", BinaryOperator::kEqual},           {"<>", BinaryOperator::kNotEqual},
    {"!=", BinaryOperator::kNotEqual},       {"<", BinaryOperator::kLess},
    {"<=", BinaryOperator::kLessOrEqual},    {">", BinaryOperator::kGreater},
    {">=", BinaryOperator::kGreaterOrEqual}, {"!<", BinaryOperator::kGreaterOrEqual},
    {"!>", BinaryOperator::kLessOrEqual},
};
constexpr ComparisonRow kAdditives[] = {
    {"+", BinaryOperator::kAdd},   {"-", BinaryOperator::kSubtract}, {"&", BinaryOperator::kBitAnd},
    {"|", BinaryOperator::kBitOr}, {"^", BinaryOperator::kBitXor},
};
constexpr ComparisonRow kMultiplicatives[] = {
    {"*", BinaryOperator::kMultiply},
    {"/", BinaryOperator::kDivide},
    {"%", BinaryOperator::kModulo},
};

// Reserved words that begin a call with parentheses, and those that are a call without.
constexpr std::string_view kCallWords[] = {"LEFT", "RIGHT", "COALESCE", "NULLIF", "USER"};
constexpr std::string_view kNiladicWords[] = {"CURRENT_TIMESTAMP", "CURRENT_USER", "SESSION_USER",
                                              "SYSTEM_USER", "USER"};

template <std::size_t Size>
std::optional<BinaryOperator> Find(const ComparisonRow (&rows)[Size], const Token& token) {
  if (token.kind != TokenKind::kSymbol) return std::nullopt;
  for (const ComparisonRow& row : rows) {
    if (row.symbol == token.text) return row.op;
  }
  return std::nullopt;
}

LiteralKind LiteralKindOf(TokenKind kind) {
  switch (kind) {
    case TokenKind::kInteger:
      return LiteralKind::kInteger;
    case TokenKind::kDecimal:
      return LiteralKind::kDecimal;
    case TokenKind::kFloat:
      return LiteralKind::kFloat;
    case TokenKind::kMoney:
      return LiteralKind::kMoney;
    case TokenKind::kString:
      return LiteralKind::kString;
    case TokenKind::kNationalString:
      return LiteralKind::kNationalString;
    case TokenKind::kBinary:
      return LiteralKind::kBinary;
    default:
      return LiteralKind::kNull;
  }
}

}  // namespace

bool IsPredicate(const Expression& expression) {
  if (const auto* binary = std::get_if<Binary>(&expression.node)) {
    return binary->op >= BinaryOperator::kEqual;
  }
  if (const auto* unary = std::get_if<Unary>(&expression.node)) {
    return unary->op == UnaryOperator::kNot;
  }
  const auto& node = expression.node;
  return std::holds_alternative<InList>(node) || std::holds_alternative<InQuery>(node) ||
         std::holds_alternative<Exists>(node) || std::holds_alternative<Quantified>(node) ||
         std::holds_alternative<Between>(node) || std::holds_alternative<Like>(node) ||
         std::holds_alternative<IsNull>(node);
}

ExpressionPtr Parser::Make(decltype(Expression::node) node, std::size_t first_token) const {
  auto expression = std::make_unique<Expression>();
  expression->node = std::move(node);
  expression->line = tokens_[first_token].line;
  return expression;
}

ExpressionPtr Parser::Join(ExpressionPtr left, BinaryOperator op, ExpressionPtr right) {
  if (++chain_ > kMaximumChain) throw MakeError(191, {}, Current().line);
  const int line = left->line;
  ExpressionPtr joined = Make(Binary{op, std::move(left), std::move(right)}, position_);
  joined->line = line;
  return joined;
}

ExpressionPtr Parser::ParseValue() {
  const Depth depth(*this);
  ExpressionPtr value = ParseAdditive();
  RequireValue(*value);
  return value;
}

ExpressionPtr Parser::ParseCondition() {
  ExpressionPtr condition = ParseAny();
  if (!IsPredicate(*condition)) Fail();
  return condition;
}

void Parser::RequireValue(const Expression& expression) const {
  if (IsPredicate(expression)) Fail();
}

ExpressionPtr Parser::ParseAny() {
  const Depth depth(*this);
  ExpressionPtr left = ParseAnd();
  while (IsKeyword("OR")) {
    if (!IsPredicate(*left)) Fail();
    Advance();
    ExpressionPtr right = ParseAnd();
    if (!IsPredicate(*right)) Fail();
    left = Join(std::move(left), BinaryOperator::kOr, std::move(right));
  }
  return left;
}

ExpressionPtr Parser::ParseAnd() {
  ExpressionPtr left = ParseNot();
  while (IsKeyword("AND")) {
    if (!IsPredicate(*left)) Fail();
    Advance();
    ExpressionPtr right = ParseNot();
    if (!IsPredicate(*right)) Fail();
    left = Join(std::move(left), BinaryOperator::kAnd, std::move(right));
  }
  return left;
}

ExpressionPtr Parser::ParseNot() {
  const std::size_t first = position_;
  if (!AcceptKeyword("NOT")) return ParsePredicate();
  const Depth depth(*this);
  ExpressionPtr operand = ParseNot();
  if (!IsPredicate(*operand)) Fail();
  return Make(Unary{UnaryOperator::kNot, std::move(operand)}, first);
}

ExpressionPtr Parser::ParsePredicate() {
  const std::size_t first = position_;
  if (AcceptKeyword("EXISTS")) {
    ExpectSymbol("(");
    QueryPtr query = ParseQuery();
    ExpectSymbol(")");
    return Make(Exists{std::move(query)}, first);
  }
  for (const std::string_view word : {"CONTAINS", "FREETEXT", "TSEQUAL"}) {
    if (IsKeyword(word)) Refuse(word);
  }
  ExpressionPtr value = ParseAdditive();
  if (IsSymbol("*=")) Refuse("the outer join *=");
  if (const auto op = ComparisonOperator()) {
    RequireValue(*value);
    Advance();
    return ParseComparison(std::move(value), *op);
  }
  return ParseNegatable(std::move(value));
}

std::optional<BinaryOperator> Parser::ComparisonOperator() const {
  return Find(kComparisons, Current());
}

ExpressionPtr Parser::ParseComparison(ExpressionPtr left, BinaryOperator op) {
  const bool all = IsKeyword("ALL");
  if (all || IsKeyword("ANY") || IsKeyword("SOME")) {
    const std::size_t first = position_;
    Advance();
    ExpectSymbol("(");
    QueryPtr query = ParseQuery();
    ExpectSymbol(")");
    return Make(Quantified{std::move(left), op, all, std::move(query)}, first);
  }
  if (IsSymbol("*")) Refuse("the outer join =*");
  return Join(std::move(left), op, ParseValue());
}

ExpressionPtr Parser::ParseNegatable(ExpressionPtr value) {
  const std::size_t first = position_;
  if (AcceptKeyword("IS")) {
    RequireValue(*value);
    const bool negated = AcceptKeyword("NOT");
    ExpectKeyword("NULL");
    return Make(IsNull{std::move(value), negated}, first);
  }
  const bool negated = IsKeyword("NOT") && (IsKeywordAt(1, "IN") || IsKeywordAt(1, "BETWEEN") ||
                                            IsKeywordAt(1, "LIKE"));
  if (!negated && !IsKeyword("IN") && !IsKeyword("BETWEEN") && !IsKeyword("LIKE")) return value;
  RequireValue(*value);
  if (negated) Advance();
  if (AcceptKeyword("IN")) return ParseIn(std::move(value), negated);
  if (AcceptKeyword("BETWEEN")) {
    ExpressionPtr low = ParseValue();
    ExpectKeyword("AND");
    ExpressionPtr high = ParseValue();
    return Make(Between{std::move(value), std::move(low), std::move(high), negated}, first);
  }
  ExpectKeyword("LIKE");
  Like like{std::move(value), ParseValue(), nullptr, negated};
  if (AcceptKeyword("ESCAPE")) {
    like.escape = ParseValue();
  } else if (AcceptSymbol("{")) {
    ExpectKeyword("ESCAPE");
    like.escape = ParseValue();
    ExpectSymbol("}");
  }
  return Make(std::move(like), first);
}

ExpressionPtr Parser::ParseIn(ExpressionPtr value, bool negated) {
  const std::size_t first = position_;
  ExpectSymbol("(");
  if (IsKeyword("SELECT")) {
    QueryPtr query = ParseQuery();
    ExpectSymbol(")");
    return Make(InQuery{std::move(value), std::move(query), negated}, first);
  }
  InList in{std::move(value), {}, negated};
  do {
    in.list.push_back(ParseValue());
  } while (AcceptSymbol(","));
  ExpectSymbol(")");
  return Make(std::move(in), first);
}

ExpressionPtr Parser::ParseAdditive() {
  ExpressionPtr left = ParseMultiplicative();
  while (const auto op = Find(kAdditives, Current())) {
    RequireValue(*left);
    Advance();
    ExpressionPtr right = ParseMultiplicative();
    RequireValue(*right);
    left = Join(std::move(left), *op, std::move(right));
  }
  return left;
}

ExpressionPtr Parser::ParseMultiplicative() {
  ExpressionPtr left = ParseUnary();
  while (const auto op = Find(kMultiplicatives, Current())) {
    RequireValue(*left);
    Advance();
    ExpressionPtr right = ParseUnary();
    RequireValue(*right);
    left = Join(std::move(left), *op, std::move(right));
  }
  return left;
}

ExpressionPtr Parser::ParseUnary() {
  const std::size_t first = position_;
  std::optional<UnaryOperator> op;
  if (IsSymbol("-")) op = UnaryOperator::kMinus;
  if (IsSymbol("+")) op = UnaryOperator::kPlus;
  if (IsSymbol("~")) op = UnaryOperator::kBitNot;
  if (op) {
    const Depth depth(*this);
    Advance();
    ExpressionPtr operand = ParseUnary();
    RequireValue(*operand);
    return Make(Unary{*op, std::move(operand)}, first);
  }
  ExpressionPtr primary = ParsePrimary();
  // Every column has the one collation of this server.
  if (AcceptKeyword("COLLATE")) ExpectWord();
  return primary;
}

ExpressionPtr Parser::ParsePrimary() {
  const std::size_t first = position_;
  const Token& token = Current();
  switch (token.kind) {
    case TokenKind::kInteger:
    case TokenKind::kDecimal:
    case TokenKind::kFloat:
    case TokenKind::kMoney:
    case TokenKind::kString:
    case TokenKind::kNationalString:
    case TokenKind::kBinary: {
      Literal literal{LiteralKindOf(token.kind), token.text};
      Advance();
      return Make(std::move(literal), first);
    }
    case TokenKind::kVariable: {
      Variable variable{token.text};
      Advance();
      return Make(std::move(variable), first);
    }
    case TokenKind::kQuotedName:
      return ParseNameOrCall();
    case TokenKind::kWord:
      return IsReservedWord(token.text) ? ParseKeywordExpression() : ParseNameOrCall();
    case TokenKind::kSymbol:
      if (IsSymbol("(")) return ParseParenthesised();
      if (IsSymbol("{")) return ParseOdbcEscape();
      Fail();
    case TokenKind::kEnd:
      Fail();
  }
  Fail();
}

ExpressionPtr Parser::ParseParenthesised() {
  const std::size_t first = position_;
  const Depth depth(*this);
  ExpectSymbol("(");
  if (IsKeyword("SELECT")) {
    QueryPtr query = ParseQuery();
    ExpectSymbol(")");
    return Make(ScalarSubquery{std::move(query)}, first);
  }
  ExpressionPtr inner = ParseAny();
  ExpectSymbol(")");
  return inner;
}

ExpressionPtr Parser::ParseNameOrCall() {
  const std::size_t first = position_;
  if (IsKeyword("CAST") && IsSymbolAt(1, "(")) return ParseCast();
  std::vector<std::string> parts = ParseDottedName();
  if (IsSymbol("(")) return ParseCall(std::move(parts));
  if (parts.size() > 4) FailAt(tokens_[position_ - 1]);
  return Make(ColumnReference{std::move(parts)}, first);
}

ExpressionPtr Parser::ParseCall(std::vector<std::string> name) {
  const std::size_t first = position_;
  const Depth depth(*this);
  if (name.size() > 1) Refuse("user functions");
  FunctionCall call{std::move(name.back()), {}, false};
  ExpectSymbol("(");
  if (AcceptKeyword("DISTINCT")) {
    call.distinct = true;
  } else {
    AcceptKeyword("ALL");
  }
  if (IsSymbol("*") && IsSymbolAt(1, ")")) {
    const std::size_t star = position_;
    Advance();
    call.arguments.push_back(Make(Star{}, star));
  } else if (!IsSymbol(")")) {
    do {
      call.arguments.push_back(ParseValue());
    } while (AcceptSymbol(","));
  }
  ExpectSymbol(")");
  return Make(std::move(call), first);
}

ExpressionPtr Parser::ParseKeywordExpression() {
  const std::size_t first = position_;
  if (AcceptKeyword("NULL")) return Make(Literal{LiteralKind::kNull, ""}, first);
  if (IsKeyword("CASE")) return ParseCase();
  if (IsKeyword("CONVERT")) return ParseConvert();
  if (IsKeyword("IDENTITYCOL") || IsKeyword("ROWGUIDCOL")) Refuse(Current().text);
  if (IsKeyword("IDENTITY") && IsSymbolAt(1, "(")) Refuse("the function identity()");
  const std::string word = ToLowerAscii(Current().text);
  if (IsSymbolAt(1, "(")) {
    for (const std::string_view candidate : kCallWords) {
      if (!IsKeyword(candidate)) continue;
      Advance();
      return ParseCall({word});
    }
  }
  for (const std::string_view candidate : kNiladicWords) {
    if (!AcceptKeyword(candidate)) continue;
    return Make(FunctionCall{word, {}, false}, first);
  }
  Fail();
}

ExpressionPtr Parser::ParseCase() {
  const std::size_t first = position_;
  const Depth depth(*this);
  ExpectKeyword("CASE");
  Case expression;
  if (!IsKeyword("WHEN")) expression.operand = ParseValue();
  const bool searched = expression.operand == nullptr;
  while (AcceptKeyword("WHEN")) {
    ExpressionPtr condition = searched ? ParseCondition() : ParseValue();
    ExpectKeyword("THEN");
    expression.whens.push_back({std::move(condition), ParseValue()});
  }
  if (expression.whens.empty()) Fail();
  if (AcceptKeyword("ELSE")) expression.otherwise = ParseValue();
  ExpectKeyword("END");
  return Make(std::move(expression), first);
}

ExpressionPtr Parser::ParseCast() {
  const std::size_t first = position_;
  const Depth depth(*this);
  Advance();
  ExpectSymbol("(");
  ExpressionPtr value = ParseValue();
  ExpectKeyword("AS");
  const SqlType type = ParseType(nullptr, true);
  ExpectSymbol(")");
  return Make(Cast{std::move(value), type, nullptr}, first);
}

ExpressionPtr Parser::ParseConvert() {
  const std::size_t first = position_;
  const Depth depth(*this);
  Advance();
  ExpectSymbol("(");
  const SqlType type = ParseType(nullptr, true);
  ExpectSymbol(",");
  Cast cast{ParseValue(), type, nullptr};
  if (AcceptSymbol(",")) cast.style = ParseValue();
  ExpectSymbol(")");
  return Make(std::move(cast), first);
}

// {ts '...'}, {d '...'}, {t '...'} and {fn f(...)}.
ExpressionPtr Parser::ParseOdbcEscape() {
  const std::size_t first = position_;
  const Depth depth(*this);
  ExpectSymbol("{");
  if (AcceptKeyword("FN")) {
    ExpressionPtr call = ParsePrimary();
    ExpectSymbol("}");
    return call;
  }
  if (!AcceptKeyword("TS") && !AcceptKeyword("D") && !AcceptKeyword("T")) Fail();
  const std::size_t literal = position_;
  const std::string text = ExpectString();
  ExpectSymbol("}");
  return Make(Cast{Make(Literal{LiteralKind::kString, text}, literal),
                   SqlType{TypeId::kDateTime, 8, 23, 3, true}, nullptr},
              first);
}

SqlType Parser::ParseType(std::string* written_name, bool for_cast) {
  const Token& token = Current();
  if (token.kind != TokenKind::kWord && token.kind != TokenKind::kQuotedName) Fail();
  std::string name = ToLowerAscii(token.text);
  Advance();
  // A type may be written with its owner: dbo.sysname.
  if (AcceptSymbol(".")) name = ToLowerAscii(ExpectName());
  if (name == "double" && AcceptKeyword("PRECISION")) name += " precision";
  if (name == "national") name += ' ' + ToLowerAscii(ExpectWord());
  if (AcceptKeyword("VARYING")) name += " varying";
  std::vector<int> measures;
  if (AcceptSymbol("(")) {
    do {
      const std::string digits = ExpectInteger();
      if (digits.size() > 6) throw MakeError(1001, {digits, std::to_string(token.line)});
      measures.push_back(std::stoi(digits));
    } while (AcceptSymbol(","));
    ExpectSymbol(")");
  }
  if (written_name != nullptr) *written_name = name;
  std::optional<SqlType> type;
  try {
    type = TypeByName(name, measures);
  } catch (const SqlError& error) {
    ServerMessage message = error.message();
    message.line = token.line;
    throw SqlError(message);
  }
  if (!type) throw MakeError(2715, {"1", name}, token.line);
  const bool sized =
      FamilyOf(type->id) == TypeFamily::kText || FamilyOf(type->id) == TypeFamily::kBinary;
  if (for_cast && measures.empty() && sized && type->length == 1) type->length = 30;
  return *type;
}

}  // namespace dbkeeper::server
