// Literals, names, subqueries and predicates.
#include <algorithm>
#include <utility>

#include "server/sql/binder.h"
#include "server/types/conversion.h"
#include "server/types/decimal.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using enum ExpressionKind;

// The type of a literal of that length: a large one when it is too long for the other.
SqlType SizedType(TypeId id, TypeId large, int length) {
  const int most = LongestOf(id);
  if (length > most) return SqlType{large, 2147483647 / (IsNationalText(id) ? 2 : 1), 0, 0, false};
  return SqlType{id, std::max(length, 1), 0, 0, false};
}

// Whether "a.b.c.column" may mean a column of `table`.
bool Matches(const ScopeTable& table, std::span<const std::string> qualifier) {
  if (qualifier.empty()) return true;
  if (!SameName(qualifier.back(), table.name)) return false;
  const std::string* wanted[] = {&table.full_name.owner, &table.full_name.database};
  for (std::size_t i = 1; i < qualifier.size() && i <= 2; ++i) {
    const std::string& part = qualifier[qualifier.size() - 1 - i];
    if (!part.empty() && !wanted[i - 1]->empty() && !SameName(part, *wanted[i - 1])) return false;
  }
  return true;
}

Bound BindLiteral(const Expression& literal) {
  const std::string& text = literal.text;
  switch (literal.literal) {
    case TokenKind::kInteger:
    case TokenKind::kDecimal: {
      const std::optional<Decimal> value = ParseDecimal(text);
      if (!value) throw MakeError(1007, {text}, literal.line);
      const int precision = PrecisionOf(*value);
      if (literal.literal == TokenKind::kInteger && FitsInteger(*value, TypeId::kInt)) {
        return {FormatDecimal(*value), {TypeId::kInt, 4, precision, 0, false}, false, true};
      }
      return {QuoteText(FormatDecimal(*value)),
              {TypeId::kNumeric, 0, precision, value->scale, false}};
    }
    case TokenKind::kFloat: {
      std::string sql = FloatLiteral(text);
      if (sql.empty()) throw MakeError(8115, {"numeric", "float"}, literal.line);
      return {std::move(sql), {TypeId::kFloat, 8, 53, 0, false}};
    }
    case TokenKind::kMoney: {
      const std::optional<Decimal> value = ParseDecimal(text.empty() ? "0" : text);
      if (!value) throw MakeError(8115, {"numeric", "money"}, literal.line);
      return {QuoteText(FormatDecimal(Rescale(*value, 4).value_or(Decimal{}))),
              {TypeId::kMoney, 8, 19, 4, false}};
    }
    case TokenKind::kString:
      return {QuoteText(text), SizedType(TypeId::kVarChar, TypeId::kText, CodePageLength(text))};
    case TokenKind::kNationalString:
      return {QuoteText(text), SizedType(TypeId::kNVarChar, TypeId::kNText, Utf16Length(text))};
    case TokenKind::kBinary:
      return {QuoteBytes(text),
              SizedType(TypeId::kVarBinary, TypeId::kImage, static_cast<int>(text.size()))};
    default:
      return kNull;
  }
}

std::string InText(const Expression& node, const Bound& value, const SqlType& common,
                   const std::string& list) {
  return '(' + Collated(ConvertTo(value, common), common.id) +
         (node.negated ? " NOT IN (" : " IN (") + list + "))";
}

}  // namespace

Bound Binder::Bind(const Expression& expression, const Scope& scope) {
  const std::size_t loose = scope.loose_columns.size();
  Bound bound = BindNode(expression, scope);
  // What is grouped by as a whole needs no grouping of its columns.
  for (const std::string& grouped : scope.grouped) {
    if (bound.sql == grouped) scope.loose_columns.resize(loose);
  }
  return bound;
}

Bound Binder::BindNode(const Expression& node, const Scope& scope) {
  switch (node.kind) {
    case kLiteral:
      return BindLiteral(node);
    case kColumn:
      return BindColumn(node, scope);
    case kVariable:
      return BindVariable(node);
    case kUnary:
      return BindUnary(node, scope);
    case kBinary: {
      const auto [left, right] = BindBoth(node, scope);
      return Arithmetic(*node.op, left, right, node.line);
    }
    case kCall:
      return BindCall(node, scope);
    case kCast:
      return BindCast(node, scope);
    case kCase:
      return BindCase(node, scope);
    case kSubquery:
      return BindScalarSubquery(node, scope);
    case kDefault:
      throw MakeError(156, {"default"}, node.line);
    case kStar:
      throw MakeError(170, {"*", std::to_string(node.line)}, node.line);
    default:
      throw MakeError(170, {"=", std::to_string(node.line)}, node.line);
  }
}

