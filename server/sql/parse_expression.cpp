// Expressions: values and predicates in one grammar, told apart where only one may stand.
#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using enum ExpressionKind;

// A chain of operators is a tree as deep as it is long, and SQLite refuses deep trees.
constexpr int kMaximumChain = 900;

constexpr Operator kOperators[] = {
    {"OR", OperatorLevel::kOr, "OR", ""},
    {"AND", OperatorLevel::kAnd, "AND", ""},
    {"=", OperatorLevel::kComparison, "=", "equal to"},
    {"<>", OperatorLevel::kComparison, "<>", "not equal to"},
    {"!=", OperatorLevel::kComparison, "<>", "not equal to"},
    {"<", OperatorLevel::kComparison, "<", "less than"},
    {"<=", OperatorLevel::kComparison, "<=", "less than or equal to"},
    {">", OperatorLevel::kComparison, ">", "greater than"},
    {">=", OperatorLevel::kComparison, ">=", "greater than or equal to"},
    {"!<", OperatorLevel::kComparison, ">=", "greater than or equal to"},
    {"!>", OperatorLevel::kComparison, "<=", "less than or equal to"},
    {"+", OperatorLevel::kAdditive, "+", "add"},
    {"-", OperatorLevel::kAdditive, "-", "subtract"},
    {"&", OperatorLevel::kAdditive, "&", "boolean AND"},
    {"|", OperatorLevel::kAdditive, "|", "boolean OR"},
    {"^", OperatorLevel::kAdditive, "^", "boolean XOR"},
    {"*", OperatorLevel::kMultiplicative, "*", "multiply"},
    {"/", OperatorLevel::kMultiplicative, "/", "divide"},
    {"%", OperatorLevel::kMultiplicative, "%", "modulo"},
};

// Reserved words that begin a call with parentheses, and those that are a call without.
constexpr std::string_view kCallWords = " LEFT RIGHT COALESCE NULLIF USER ";
constexpr std::string_view kNiladicWords =
    " CURRENT_TIMESTAMP CURRENT_USER SESSION_USER SYSTEM_USER USER ";

ExpressionKind KindOf(OperatorLevel level) {
  if (level <= OperatorLevel::kAnd) return kLogical;
  return level == OperatorLevel::kComparison ? kComparison : kBinary;
}

}  // namespace

const Operator& OperatorOf(std::string_view word) {
  return *std::ranges::find(kOperators, word, &Operator::word);
}

ExpressionPtr Parser::Make(ExpressionKind kind) const {
  auto expression = std::make_unique<Expression>();
  expression->kind = kind;
  expression->line = Current().line;
  return expression;
}

ExpressionPtr Parser::TakeToken(ExpressionKind kind) {
  ExpressionPtr leaf = Make(kind);
  leaf->literal = Current().kind;
  leaf->text = Current().text;
  Advance();
  return leaf;
}

ExpressionPtr Parser::Join(ExpressionPtr left, const Operator& op, ExpressionPtr right) {
  if (++chain_ > kMaximumChain) throw MakeError(191, {}, Current().line);
  ExpressionPtr joined = Make(KindOf(op.level));
  joined->line = left->line;
  joined->op = &op;
  joined->operands.push_back(std::move(left));
  joined->operands.push_back(std::move(right));
  return joined;
}

ExpressionPtr Parser::Required(ExpressionPtr expression, Wanted wanted) const {
  if (expression->IsPredicate() != (wanted == Wanted::kPredicate)) Fail();
  return expression;
}

ExpressionPtr Parser::ParseValue() {
  const Depth depth(*this);
  return Required(ParseChain(OperatorLevel::kAdditive), Wanted::kValue);
}

ExpressionPtr Parser::ParseCondition() { return Required(ParseAny(), Wanted::kPredicate); }

ExpressionPtr Parser::ParseAny() {
  const Depth depth(*this);
  return ParseChain(OperatorLevel::kOr);
}

