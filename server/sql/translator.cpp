#include "server/sql/translator.h"

#include <algorithm>
#include <utility>

#include "server/sql/binder.h"
#include "server/sql/parser.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

std::vector<ResultColumn> ColumnsOf(const BoundQuery& query) {
  std::vector<ResultColumn> columns;
  for (const BoundQuery::Item& item : query.items) {
    ResultColumn column;
    column.name = item.name;
    column.type = item.value.type;
    if (item.value.is_null) column.type = kIntType;
    if (const ScopeColumn* base = item.value.column) {
      column.identity = base->identity;
      column.base_table = base->base_table;
      column.updatable =
          !base->base_table.empty() && !base->identity && base->type.id != TypeId::kTimestamp;
    }
    columns.push_back(std::move(column));
  }
  return columns;
}

const ColumnInfo& FindColumn(const ObjectInfo& table, const std::string& name, int line) {
  for (const ColumnInfo& column : table.columns) {
    if (SameName(column.name, name)) return column;
  }
  throw MakeError(207, {name}, line);
}

// Refuses to change what is no table of the user's.
void RequireTable(const ObjectInfo& object) {
  if (object.kind == ObjectKind::kView) throw Unsupported("changing rows through a view");
  if (object.kind == ObjectKind::kSystemTable) throw MakeError(259, {});
}

}  // namespace

// Builds the statements that change rows.
class ChangeBuilder : public Binder {
 public:
  using Binder::Binder;

  Translation Insert(const InsertStatement& insert) {
    ObjectInfo table = Resolve(insert.table, 1);
    RequireTable(table);
    const std::vector<const ColumnInfo*> columns = InsertColumns(table, insert.columns);
    const BoundQuery source = insert.query != nullptr
                                  ? BindQuery(*insert.query, nullptr, QueryPlace::kTop)
                                  : BindValues(insert, columns);
    CheckCounts(insert, columns.size(), source.items.size());
    return Build(std::move(table), columns, source, insert.query != nullptr);
  }

  Translation InsertBound(ObjectInfo table, const Parameters& values) {
    BoundQuery source;
    std::vector<const ColumnInfo*> columns;
    for (const Parameter& value : values) {
      columns.push_back(&FindColumn(table, value.name, 1));
      source.items.push_back({"", Bound{Place(columns.size()), value.type}});
    }
    return Build(std::move(table), columns, source, false);
  }

  Translation Update(const UpdateStatement& update) {
    Scope scope;
    std::string from;
    const ScopeTable& target = FindTarget(update.table, update.from, scope, from);
    const ObjectInfo& table = *target.object;
    const std::string condition = Where(update.where, scope);
    const std::string alias = target.sqlite_alias;
    Translation translation{"UPDATE " + table.sqlite_from, table};
    std::string set;  // from the row itself
    std::string values;
    std::vector<const ColumnInfo*> seen;
    for (const Assignment& assignment : update.assignments) {
      const ColumnInfo& column = AssignedColumn(table, assignment, seen);
      const Expression& given = *assignment.value;
      const std::string value =
          AssignTo(given.kind == ExpressionKind::kDefault ? Default(column) : Bind(given, scope),
                   column.type);
      const std::string name = NumberedColumn(seen.size());
      values.append(", ").append(value).append(" AS ").append(name);
      AppendItem(set, QuoteName(column.name) + " = " + value);
      AppendItem(translation.set_sql, QuoteName(column.name) + " = s." + name);
      translation.assigned.push_back(column.name);
    }
    StampRow(table, set);
    StampRow(table, translation.set_sql);
    translation.rows_sql = "SELECT " + alias + "._rowid_ AS r" + values + " FROM " +
                           (from.empty() ? table.sqlite_from + " AS " + alias : from) + condition;
    // A row that several rows of a join meet is changed once.
    translation.sqlite_sql += from.empty()
                                  ? " AS " + alias + " SET " + set + condition
                                  : " AS u SET " + translation.set_sql + " FROM (" +
                                        translation.rows_sql + ") AS s WHERE u._rowid_ = s.r";
    translation.reads_target = target.read;
    return translation;
  }