// The right operand first: where both are at fault, it is the one that is told.
std::pair<Bound, Bound> Binder::BindBoth(const Expression& node, const Scope& scope) {
  Bound right = Bind(*node.operands[1], scope);
  return {Bind(*node.operands[0], scope), std::move(right)};
}

Bound Binder::BindColumn(const Expression& reference, const Scope& scope) {
  const std::string& name = reference.name.back();
  const std::span qualifier(reference.name.data(), reference.name.size() - 1);
  bool prefix_known = qualifier.empty();
  for (const Scope* level = &scope; level != nullptr; level = level->outer) {
    const ScopeColumn* found = nullptr;
    for (const ScopeTable& table : level->tables) {
      if (!Matches(table, qualifier)) continue;
      prefix_known = true;
      for (const ScopeColumn& column : table.columns) {
        if (!SameName(column.name, name)) continue;
        if (found != nullptr) throw MakeError(209, {name}, reference.line);
        found = &column;
        table.read = true;
      }
    }
    if (found != nullptr) {
      level->loose_columns.push_back(Joined(reference.name, "."));
      return Bound{found->sql, found->type, false, false, found};
    }
  }
  if (!prefix_known) throw MakeError(107, {Joined(qualifier, ".")}, reference.line);
  throw MakeError(207, {name}, reference.line);
}

Bound Binder::BindVariable(const Expression& variable) {
  for (std::size_t i = 0; i < parameters_.size(); ++i) {
    if (!SameName(parameters_[i].name, variable.text)) continue;
    return Bound{"?" + std::to_string(i + 1), parameters_[i].type};
  }
  // A global variable is a function without arguments.
  if (variable.text.starts_with("@@")) return BindCall(variable, Scope{});
  throw MakeError(137, {variable.text}, variable.line);
}

Bound Binder::BindUnary(const Expression& unary, const Scope& scope) {
  Bound operand = Bind(*unary.operands[0], scope);
  operand.column = nullptr;
  if (unary.text == "+") return operand;
  if (unary.text == "-") return Negate(operand, unary.line);
  const TypeId id = operand.type.id;
  if (FamilyOf(id) != TypeFamily::kInteger) {
    throw MakeError(8117, {NameOf(id), "'~'"}, unary.line);
  }
  const std::string_view before = id == TypeId::kBit       ? "(1 - "
                                  : id == TypeId::kTinyInt ? "(255 - "
                                                           : "(~";
  operand.sql = std::string(before) + operand.sql + ')';
  operand.is_integer = false;
  return operand;
}

Bound Binder::BindCase(const Expression& node, const Scope& scope) {
  const std::vector<ExpressionPtr>& operands = node.operands;
  std::vector<std::pair<std::string, Bound>> branches;
  std::optional<Bound> operand;
  if (operands[0] != nullptr) operand = Bind(*operands[0], scope);
  for (std::size_t i = 1; i + 1 < operands.size(); i += 2) {
    const Expression& when = *operands[i];
    std::string condition = operand
                                ? Compare(OperatorOf("="), *operand, Bind(when, scope), when.line)
                                : BindCondition(when, scope);
    branches.emplace_back(std::move(condition), Bind(*operands[i + 1], scope));
  }
  const Bound otherwise = operands.back() == nullptr ? kNull : Bind(*operands.back(), scope);

  Bound result = kNull;
  for (const auto& [condition, value] : branches) Widen(result, value);
  Widen(result, otherwise);
  if (result.is_null) result.type = SqlType{};
  result.is_null = false;
  if (operands.back() == nullptr) result.type.nullable = true;
  result.sql = "CASE";
  for (const auto& [condition, value] : branches) {
    result.sql += " WHEN " + condition + " THEN " + ConvertTo(value, result.type);
  }
  result.sql += " ELSE " + ConvertTo(otherwise, result.type) + " END";
  return result;
}

BoundQuery Binder::BindSubqueryColumn(const Expression& node, const Scope& scope) {
  if (scope.in_aggregate) throw MakeError(130, {}, node.line);
  BoundQuery bound = BindQuery(*node.query, &scope, QueryPlace::kSubquery);
  if (bound.items.size() != 1) throw MakeError(116, {}, node.line);
  return bound;
}

Bound Binder::BindScalarSubquery(const Expression& node, const Scope& scope) {
  const BoundQuery bound = BindSubqueryColumn(node, scope);
  Bound result = bound.items[0].value;
  result.column = nullptr;
  result.is_integer = false;
  result.type.nullable = true;
  if (bound.single_row) {
    result.sql = '(' + TextOf(bound, ColumnNames::kNone) + ')';
  } else {
    // ms_single raises 512 at the second row, where SQLite would take the first.
    result.sql = "(SELECT ms_single(c1) FROM (" + TextOf(bound, ColumnNames::kNumbered) + "))";
  }
  return result;
}