const Operator* Parser::OperatorHere(OperatorLevel level) const {
  const bool word = level <= OperatorLevel::kAnd;
  if (Current().kind != (word ? TokenKind::kWord : TokenKind::kSymbol)) return nullptr;
  for (const Operator& row : kOperators) {
    if (row.level == level && EqualsKeyword(Current().text, row.word)) return &row;
  }
  return nullptr;
}

// Operators of one level between operands of the next.
ExpressionPtr Parser::ParseChain(OperatorLevel level) {
  const Wanted wanted = level <= OperatorLevel::kAnd ? Wanted::kPredicate : Wanted::kValue;
  ExpressionPtr left = ParseOperand(level);
  while (const Operator* op = OperatorHere(level)) {
    left = Required(std::move(left), wanted);
    Advance();
    left = Join(std::move(left), *op, Required(ParseOperand(level), wanted));
  }
  return left;
}

ExpressionPtr Parser::ParseOperand(OperatorLevel level) {
  if (level == OperatorLevel::kOr) return ParseChain(OperatorLevel::kAnd);
  if (level == OperatorLevel::kAnd) return ParseNot();
  return level == OperatorLevel::kAdditive ? ParseChain(OperatorLevel::kMultiplicative)
                                           : ParseUnary();
}

ExpressionPtr Parser::ParseNot() {
  if (!IsKeyword("NOT")) return ParsePredicate();
  ExpressionPtr negation = Make(kNot);
  Advance();
  const Depth depth(*this);
  negation->operands.push_back(Required(ParseNot(), Wanted::kPredicate));
  return negation;
}

ExpressionPtr Parser::ParsePredicate() {
  if (IsKeyword("EXISTS")) {
    ExpressionPtr exists = Make(kExists);
    Advance();
    exists->query = ParseEnclosedQuery();
    return exists;
  }
  RefuseAny({"CONTAINS", "FREETEXT", "TSEQUAL"});
  ExpressionPtr value = ParseChain(OperatorLevel::kAdditive);
  if (IsSymbol("*=")) Refuse("the outer join *=");
  if (const Operator* op = OperatorHere(OperatorLevel::kComparison)) {
    value = Required(std::move(value), Wanted::kValue);
    Advance();
    return ParseComparison(std::move(value), *op);
  }
  return ParseNegatable(std::move(value));
}

ExpressionPtr Parser::ParseComparison(ExpressionPtr left, const Operator& op) {
  if (IsKeyword("ALL") || IsKeyword("ANY") || IsKeyword("SOME")) {
    ExpressionPtr quantified = Make(kQuantified);
    quantified->op = &op;
    quantified->all = IsKeyword("ALL");
    Advance();
    quantified->operands.push_back(std::move(left));
    quantified->query = ParseEnclosedQuery();
    return quantified;
  }
  if (IsSymbol("*")) Refuse("the outer join =*");
  return Join(std::move(left), op, ParseValue());
}

// What may stand behind a value: is null, in, between, like, the last three with a `not` before.
ExpressionPtr Parser::ParseNegatable(ExpressionPtr value) {
  const bool negated = IsKeyword("NOT") && !IsKeywordAt(1, "IS");
  const std::size_t ahead = negated ? 1 : 0;
  const auto is = [&](std::string_view word) { return IsKeywordAt(ahead, word); };
  const ExpressionKind kind = is("IS")        ? kIsNull
                              : is("IN")      ? kIn
                              : is("BETWEEN") ? kBetween
                              : is("LIKE")    ? kLike
                                              : kLiteral;
  if (kind == kLiteral) return value;
  ExpressionPtr predicate = Make(kind);
  predicate->negated = negated;
  std::vector<ExpressionPtr>& operands = predicate->operands;
  // A predicate before `is` is refused at the word behind it.
  if (kind == kIsNull) Advance();
  operands.push_back(Required(std::move(value), Wanted::kValue));
  if (kind != kIsNull) position_ += ahead + 1;
  if (kind == kIsNull) {
    predicate->negated = AcceptKeyword("NOT");
    ExpectKeyword("NULL");
  } else if (kind == kBetween) {
    operands.push_back(ParseValue());
    ExpectKeyword("AND");
    operands.push_back(ParseValue());
  } else if (kind == kLike) {
    operands.push_back(ParseValue());
    const bool braced = AcceptSymbol("{");
    if (braced && !IsKeyword("ESCAPE")) Fail();
    if (AcceptKeyword("ESCAPE")) operands.push_back(ParseValue());
    if (braced) ExpectSymbol("}");
  } else {
    // The errors of what is searched have the line of the list.
    predicate->line = Current().line;
    if (IsSymbol("(") && IsKeywordAt(1, "SELECT")) {
      predicate->query = ParseEnclosedQuery();
    } else {
      Enclosed([&] { List([&] { operands.push_back(ParseValue()); }); });
    }
  }
  return predicate;
}