  Translation UpdateRow(const ObjectInfo& table, const Parameters& values) {
    std::string set;
    std::size_t count = 0;
    for (const Parameter& value : values) {
      const ColumnInfo& column = FindColumn(table, value.name, 1);
      if (!column.identity_sql.empty()) throw MakeError(8102, {column.name});
      const Bound bound{Place(++count), value.type};
      AppendItem(set, QuoteName(column.name) + " = " + AssignTo(bound, column.type));
    }
    StampRow(table, set);
    return {"UPDATE " + table.sqlite_from + " SET " + set + " WHERE _rowid_ = " + Place(count + 1),
            table};
  }

  Translation Delete(const DeleteStatement& statement) {
    Scope scope;
    std::string from;
    const ScopeTable& target = FindTarget(statement.table, statement.from, scope, from);
    const std::string& alias = target.sqlite_alias;
    const std::string condition = Where(statement.where, scope);
    Translation translation{"DELETE FROM " + target.object->sqlite_from +
                                (from.empty() ? " AS " + alias + condition
                                              : " WHERE _rowid_ IN (SELECT " + alias +
                                                    "._rowid_ FROM " + from + condition + ')'),
                            *target.object};
    translation.reads_target = target.read;
    return translation;
  }

  std::string DefaultOf(const std::string& text, const SqlType& type) {
    return AssignTo(Bind(*ParseExpression(text), Scope{}), type);
  }

 private:
  static constexpr std::string_view kNextTimestamp = "ms_state('next_timestamp')";

  static std::string Place(std::size_t parameter) { return "?" + std::to_string(parameter); }

  // `source` gives one item for each of `columns`.
  Translation Build(ObjectInfo table, const std::vector<const ColumnInfo*>& columns,
                    const BoundQuery& source, bool from_query) {
    std::string names;
    std::string values;
    bool takes_identity = table.identity_insert;
    const auto add = [&](const ColumnInfo& column, std::string_view value) {
      AppendItem(names, QuoteName(column.name));
      AppendItem(values, value);
    };
    for (std::size_t i = 0; i < columns.size(); ++i) {
      Bound value = source.items[i].value;
      if (from_query) value.sql = "s." + NumberedColumn(i + 1);
      if (columns[i]->type.id != TypeId::kTimestamp) {
        add(*columns[i], AssignTo(value, columns[i]->type));
      } else if (!value.is_null) {
        throw MakeError(273, {});
      }
    }
    for (const ColumnInfo& column : table.columns) {
      if (column.type.id == TypeId::kTimestamp) {
        add(column, kNextTimestamp);
        continue;
      }
      if (std::ranges::find(columns, &column) != columns.end()) continue;
      if (!column.identity_sql.empty()) {
        if (table.identity_insert) throw MakeError(545, {table.name});
        add(column, column.identity_sql);
        takes_identity = true;
      } else if (!column.default_text.empty()) {
        add(column, DefaultOf(column.default_text, column.type));
      }
    }
    std::string sql = "INSERT INTO " + table.sqlite_from;
    if (names.empty()) {
      sql += " DEFAULT VALUES";
    } else if (from_query) {
      sql += " (" + names + ") SELECT " + values + " FROM (" +
             TextOf(source, ColumnNames::kNumbered) + ") AS s";
    } else {
      sql += " (" + names + ") VALUES (" + values + ')';
    }
    Translation translation{std::move(sql), std::move(table)};
    translation.takes_identity = takes_identity;
    return translation;
  }

