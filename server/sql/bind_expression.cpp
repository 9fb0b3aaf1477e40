// Literals, names, subqueries and predicates.
#include <algorithm>
#include <utility>

#include "server/sql/binder.h"
#include "server/sql/lexer.h"
#include "server/types/conversion.h"
#include "server/types/decimal.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

// The type of a literal of that length: a large one when it is too long for the other.
SqlType SizedType(TypeId id, TypeId large, int length) {
  const int most = IsNationalText(id) ? 4000 : 8000;
  if (length > most) return SqlType{large, 2147483647 / (IsNationalText(id) ? 2 : 1), 0, 0, false};
  return SqlType{id, std::max(length, 1), 0, 0, false};
}

// Whether "a.b.c.column" may mean a column of `table`.
bool Matches(const ScopeTable& table, const std::vector<std::string>& qualifier) {
  if (qualifier.empty()) return true;
  if (!SameName(qualifier.back(), table.name)) return false;
  const std::string* wanted[] = {&table.full_name.owner, &table.full_name.database};
  for (std::size_t i = 1; i < qualifier.size() && i <= 2; ++i) {
    const std::string& part = qualifier[qualifier.size() - 1 - i];
    if (!part.empty() && !wanted[i - 1]->empty() && !SameName(part, *wanted[i - 1])) return false;
  }
  return true;
}

std::string Joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ".") + part;
  return text;
}

}  // namespace

std::string Binder::Collated(const std::string& sql, TypeId type) {
  const std::string_view collation = CollationOf(type);
  return collation.empty() ? sql : sql + " COLLATE " + std::string(collation);
}

Bound Binder::Bind(const Expression& expression, const Scope& scope) {
  const std::size_t loose = scope.loose_columns.size();
  Bound bound = BindNode(expression, scope);
  // What is grouped by as a whole needs no grouping of its columns.
  for (const std::string& grouped : scope.grouped) {
    if (bound.sql == grouped) scope.loose_columns.resize(loose);
  }
  return bound;
}

Bound Binder::BindNode(const Expression& expression, const Scope& scope) {
  const int line = expression.line;
  if (IsPredicate(expression)) throw MakeError(170, {"=", std::to_string(line)}, line);
  return std::visit(
      Overloaded{[&](const Literal& node) { return BindLiteral(node, line); },
                 [&](const ColumnReference& node) { return BindColumn(node, line, scope); },
                 [&](const Variable& node) { return BindVariable(node, line); },
                 [&](const Unary& node) { return BindUnary(node, line, scope); },
                 [&](const Binary& node) { return BindBinary(node, line, scope); },
                 [&](const FunctionCall& node) { return BindCall(node, line, scope); },
                 [&](const Cast& node) { return BindCast(node, line, scope); },
                 [&](const Case& node) { return BindCase(node, scope); },
                 [&](const ScalarSubquery& node) { return BindScalarSubquery(node, scope, line); },
                 [&](const DefaultValue&) -> Bound { throw MakeError(156, {"default"}, line); },
                 [&](const auto&) -> Bound {
                   throw MakeError(170, {"*", std::to_string(line)}, line);
                 }},
      expression.node);
}

Bound Binder::BindLiteral(const Literal& literal, int line) const {
  Bound bound;
  bound.type.nullable = false;
  switch (literal.kind) {
    case LiteralKind::kNull:
      bound.sql = "NULL";
      bound.is_null = true;
      bound.type.nullable = true;
      return bound;
    case LiteralKind::kInteger:
    case LiteralKind::kDecimal: {
      const std::optional<Decimal> value = ParseDecimal(literal.text);
      if (!value) throw MakeError(1007, {literal.text}, line);
      const int precision = PrecisionOf(*value);
      if (literal.kind == LiteralKind::kInteger && FitsInteger(*value, TypeId::kInt)) {
        bound.type = SqlType{TypeId::kInt, 4, precision, 0, false};
        bound.is_integer = true;
        bound.sql = FormatDecimal(*value);
        return bound;
      }
      bound.type = SqlType{TypeId::kNumeric, 0, precision, value->scale, false};
      bound.sql = QuoteText(FormatDecimal(*value));
      return bound;
    }
    case LiteralKind::kFloat: {
      bound.type = SqlType{TypeId::kFloat, 8, 53, 0, false};
      bound.sql = FloatLiteral(literal.text);
      if (bound.sql.empty()) throw MakeError(8115, {"numeric", "float"}, line);
      return bound;
    }
    case LiteralKind::kMoney: {
      const std::optional<Decimal> value = ParseDecimal(literal.text.empty() ? "0" : literal.text);
      if (!value) throw MakeError(8115, {"numeric", "money"}, line);
      bound.type = SqlType{TypeId::kMoney, 8, 19, 4, false};
      bound.sql = QuoteText(FormatDecimal(Rescale(*value, 4).value_or(Decimal{})));
      return bound;
    }
    case LiteralKind::kString:
      bound.type = SizedType(TypeId::kVarChar, TypeId::kText, CodePageLength(literal.text));
      bound.sql = QuoteText(literal.text);
      return bound;
    case LiteralKind::kNationalString:
      bound.type = SizedType(TypeId::kNVarChar, TypeId::kNText, Utf16Length(literal.text));
      bound.sql = QuoteText(literal.text);
      return bound;
    case LiteralKind::kBinary:
      bound.type =
          SizedType(TypeId::kVarBinary, TypeId::kImage, static_cast<int>(literal.text.size()));
      bound.sql = QuoteBytes(literal.text);
      return bound;
  }
  return bound;
}