// ---- predicates --------------------------------------------------------------------------------

std::string Binder::BindCondition(const Expression& node, const Scope& scope) {
  const std::vector<ExpressionPtr>& operands = node.operands;
  switch (node.kind) {
    case kLogical:
      return '(' + BindCondition(*operands[0], scope) + ' ' + std::string(node.op->sqlite) + ' ' +
             BindCondition(*operands[1], scope) + ')';
    case kComparison: {
      const auto [left, right] = BindBoth(node, scope);
      return Compare(*node.op, left, right, node.line);
    }
    case kNot:
      return "(NOT " + BindCondition(*operands[0], scope) + ')';
    case kIsNull:
      return '(' + Bind(*operands[0], scope).sql + (node.negated ? " IS NOT NULL)" : " IS NULL)");
    case kBetween:
      return BindBetween(node, scope);
    case kIn:
      return node.query == nullptr ? BindInList(node, scope) : BindInQuery(node, scope);
    case kExists:
      return "EXISTS (" +
             TextOf(BindQuery(*node.query, &scope, QueryPlace::kExists), ColumnNames::kNone) + ')';
    case kQuantified:
      return BindQuantified(node, scope);
    case kLike:
      return BindLike(node, scope);
    default:
      throw MakeError(170, {")", std::to_string(node.line)}, node.line);
  }
}

std::string Binder::BindBetween(const Expression& node, const Scope& scope) {
  const Bound value = Bind(*node.operands[0], scope);
  const auto compared = [&](std::string_view op, std::size_t bound) {
    return Compare(OperatorOf(op), value, Bind(*node.operands[bound], scope), node.line);
  };
  const std::string low = compared(">=", 1);
  return (node.negated ? "(NOT (" : "((") + low + " AND " + compared("<=", 2) + "))";
}

std::string Binder::BindInList(const Expression& node, const Scope& scope) {
  const Bound value = Bind(*node.operands[0], scope);
  std::vector<Bound> list;
  SqlType common = value.type;
  for (std::size_t i = 1; i < node.operands.size(); ++i) {
    list.push_back(Bind(*node.operands[i], scope));
    if (!list.back().is_null) common = CommonType(common, list.back().type);
  }
  std::string text;
  for (const Bound& item : list) AppendItem(text, ConvertTo(item, common));
  return InText(node, value, common, text);
}

std::string Binder::BindInQuery(const Expression& node, const Scope& scope) {
  const Bound value = Bind(*node.operands[0], scope);
  const BoundQuery query = BindSubqueryColumn(node, scope);
  const Bound& column = query.items[0].value;
  const SqlType common = column.is_null ? value.type : CommonType(value.type, column.type);
  const std::vector<SqlType> types = {common};
  return InText(node, value, common, TextOf(query, ColumnNames::kNone, &types));
}

std::string Binder::BindLike(const Expression& like, const Scope& scope) {
  const auto text_of = [](const Bound& value) {
    const bool text = value.is_null || FamilyOf(value.type.id) == TypeFamily::kText;
    return text ? value.sql : ConvertTo(value, NVarChar(4000));
  };
  const auto [value, pattern] = BindBoth(like, scope);
  // Blanks at the end count where one of the two is a national text.
  const bool national = IsNationalText(value.type.id) || IsNationalText(pattern.type.id);
  std::string call =
      (national ? "ms_like_national(" : "ms_like(") + text_of(value) + ", " + text_of(pattern);
  if (like.operands.size() > 2) call += ", " + text_of(Bind(*like.operands[2], scope));
  call += ')';
  return like.negated ? "(NOT " + call + ')' : call;
}

// any: some row compares true; all: no row compares false or unknown.
std::string Binder::BindQuantified(const Expression& node, const Scope& scope) {
  const Bound value = Bind(*node.operands[0], scope);
  const BoundQuery query = BindSubqueryColumn(node, scope);
  Bound column = query.items[0].value;
  column.sql = "c1";
  column.is_integer = false;
  const std::string comparison = Compare(*node.op, value, column, node.line);
  const std::string from = "SELECT 1 FROM (" + TextOf(query, ColumnNames::kNumbered) + ") WHERE ";
  if (!node.all) return "EXISTS (" + from + comparison + ')';
  return "(NOT EXISTS (" + from + "ifnull(NOT " + comparison + ", 1)))";
}

}  // namespace dbkeeper::server