  static std::vector<const ColumnInfo*> InsertColumns(const ObjectInfo& table,
                                                      const std::vector<std::string>& names) {
    std::vector<const ColumnInfo*> columns;
    for (const std::string& name : names) {
      const ColumnInfo& column = FindColumn(table, name, 1);
      Note(column, columns, 1);
      if (!column.identity_sql.empty() && !table.identity_insert) {
        throw MakeError(544, {table.name});
      }
    }
    if (!names.empty()) return columns;
    for (const ColumnInfo& column : table.columns) {
      if (column.identity_sql.empty()) columns.push_back(&column);
    }
    return columns;
  }

  // No column is given twice.
  static void Note(const ColumnInfo& column, std::vector<const ColumnInfo*>& seen, int line) {
    if (std::ranges::find(seen, &column) != seen.end()) throw MakeError(264, {column.name}, line);
    seen.push_back(&column);
  }

  BoundQuery BindValues(const InsertStatement& insert,
                        const std::vector<const ColumnInfo*>& columns) {
    BoundQuery source;
    if (insert.default_values) {
      for (const ColumnInfo* column : columns) source.items.push_back({"", Default(*column)});
    }
    for (const ExpressionPtr& value : insert.values) {
      const std::size_t i = source.items.size();
      const bool is_default = value->kind == ExpressionKind::kDefault && i < columns.size();
      // A value of an insert may not name columns.
      if (value->kind == ExpressionKind::kColumn) {
        throw MakeError(128, {value->name.back()}, value->line);
      }
      source.items.push_back({"", is_default ? Default(*columns[i]) : Bind(*value, Scope{})});
    }
    return source;
  }

  Bound Default(const ColumnInfo& column) {
    if (column.default_text.empty()) return Bound{"NULL", column.type, true};
    return Bound{DefaultOf(column.default_text, column.type), column.type};
  }

  static void CheckCounts(const InsertStatement& insert, std::size_t columns, std::size_t values) {
    if (columns == values) return;
    if (insert.columns.empty()) throw MakeError(213, {});
    if (insert.query != nullptr) throw MakeError(values < columns ? 120 : 121, {});
    throw MakeError(values < columns ? 109 : 110, {});
  }

  // The table to change: the one named, or one of the from clause by its name or alias. `from` is
  // left empty when there is but the one table.
  const ScopeTable& FindTarget(const ObjectName& name, const std::vector<TableSourcePtr>& sources,
                               Scope& scope, std::string& from) {
    if (sources.empty()) {
      const ObjectInfo object = Resolve(name, 1);
      RequireTable(object);
      return AddTable(object, name.name, name, scope);
    }
    from = BindFrom(sources, scope);
    for (const ScopeTable& table : scope.tables) {
      if (!SameName(table.name, name.name) && !SameName(table.full_name.name, name.name)) continue;
      if (!table.object) throw Unsupported("changing rows through a view");
      return table;
    }
    Resolve(name, 1);
    throw Unsupported("UPDATE and DELETE of a table that its FROM does not name");
  }

  std::string Where(const ExpressionPtr& condition, const Scope& scope) {
    return condition == nullptr ? "" : " WHERE " + BindCondition(*condition, scope);
  }

  static const ColumnInfo& AssignedColumn(const ObjectInfo& table, const Assignment& assignment,
                                          std::vector<const ColumnInfo*>& seen) {
    const int line = assignment.value->line;
    const ColumnInfo& column = FindColumn(table, assignment.column.back(), line);
    Note(column, seen, line);
    if (!column.identity_sql.empty()) throw MakeError(8102, {column.name}, line);
    if (column.type.id == TypeId::kTimestamp) throw MakeError(272, {}, line);
    return column;
  }

  // A changed row gets the next timestamp.
  static void StampRow(const ObjectInfo& table, std::string& set) {
    for (const ColumnInfo& column : table.columns) {
      if (column.type.id != TypeId::kTimestamp) continue;
      AppendItem(set, QuoteName(column.name) + " = " + std::string(kNextTimestamp));
    }
  }
};