ExpressionPtr Parser::ParseUnary() {
  if (IsSymbol("-") || IsSymbol("+") || IsSymbol("~")) {
    const Depth depth(*this);
    ExpressionPtr unary = TakeToken(kUnary);
    unary->operands.push_back(Required(ParseUnary(), Wanted::kValue));
    return unary;
  }
  ExpressionPtr primary = ParsePrimary();
  if (AcceptKeyword("COLLATE")) ExpectOwnCollation();
  return primary;
}

ExpressionPtr Parser::ParsePrimary() {
  switch (Current().kind) {
    case TokenKind::kVariable:
      return TakeToken(kVariable);
    case TokenKind::kQuotedName:
      return ParseNameOrCall();
    case TokenKind::kWord:
      return IsName() ? ParseNameOrCall() : ParseKeywordExpression();
    case TokenKind::kSymbol:
      if (IsSymbol("(")) return ParseParenthesised();
      if (IsSymbol("{")) return ParseOdbcEscape();
      Fail();
    case TokenKind::kEnd:
      Fail();
    default:
      return TakeToken(kLiteral);
  }
}

ExpressionPtr Parser::ParseParenthesised() {
  const Depth depth(*this);
  if (!IsKeywordAt(1, "SELECT")) {
    return Enclosed([&] { return ParseAny(); });
  }
  ExpressionPtr subquery = Make(kSubquery);
  subquery->query = ParseEnclosedQuery();
  return subquery;
}

ExpressionPtr Parser::ParseNameOrCall() {
  if (IsKeyword("CAST") && IsSymbolAt(1, "(")) return ParseCast();
  ExpressionPtr column = Make(kColumn);
  column->name = ParseDottedName();
  if (IsSymbol("(")) return ParseCall(std::move(column->name));
  if (column->name.size() > 4) FailAt(tokens_[position_ - 1]);
  return column;
}

ExpressionPtr Parser::ParseCall(std::vector<std::string> name) {
  const Depth depth(*this);
  if (name.size() > 1) Refuse("user functions");
  ExpressionPtr call = Make(kCall);
  call->text = std::move(name[0]);
  Enclosed([&] {
    call->distinct = AcceptKeyword("DISTINCT");
    if (!call->distinct) AcceptKeyword("ALL");
    if (!call->distinct && IsSymbol("*") && IsSymbolAt(1, ")")) {
      call->operands.push_back(TakeToken(kStar));
    } else if (!IsSymbol(")")) {
      call->operands = ListOf(&Parser::ParseValue);
    }
  });
  return call;
}

ExpressionPtr Parser::ParseKeywordExpression() {
  if (IsKeyword("NULL")) return TakeToken(kLiteral);
  if (IsKeyword("CASE")) return ParseCase();
  if (IsKeyword("CONVERT")) return ParseCast();
  if (IsKeyword("IDENTITYCOL") || IsKeyword("ROWGUIDCOL")) Refuse(Current().text);
  if (IsKeyword("IDENTITY") && IsSymbolAt(1, "(")) Refuse("the function identity()");
  const bool with_arguments = IsSymbolAt(1, "(") && HasWord(kCallWords, Current().text);
  if (!with_arguments && !HasWord(kNiladicWords, Current().text)) Fail();
  ExpressionPtr call = TakeToken(kCall);
  call->text = ToLowerAscii(call->text);
  return with_arguments ? ParseCall({std::move(call->text)}) : std::move(call);
}

