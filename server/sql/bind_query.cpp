// Selects and unions.
#include <algorithm>
#include <utility>

#include "server/sql/binder.h"
#include "server/sql/lexer.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

// The word by which an order by item may mean a column of the select list.
const std::string* PlainName(const Expression& expression) {
  const auto* column = std::get_if<ColumnReference>(&expression.node);
  return column != nullptr && column->parts.size() == 1 ? &column->parts[0] : nullptr;
}

const Literal* IntegerLiteral(const Expression& expression) {
  const auto* literal = std::get_if<Literal>(&expression.node);
  return literal != nullptr && literal->kind == LiteralKind::kInteger ? literal : nullptr;
}

}  // namespace

BoundQuery Binder::BindQuery(const Query& query, const Scope* outer, QueryPlace place) {
  if (!subqueries_allowed) throw MakeError(1046, {}, query.line);
  const auto* core = std::get_if<SelectCore>(&query.terms[0]);
  if (query.terms.size() == 1 && core != nullptr) {
    if (place != QueryPlace::kTop && !query.order_by.empty() && !core->top) {
      throw MakeError(1033, {}, query.line);
    }
    return BindCore(*core, query.order_by, outer, place);
  }
  return BindUnion(query, outer, place);
}

BoundQuery Binder::BindCore(const SelectCore& core, const std::vector<OrderItem>& order_by,
                            const Scope* outer, QueryPlace place) {
  if (core.into && place != QueryPlace::kTop) throw MakeError(156, {"into"}, core.line);
  BoundQuery bound;
  Scope scope;
  scope.outer = outer;
  bound.distinct = core.distinct;
  if (!core.from.empty()) bound.tail = " FROM " + BindFrom(core.from, scope);
  if (core.where != nullptr) bound.tail += " WHERE " + BindCondition(*core.where, scope);
  scope.loose_columns.clear();
  BindGroups(core, scope, bound);
  scope.aggregates_allowed = true;
  BindItems(core, scope, place, bound);
  const std::vector<std::string> loose_items = std::exchange(scope.loose_columns, {});
  if (core.having != nullptr) {
    const std::string having = BindCondition(*core.having, scope);
    // SQLite takes "having" only where something groups.
    if (core.group_by.empty() && !scope.has_aggregate) bound.tail += " GROUP BY NULL";
    bound.tail += " HAVING " + having;
    if (!scope.loose_columns.empty()) {
      throw MakeError(8121, {scope.loose_columns[0]}, core.line);
    }
  }
  bound.order_by = BindOrderBy(order_by, &scope, bound);
  bound.grouped = !core.group_by.empty() || scope.has_aggregate || core.having != nullptr;
  if (bound.grouped) {
    RequireGrouped(scope, 8127, core.line);
    if (!loose_items.empty()) {
      throw MakeError(core.group_by.empty() ? 8118 : 8120, {loose_items[0]}, core.line);
    }
    bound.single_row = core.group_by.empty();
  }
  if (core.top != nullptr) {
    bound.limit = BindTop(*core.top);
    const Literal* count = IntegerLiteral(*core.top);
    if (count != nullptr && count->text == "1") bound.single_row = true;
  }
  if (core.from.empty()) bound.single_row = true;
  const bool row_by_row = !bound.grouped && !bound.distinct && scope.tables.size() == 1;
  if (row_by_row && scope.tables[0].object) bound.single_table = scope.tables[0];
  bound.tables = std::make_shared<const std::deque<ScopeTable>>(std::move(scope.tables));
  return bound;
}

void Binder::RequireGrouped(const Scope& scope, int number, int line) {
  if (!scope.loose_columns.empty()) throw MakeError(number, {scope.loose_columns[0]}, line);
}

void Binder::BindGroups(const SelectCore& core, Scope& scope, BoundQuery& bound) {
  std::vector<std::string> grouped;
  for (const ExpressionPtr& item : core.group_by) {
    if (std::holds_alternative<Literal>(item->node)) throw MakeError(164, {}, item->line);
    const Bound group = Bind(*item, scope);
    if (IsLargeObject(group.type.id)) throw MakeError(306, {}, item->line);
    bound.tail += (grouped.empty() ? " GROUP BY " : ", ") + Collated(group.sql, group.type.id);
    grouped.push_back(group.sql);
  }
  scope.loose_columns.clear();
  scope.grouped = std::move(grouped);
}

void Binder::BindItems(const SelectCore& core, const Scope& scope, QueryPlace place,
                       BoundQuery& bound) {
  for (const SelectItem& item : core.items) {
    if (const auto* star = std::get_if<Star>(&item.value->node)) {
      // exists (select * ...) asks for no columns.
      if (place == QueryPlace::kExists && star->qualifier.empty()) {
        bound.items.push_back({"", Bound{"1", SqlType{}}});
      } else {
        ExpandStar(*star, item.value->line, scope, bound);
      }
      continue;
    }
    Bound value = Bind(*item.value, scope);
    if (core.distinct && IsLargeObject(value.type.id)) {
      throw MakeError(421, {NameOf(value.type.id)}, item.value->line);
    }
    std::string name = item.alias;
    if (name.empty() && std::holds_alternative<ColumnReference>(item.value->node)) {
      name = value.column->name;
    }
    bound.items.push_back({std::move(name), std::move(value)});
  }
}

void Binder::ExpandStar(const Star& star, int line, const Scope& scope, BoundQuery& bound) const {
  bool found = false;
  for (const ScopeTable& table : scope.tables) {
    if (!star.qualifier.empty() && !SameName(star.qualifier.back(), table.name)) continue;
    found = true;
    for (const ScopeColumn& column : table.columns) {
      scope.loose_columns.push_back(column.name);
      bound.items.push_back({column.name, Bound{column.sql, column.type, false, false, &column}});
      for (const std::string& grouped : scope.grouped) {
        if (grouped != column.sql) continue;
        scope.loose_columns.pop_back();
        break;
      }
    }
  }
  if (found) return;
  if (star.qualifier.empty()) throw MakeError(263, {}, line);
  throw MakeError(107, {star.qualifier.back()}, line);
}