Bound Binder::BindColumn(const ColumnReference& reference, int line, const Scope& scope) {
  const std::string& name = reference.parts.back();
  const std::vector<std::string> qualifier(reference.parts.begin(), reference.parts.end() - 1);
  bool prefix_known = qualifier.empty();
  for (const Scope* level = &scope; level != nullptr; level = level->outer) {
    const ScopeColumn* found = nullptr;
    for (const ScopeTable& table : level->tables) {
      if (!Matches(table, qualifier)) continue;
      prefix_known = true;
      for (const ScopeColumn& column : table.columns) {
        if (!SameName(column.name, name)) continue;
        if (found != nullptr) throw MakeError(209, {name}, line);
        found = &column;
      }
    }
    if (found != nullptr) {
      level->loose_columns.push_back(qualifier.empty() ? name : Joined(reference.parts));
      return Bound{found->sql, found->type, false, false, found};
    }
  }
  if (!prefix_known) throw MakeError(107, {Joined(qualifier)}, line);
  throw MakeError(207, {name}, line);
}

Bound Binder::BindVariable(const Variable& variable, int line) {
  for (std::size_t i = 0; i < parameters_.size(); ++i) {
    if (!SameName(parameters_[i].name, variable.name)) continue;
    return Bound{"?" + std::to_string(i + 1), parameters_[i].type};
  }
  if (variable.name.substr(0, 2) == "@@") {
    const FunctionCall call{variable.name, {}, false};
    return BindCall(call, line, Scope{});
  }
  throw MakeError(137, {variable.name}, line);
}

Bound Binder::BindUnary(const Unary& unary, int line, const Scope& scope) {
  Bound operand = Bind(*unary.operand, scope);
  operand.column = nullptr;
  if (unary.op == UnaryOperator::kPlus) return operand;
  if (unary.op == UnaryOperator::kMinus) return Negate(operand, line);
  if (FamilyOf(operand.type.id) != TypeFamily::kInteger) {
    throw MakeError(8117, {NameOf(operand.type.id), "'~'"}, line);
  }
  if (operand.type.id == TypeId::kBit) {
    operand.sql = "(1 - " + operand.sql + ")";
  } else if (operand.type.id == TypeId::kTinyInt) {
    operand.sql = "(255 - " + operand.sql + ")";
  } else {
    operand.sql = "(~" + operand.sql + ")";
  }
  operand.is_integer = false;
  return operand;
}

Bound Binder::BindCase(const Case& node, const Scope& scope) {
  std::vector<std::pair<std::string, Bound>> branches;
  std::optional<Bound> operand;
  if (node.operand != nullptr) operand = Bind(*node.operand, scope);
  for (const Case::When& when : node.whens) {
    std::string condition;
    if (operand) {
      condition = Compare(BinaryOperator::kEqual, *operand, Bind(*when.condition, scope),
                          when.condition->line);
    } else {
      condition = BindCondition(*when.condition, scope);
    }
    branches.emplace_back(std::move(condition), Bind(*when.result, scope));
  }
  Bound otherwise = Bound{"NULL", SqlType{}, true, false, nullptr};
  if (node.otherwise != nullptr) otherwise = Bind(*node.otherwise, scope);

  Bound result;
  result.is_null = true;
  const auto widen = [&result](const Bound& branch) {
    if (branch.is_null) {
      result.type.nullable = true;
    } else {
      result.type = result.is_null ? branch.type : CommonType(result.type, branch.type);
      result.is_null = false;
    }
  };
  for (const auto& [condition, value] : branches) widen(value);
  widen(otherwise);
  if (result.is_null) result.type = SqlType{};
  result.is_null = false;
  if (node.otherwise == nullptr) result.type.nullable = true;
  result.sql = "CASE";
  for (const auto& [condition, value] : branches) {
    result.sql += " WHEN " + condition + " THEN " + ConvertTo(value, result.type);
  }
  result.sql += " ELSE " + ConvertTo(otherwise, result.type) + " END";
  return result;
}

BoundQuery Binder::BindSubqueryColumn(const Query& query, const Scope& scope, int line) {
  BoundQuery bound = BindQuery(query, &scope, QueryPlace::kSubquery);
  if (bound.items.size() != 1) throw MakeError(116, {}, line);
  return bound;
}