Translation Translator::Select(const SelectStatement& statement, const TranslateOptions& options) {
  Binder binder(resolver_, parameters_);
  const BoundQuery query = binder.BindQuery(*statement.query, nullptr, QueryPlace::kTop);
  Translation translation;
  translation.columns = ColumnsOf(query);
  translation.sqlite_sql = binder.TextOf(query, Binder::ColumnNames::kNone);
  if (const auto* core = std::get_if<SelectCore>(&statement.query->terms[0])) {
    translation.into = core->into;
  }
  if (options.with_row_id && query.single_table && !translation.into) {
    BoundQuery with_row = query;
    with_row.items.push_back({"", Bound{query.single_table->sqlite_alias + "._rowid_", SqlType{}}});
    translation.sqlite_sql = binder.TextOf(with_row, Binder::ColumnNames::kNone);
    translation.has_row_id = true;
    translation.target = query.single_table->object;
  }
  return translation;
}

Translation Translator::Insert(const InsertStatement& statement) {
  return ChangeBuilder(resolver_, parameters_).Insert(statement);
}

Translation Translator::Update(const UpdateStatement& statement) {
  return ChangeBuilder(resolver_, parameters_).Update(statement);
}

Translation Translator::Delete(const DeleteStatement& statement) {
  return ChangeBuilder(resolver_, parameters_).Delete(statement);
}

Translation Translator::ScalarText(const Expression& expression) {
  constexpr SqlType kText = {.id = TypeId::kNVarChar, .length = 4000};
  const Bound value = Binder(resolver_, parameters_).Bind(expression, Scope{});
  return {"SELECT " + ConvertTo(value, kText)};
}

Translation Translator::Scalar(const Expression& expression) {
  BoundQuery query;
  query.items.push_back({"", Binder(resolver_, parameters_).Bind(expression, Scope{})});
  Translation translation{"SELECT " + query.items[0].value.sql, {}};
  translation.columns = ColumnsOf(query);
  return translation;
}

Translation Translator::InsertBound(const ObjectInfo& table, const Parameters& columns) {
  return ChangeBuilder(resolver_, parameters_).InsertBound(table, columns);
}

Translation Translator::UpdateRow(const ObjectInfo& table, const Parameters& columns) {
  return ChangeBuilder(resolver_, parameters_).UpdateRow(table, columns);
}

Translation Translator::DeleteRow(const ObjectInfo& table) {
  return {"DELETE FROM " + table.sqlite_from + " WHERE _rowid_ = ?1", table};
}

std::vector<ResultColumn> Translator::ViewColumns(const CreateViewStatement& view) {
  Binder binder(resolver_, parameters_);
  const BoundQuery query = binder.BindQuery(*view.query, nullptr, QueryPlace::kSubquery);
  std::vector<ResultColumn> columns = ColumnsOf(query);
  if (!view.columns.empty() && view.columns.size() != columns.size()) {
    throw MakeError(view.columns.size() < columns.size() ? 8158 : 8159, {view.name.name});
  }
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (!view.columns.empty()) columns[i].name = view.columns[i];
    if (columns[i].name.empty()) throw MakeError(4511, {std::to_string(i + 1)});
    for (std::size_t j = 0; j < i; ++j) {
      if (SameName(columns[i].name, columns[j].name)) {
        throw MakeError(4506, {columns[i].name, view.name.name});
      }
    }
  }
  return columns;
}

std::string Translator::CheckExpression(const std::string& text, const ObjectInfo& table) {
  Binder binder(resolver_, parameters_);
  binder.in_check = true;
  const ExpressionPtr expression = ParseExpression(text);
  Scope scope;
  ScopeTable& added = binder.AddTable(table, table.name, ObjectName{}, scope);
  // Inside create table a column stands without its table.
  for (ScopeColumn& column : added.columns) {
    column.sql = column.sql.substr(added.sqlite_alias.size() + 1);
  }
  return binder.BindCondition(*expression, scope);
}

std::string Translator::DefaultExpression(const std::string& text, const SqlType& type) {
  return ChangeBuilder(resolver_, parameters_).DefaultOf(text, type);
}

}  // namespace dbkeeper::server