ExpressionPtr Parser::ParseCase() {
  const Depth depth(*this);
  ExpressionPtr expression = Make(kCase);
  std::vector<ExpressionPtr>& operands = expression->operands;
  ExpectKeyword("CASE");
  const bool searched = IsKeyword("WHEN");
  operands.push_back(searched ? nullptr : ParseValue());
  if (!IsKeyword("WHEN")) Fail();
  while (AcceptKeyword("WHEN")) {
    operands.push_back(searched ? ParseCondition() : ParseValue());
    ExpectKeyword("THEN");
    operands.push_back(ParseValue());
  }
  operands.push_back(AcceptKeyword("ELSE") ? ParseValue() : nullptr);
  ExpectKeyword("END");
  return expression;
}

// cast(value as type), convert(type, value, style).
ExpressionPtr Parser::ParseCast() {
  const Depth depth(*this);
  ExpressionPtr cast = Make(kCast);
  const bool converts = IsKeyword("CONVERT");
  Advance();
  Enclosed([&] {
    if (converts) {
      cast->type = ParseType(nullptr, true);
      ExpectSymbol(",");
      cast->operands.push_back(ParseValue());
      if (AcceptSymbol(",")) cast->operands.push_back(ParseValue());
    } else {
      cast->operands.push_back(ParseValue());
      ExpectKeyword("AS");
      cast->type = ParseType(nullptr, true);
    }
  });
  return cast;
}

// {ts '...'}, {d '...'}, {t '...'} and {fn f(...)}.
ExpressionPtr Parser::ParseOdbcEscape() {
  const Depth depth(*this);
  ExpressionPtr cast = Make(kCast);
  ExpectSymbol("{");
  if (AcceptKeyword("FN")) {
    ExpressionPtr call = ParsePrimary();
    ExpectSymbol("}");
    return call;
  }
  if (!AcceptKeyword("TS") && !AcceptKeyword("D") && !AcceptKeyword("T")) Fail();
  cast->type = kDateTimeType;
  ExpressionPtr literal = Make(kLiteral);
  literal->literal = TokenKind::kString;
  literal->text = ExpectString();
  cast->operands.push_back(std::move(literal));
  ExpectSymbol("}");
  return cast;
}

SqlType Parser::ParseType(std::string* written_name, bool for_cast) {
  const Token& token = Current();
  if (token.kind != TokenKind::kWord && token.kind != TokenKind::kQuotedName) Fail();
  std::string name = ToLowerAscii(TakeText());
  // A type may be written with its owner: dbo.sysname.
  if (AcceptSymbol(".")) name = ToLowerAscii(ExpectName());
  if (name == "double" && AcceptKeyword("PRECISION")) name += " precision";
  if (name == "national") name += ' ' + ToLowerAscii(ExpectWord());
  if (AcceptKeyword("VARYING")) name += " varying";
  std::vector<int> measures;
  const auto measure = [&] {
    const std::string digits = ExpectInteger();
    if (digits.size() > 6) throw MakeError(1001, {digits, std::to_string(token.line)});
    measures.push_back(std::stoi(digits));
  };
  if (IsSymbol("(")) Enclosed([&] { List(measure); });
  if (written_name != nullptr) *written_name = name;
  std::optional<SqlType> type;
  AtLine(token.line, [&] { type = TypeByName(name, measures); });
  if (!type) throw MakeError(2715, {"1", name}, token.line);
  const bool sized =
      FamilyOf(type->id) == TypeFamily::kText || FamilyOf(type->id) == TypeFamily::kBinary;
  if (for_cast && measures.empty() && sized && type->length == 1) type->length = 30;
  return *type;
}

}  // namespace dbkeeper::server