Bound Binder::BindScalarSubquery(const ScalarSubquery& node, const Scope& scope, int line) {
  const BoundQuery bound = BindSubqueryColumn(*node.query, scope, line);
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

std::string Binder::BindCondition(const Expression& expression, const Scope& scope) {
  const int line = expression.line;
  return std::visit(
      Overloaded{
          [&](const Binary& node) { return BindBinaryCondition(node, line, scope); },
          [&](const Unary& node) { return "(NOT " + BindCondition(*node.operand, scope) + ')'; },
          [&](const IsNull& node) {
            return '(' + Bind(*node.value, scope).sql +
                   (node.negated ? " IS NOT NULL)" : " IS NULL)");
          },
          [&](const Between& node) { return BindBetween(node, line, scope); },
          [&](const InList& node) { return BindInList(node, scope); },
          [&](const InQuery& node) { return BindInQuery(node, line, scope); },
          [&](const Exists& node) {
            const BoundQuery query = BindQuery(*node.query, &scope, QueryPlace::kExists);
            return "EXISTS (" + TextOf(query, ColumnNames::kNone) + ')';
          },
          [&](const Quantified& node) { return BindQuantified(node, line, scope); },
          [&](const Like& node) { return BindLike(node, scope); },
          [&](const auto&) -> std::string {
            throw MakeError(170, {")", std::to_string(line)}, line);
          }},
      expression.node);
}

std::string Binder::BindBinaryCondition(const Binary& node, int line, const Scope& scope) {
  if (node.op != BinaryOperator::kAnd && node.op != BinaryOperator::kOr) {
    return Compare(node.op, Bind(*node.left, scope), Bind(*node.right, scope), line);
  }
  return '(' + BindCondition(*node.left, scope) +
         (node.op == BinaryOperator::kAnd ? " AND " : " OR ") + BindCondition(*node.right, scope) +
         ')';
}

std::string Binder::BindBetween(const Between& node, int line, const Scope& scope) {
  const Bound value = Bind(*node.value, scope);
  const std::string low =
      Compare(BinaryOperator::kGreaterOrEqual, value, Bind(*node.low, scope), line);
  const std::string high =
      Compare(BinaryOperator::kLessOrEqual, value, Bind(*node.high, scope), line);
  return (node.negated ? "(NOT (" : "((") + low + " AND " + high + "))";
}

std::string Binder::BindInList(const InList& node, const Scope& scope) {
  const Bound value = Bind(*node.value, scope);
  std::vector<Bound> list;
  SqlType common = value.type;
  for (const ExpressionPtr& item : node.list) {
    list.push_back(Bind(*item, scope));
    if (!list.back().is_null) common = CommonType(common, list.back().type);
  }
  std::string text =
      '(' + Collated(ConvertTo(value, common), common.id) + (node.negated ? " NOT IN (" : " IN (");
  for (std::size_t i = 0; i < list.size(); ++i) {
    text += (i == 0 ? "" : ", ") + ConvertTo(list[i], common);
  }
  return text + "))";
}

std::string Binder::BindLike(const Like& like, const Scope& scope) {
  const auto as_text = [this](const Bound& value) {
    if (value.is_null || FamilyOf(value.type.id) == TypeFamily::kText) return value.sql;
    return ConvertTo(value, SqlType{TypeId::kNVarChar, 4000, 0, 0, true});
  };
  std::string text =
      "ms_like(" + as_text(Bind(*like.value, scope)) + ", " + as_text(Bind(*like.pattern, scope));
  if (like.escape != nullptr) text += ", " + as_text(Bind(*like.escape, scope));
  text += ')';
  return like.negated ? "(NOT " + text + ')' : text;
}

std::string Binder::BindInQuery(const InQuery& in, int line, const Scope& scope) {
  const Bound value = Bind(*in.value, scope);
  const BoundQuery query = BindSubqueryColumn(*in.query, scope, line);
  const SqlType common =
      query.items[0].value.is_null ? value.type : CommonType(value.type, query.items[0].value.type);
  const std::vector<SqlType> types = {common};
  return '(' + Collated(ConvertTo(value, common), common.id) + (in.negated ? " NOT" : "") +
         " IN (" + TextOf(query, ColumnNames::kNone, &types) + "))";
}

// any: some row compares true; all: no row compares false or unknown.
std::string Binder::BindQuantified(const Quantified& node, int line, const Scope& scope) {
  const Bound value = Bind(*node.value, scope);
  const BoundQuery query = BindSubqueryColumn(*node.query, scope, line);
  Bound column = query.items[0].value;
  column.sql = "c1";
  column.is_integer = false;
  const std::string comparison = Compare(node.op, value, column, line);
  const std::string from = "SELECT 1 FROM (" + TextOf(query, ColumnNames::kNumbered) + ") WHERE ";
  if (!node.all) return "EXISTS (" + from + comparison + ')';
  return "(NOT EXISTS (" + from + "ifnull(NOT " + comparison + ", 1)))";
}

}  // namespace dbkeeper::server
