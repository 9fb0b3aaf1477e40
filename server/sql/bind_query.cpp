// Selects and unions.
#include <algorithm>
#include <utility>

#include "server/sql/binder.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

bool IsInteger(const Expression& expression) {
  return expression.kind == ExpressionKind::kLiteral && expression.literal == TokenKind::kInteger;
}

}  // namespace

BoundQuery Binder::BindQuery(const Query& query, const Scope* outer, QueryPlace place) {
  if (in_check) throw MakeError(1046, {}, query.line);
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
  const bool items_aggregate = scope.has_aggregate;
  const std::vector<std::string> loose_items = std::exchange(scope.loose_columns, {});
  if (core.having != nullptr) {
    bound.tail += " HAVING " + BindCondition(*core.having, scope);
    if (!scope.loose_columns.empty()) {
      throw MakeError(8121, {scope.loose_columns[0]}, core.line);
    }
  }
  bound.order_by = BindOrderBy(order_by, &scope, bound);
  const bool grouped = !core.group_by.empty() || scope.has_aggregate || core.having != nullptr;
  if (grouped) {
    if (!scope.loose_columns.empty()) throw MakeError(8127, {scope.loose_columns[0]}, core.line);
    if (!loose_items.empty()) {
      throw MakeError(core.group_by.empty() ? 8118 : 8120, {loose_items[0]}, core.line);
    }
    bound.single_row = core.group_by.empty();
    // SQLite makes all rows one only for an aggregate of the select list.
    if (bound.single_row && !items_aggregate) {
      std::string& first = bound.items[0].value.sql;
      first = "iif(count(*) >= 0, " + first + ", NULL)";
    }
  }
  if (core.top != nullptr) {
    bound.limit = BindTop(*core.top);
    if (IsInteger(*core.top) && core.top->text == "1") bound.single_row = true;
  }
  if (core.from.empty()) bound.single_row = true;
  const bool row_by_row = !grouped && !bound.distinct && scope.tables.size() == 1;
  if (row_by_row && scope.tables[0].object) bound.single_table = scope.tables[0];
  bound.tables = std::make_shared<const std::deque<ScopeTable>>(std::move(scope.tables));
  return bound;
}

void Binder::BindGroups(const SelectCore& core, Scope& scope, BoundQuery& bound) {
  std::vector<std::string> grouped;
  for (const ExpressionPtr& item : core.group_by) {
    scope.loose_columns.clear();
    const Bound group = Bind(*item, scope);
    if (scope.loose_columns.empty()) throw MakeError(164, {}, item->line);
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
    const Expression& expression = *item.value;
    if (expression.kind == ExpressionKind::kStar) {
      // exists (select * ...) asks for no columns.
      if (place == QueryPlace::kExists && expression.name.empty()) {
        bound.items.push_back({"", Bound{"1", SqlType{}}});
      } else {
        ExpandStar(expression, scope, bound);
      }
      continue;
    }
    Bound value = Bind(expression, scope);
    if (core.distinct && IsLargeObject(value.type.id)) {
      throw MakeError(421, {NameOf(value.type.id)}, expression.line);
    }
    const bool own_name = item.alias.empty() && expression.kind == ExpressionKind::kColumn;
    bound.items.push_back({own_name ? value.column->name : item.alias, std::move(value)});
  }
}

void Binder::ExpandStar(const Expression& star, const Scope& scope, BoundQuery& bound) const {
  const std::string qualifier = star.name.empty() ? "" : star.name.back();
  bool found = false;
  for (const ScopeTable& table : scope.tables) {
    if (!star.name.empty() && !SameName(qualifier, table.name)) continue;
    found = true;
    for (const ScopeColumn& column : table.columns) {
      bound.items.push_back({column.name, Bound{column.sql, column.type, false, false, &column}});
      if (std::ranges::find(scope.grouped, column.sql) == scope.grouped.end()) {
        scope.loose_columns.push_back(column.name);
      }
    }
  }
  if (found) return;
  if (star.name.empty()) throw MakeError(263, {}, star.line);
  throw MakeError(107, {qualifier}, star.line);
}

std::string Binder::BindTop(const Expression& count) {
  if (IsInteger(count)) return " LIMIT " + count.text;
  if (count.kind == ExpressionKind::kVariable) return " LIMIT " + BindVariable(count).sql;
  throw MakeError(170, {"top", std::to_string(count.line)}, count.line);
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
    const auto find = [&](const auto& is_meant) {
      const auto found = std::ranges::find_if(bound.items, is_meant);
      if (found != bound.items.end()) {
        position = static_cast<std::size_t>(found - bound.items.begin()) + 1;
      }
    };
    const std::vector<std::string>& name = item.value->name;
    if (IsInteger(*item.value)) {
      const std::string& digits = item.value->text;
      if (digits.size() < 6) position = static_cast<std::size_t>(std::stoul(digits));
      if (position < 1 || position > bound.items.size()) throw MakeError(108, {digits}, line);
    } else if (item.value->kind == ExpressionKind::kColumn && name.size() == 1) {
      find([&](const BoundQuery::Item& other) { return SameName(other.name, name[0]); });
    }
    if (position == 0) {
      if (scope == nullptr) throw MakeError(104, {}, line);
      const Bound value = Bind(*item.value, *scope);
      find([&](const BoundQuery::Item& other) { return other.value.sql == value.sql; });
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
  const bool distinct =
      std::ranges::find(query.operators, SetOperator::kUnion) != query.operators.end();
  for (std::size_t i = 0; i < terms[0].items.size(); ++i) {
    Bound column = terms[0].items[i].value;
    for (const BoundQuery& term : terms) Widen(column, term.items[i].value);
    if (distinct && IsLargeObject(column.type.id)) {
      throw MakeError(421, {NameOf(column.type.id)}, query.line);
    }
    column.sql = NumberedColumn(i + 1);
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
    if (names == ColumnNames::kNumbered) text += " AS " + NumberedColumn(i + 1);
  }
  if (!query.text.empty()) {
    return text + " FROM (" + query.text + query.order_by + query.limit + ')';
  }
  return text + query.tail + query.order_by + query.limit;
}

}  // namespace dbkeeper::server