std::string Binder::BindTop(const Expression& count) {
  if (const Literal* number = IntegerLiteral(count)) return " LIMIT " + number->text;
  const auto* variable = std::get_if<Variable>(&count.node);
  if (variable == nullptr) throw MakeError(170, {"top", std::to_string(count.line)}, count.line);
  return " LIMIT " + BindVariable(*variable, count.line).sql;
}

// An item is a position, a name of the select list, an expression of it, or one of its own.
std::string Binder::BindOrderBy(const std::vector<OrderItem>& order_by, const Scope* scope,
                                const BoundQuery& bound) {
  std::string text;
  for (const OrderItem& item : order_by) {
    const int line = item.value->line;
    std::size_t position = 0;
    std::string sql;
    SqlType type;
    if (const Literal* number = IntegerLiteral(*item.value)) {
      if (number->text.size() < 6) position = static_cast<std::size_t>(std::stoul(number->text));
      if (position < 1 || position > bound.items.size()) {
        throw MakeError(108, {number->text}, line);
      }
    } else if (const std::string* name = PlainName(*item.value)) {
      for (std::size_t i = 0; i < bound.items.size() && position == 0; ++i) {
        if (SameName(bound.items[i].name, *name)) position = i + 1;
      }
    }
    if (position == 0) {
      if (scope == nullptr) throw MakeError(104, {}, line);
      const Bound value = Bind(*item.value, *scope);
      for (std::size_t i = 0; i < bound.items.size() && position == 0; ++i) {
        if (bound.items[i].value.sql == value.sql) position = i + 1;
      }
      if (position == 0 && bound.distinct) throw MakeError(145, {}, line);
      // An expression without a column would be taken for a position by SQLite.
      sql = "ifnull(" + value.sql + ", NULL)";
      if (value.column != nullptr) sql = value.sql;
      type = value.type;
    }
    if (position > 0) {
      type = bound.items[position - 1].value.type;
      sql = std::to_string(position);
    }
    if (IsLargeObject(type.id)) throw MakeError(306, {}, line);
    text += (text.empty() ? " ORDER BY " : ", ") + Collated(sql, type.id);
    if (item.descending) text += " DESC";
  }
  return text;
}

// ---- unions ------------------------------------------------------------------------------------

BoundQuery Binder::BindUnion(const Query& query, const Scope* outer, QueryPlace place) {
  std::vector<BoundQuery> terms;
  for (const Query::Term& term : query.terms) {
    const QueryPlace inner = place == QueryPlace::kTop ? QueryPlace::kTop : QueryPlace::kSubquery;
    if (const auto* core = std::get_if<SelectCore>(&term)) {
      if (core->into) throw Unsupported("SELECT INTO with UNION", core->line);
      terms.push_back(BindCore(*core, {}, outer, inner));
    } else {
      terms.push_back(BindQuery(*std::get<QueryPtr>(term), outer, QueryPlace::kSubquery));
    }
    if (terms.back().items.size() != terms[0].items.size()) throw MakeError(205, {}, query.line);
  }
  BoundQuery bound;
  std::vector<SqlType> types;
  for (std::size_t i = 0; i < terms[0].items.size(); ++i) {
    Bound column = terms[0].items[i].value;
    for (const BoundQuery& term : terms) {
      const Bound& other = term.items[i].value;
      if (other.is_null) {
        column.type.nullable = true;
        continue;
      }
      column.type = column.is_null ? other.type : CommonType(column.type, other.type);
      column.is_null = false;
    }
    column.sql = "c" + std::to_string(i + 1);
    column.column = nullptr;
    column.is_integer = false;
    types.push_back(column.type);
    bound.items.push_back({terms[0].items[i].name, std::move(column)});
  }
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (i > 0) {
      bound.text += query.operators[i - 1] == SetOperator::kUnion ? " UNION " : " UNION ALL ";
    }
    // The union compares rows by the collations of its columns.
    BoundQuery& term = terms[i];
    term.collated = terms.size() > 1;
    const bool plain = term.text.empty() && term.limit.empty() && term.order_by.empty();
    const std::string text = TextOf(term, ColumnNames::kNumbered, &types);
    bound.text += plain ? text : "SELECT * FROM (" + text + ')';
  }
  bound.order_by = BindOrderBy(query.order_by, nullptr, bound);
  return bound;
}

// ---- the text ----------------------------------------------------------------------------------

std::string Binder::TextOf(const BoundQuery& query, ColumnNames names,
                           const std::vector<SqlType>* convert_to) const {
  if (!query.text.empty() && convert_to == nullptr) {
    return query.text + query.order_by + query.limit;
  }
  std::string text = query.distinct ? "SELECT DISTINCT " : "SELECT ";
  for (std::size_t i = 0; i < query.items.size(); ++i) {
    const Bound& value = query.items[i].value;
    const SqlType& type = convert_to == nullptr ? value.type : (*convert_to)[i];
    std::string sql = convert_to == nullptr ? value.sql : ConvertTo(value, type);
    if (query.distinct || query.collated) sql = Collated(sql, type.id);
    if (i > 0) text += ", ";
    text += sql;
    if (names == ColumnNames::kNumbered) text += " AS c" + std::to_string(i + 1);
  }
  if (!query.text.empty()) {
    return text + " FROM (" + query.text + query.order_by + query.limit + ')';
  }
  return text + query.tail + query.order_by + query.limit;
}

}  // namespace dbkeeper::server
