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

const Parameters kNoParameters;

std::string ColumnSql(const ColumnInfo& column) {
  return QuoteName(column.sqlite_name.empty() ? column.name : column.sqlite_name);
}

std::vector<ResultColumn> ColumnsOf(const BoundQuery& query) {
  std::vector<ResultColumn> columns;
  for (const BoundQuery::Item& item : query.items) {
    ResultColumn column;
    column.name = item.name;
    column.type = item.value.type;
    if (item.value.is_null) column.type = SqlType{TypeId::kInt, 4, 10, 0, true};
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
class ChangeBuilder {
 public:
  explicit ChangeBuilder(Binder& binder) : binder_(binder) {}

  Translation Insert(const InsertStatement& insert) {
    ObjectInfo table = binder_.Resolve(insert.table, 1);
    RequireTable(table);
    const std::vector<const ColumnInfo*> columns = InsertColumns(table, insert.columns);
    const BoundQuery source = insert.query != nullptr
                                  ? binder_.BindQuery(*insert.query, nullptr, QueryPlace::kTop)
                                  : BindValues(insert, columns);
    CheckCounts(insert, columns.size(), source.items.size());
    return Build(std::move(table), columns, source, insert.query != nullptr);
  }

  // `source` gives one item for each of `columns`.
  Translation Build(ObjectInfo table, const std::vector<const ColumnInfo*>& columns,
                    const BoundQuery& source, bool from_query) {
    Translation translation;
    std::string names;
    std::string values;
    const auto add = [&](const ColumnInfo& column, const std::string& value) {
      names += (names.empty() ? "" : ", ") + ColumnSql(column);
      values += (values.empty() ? "" : ", ") + value;
    };
    for (std::size_t i = 0; i < columns.size(); ++i) {
      Bound value = source.items[i].value;
      if (from_query) value.sql = "s.c" + std::to_string(i + 1);
      if (columns[i]->type.id == TypeId::kTimestamp) {
        if (!value.is_null) throw MakeError(273, {});
        continue;
      }
      add(*columns[i], binder_.AssignTo(value, columns[i]->type));
    }
    for (const ColumnInfo& column : table.columns) {
      if (column.type.id == TypeId::kTimestamp) {
        add(column, "ms_state('next_timestamp')");
        continue;
      }
      if (std::find(columns.begin(), columns.end(), &column) != columns.end()) continue;
      if (!column.identity_sql.empty()) {
        if (table.identity_insert) throw MakeError(545, {table.name});
        add(column, column.identity_sql);
        translation.takes_identity = true;
      } else if (!column.default_text.empty()) {
        add(column, DefaultOf(column.default_text, column.type));
      }
    }
    translation.takes_identity = translation.takes_identity || table.identity_insert;
    translation.sqlite_sql = "INSERT INTO " + table.sqlite_from;
    if (names.empty()) {
      translation.sqlite_sql += " DEFAULT VALUES";
    } else {
      translation.sqlite_sql += " (" + names + ") ";
      translation.sqlite_sql +=
          from_query ? "SELECT " + values + " FROM (" +
                           binder_.TextOf(source, Binder::ColumnNames::kNumbered) + ") AS s"
                     : "VALUES (" + values + ')';
    }
    translation.target = std::move(table);
    return translation;
  }

  std::string DefaultOf(const std::string& text, const SqlType& type) {
    const ExpressionPtr expression = ParseExpression(text);
    return binder_.AssignTo(binder_.Bind(*expression, Scope{}), type);
  }

  Translation Update(const UpdateStatement& update) {
    Scope scope;
    std::string from;
    const ScopeTable& target = FindTarget(update.table, update.from, scope, from);
    ObjectInfo table = *target.object;
    std::string condition =
        update.where == nullptr ? "" : " WHERE " + binder_.BindCondition(*update.where, scope);
    std::string set;
    std::string values;
    std::vector<const ColumnInfo*> seen;
    for (const Assignment& assignment : update.assignments) {
      const ColumnInfo& column = AssignedColumn(table, assignment, seen);
      const std::string value = AssignedValue(column, assignment, scope);
      values += ", " + value + " AS c" + std::to_string(seen.size());
      set += (set.empty() ? "" : ", ") + ColumnSql(column) + " = " +
             (from.empty() ? value : "s.c" + std::to_string(seen.size()));
    }
    for (const ColumnInfo& column : table.columns) {
      if (column.type.id != TypeId::kTimestamp) continue;
      set += ", " + ColumnSql(column) + " = ms_state('next_timestamp')";
    }
    Translation translation;
    translation.sqlite_sql = "UPDATE " + table.sqlite_from;
    if (from.empty()) {
      translation.sqlite_sql += " AS " + target.sqlite_alias + " SET " + set + condition;
    } else {
      // A row that several rows of the join meet is changed once.
      translation.sqlite_sql += " AS u SET " + set + " FROM (SELECT " + target.sqlite_alias +
                                "._rowid_ AS r" + values + " FROM " + from + condition +
                                ") AS s WHERE u._rowid_ = s.r";
    }
    translation.target = std::move(table);
    return translation;
  }

  Translation Delete(const DeleteStatement& statement) {
    Scope scope;
    std::string from;
    const ScopeTable& target = FindTarget(statement.table, statement.from, scope, from);
    const std::string condition = statement.where == nullptr
                                      ? ""
                                      : " WHERE " + binder_.BindCondition(*statement.where, scope);
    Translation translation;
    translation.target = *target.object;
    translation.sqlite_sql = "DELETE FROM " + target.object->sqlite_from;
    if (from.empty()) {
      translation.sqlite_sql += " AS " + target.sqlite_alias + condition;
    } else {
      translation.sqlite_sql += " WHERE _rowid_ IN (SELECT " + target.sqlite_alias +
                                "._rowid_ FROM " + from + condition + ')';
    }
    return translation;
  }

 private:
  static std::vector<const ColumnInfo*> InsertColumns(const ObjectInfo& table,
                                                      const std::vector<std::string>& names) {
    std::vector<const ColumnInfo*> columns;
    for (const std::string& name : names) {
      const ColumnInfo& column = FindColumn(table, name, 1);
      if (std::find(columns.begin(), columns.end(), &column) != columns.end()) {
        throw MakeError(264, {column.name});
      }
      if (!column.identity_sql.empty() && !table.identity_insert) {
        throw MakeError(544, {table.name});
      }
      columns.push_back(&column);
    }
    if (!names.empty()) return columns;
    for (const ColumnInfo& column : table.columns) {
      if (column.identity_sql.empty()) columns.push_back(&column);
    }
    return columns;
  }

  BoundQuery BindValues(const InsertStatement& insert, std::vector<const ColumnInfo*> columns) {
    BoundQuery source;
    if (insert.default_values) {
      for (const ColumnInfo* column : columns) source.items.push_back({"", Default(*column)});
      return source;
    }
    for (std::size_t i = 0; i < insert.values.size(); ++i) {
      const bool is_default = insert.values[i]->kind == ExpressionKind::kDefault;
      if (is_default && i < columns.size()) {
        source.items.push_back({"", Default(*columns[i])});
      } else {
        source.items.push_back({"", BindConstant(*insert.values[i])});
      }
    }
    return source;
  }

  // A value of an insert may not name columns.
  Bound BindConstant(const Expression& value) {
    if (value.kind == ExpressionKind::kColumn) {
      throw MakeError(128, {value.name.back()}, value.line);
    }
    return binder_.Bind(value, Scope{});
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
      const ObjectInfo object = binder_.Resolve(name, 1);
      RequireTable(object);
      return binder_.AddTable(object, name.name, name, scope);
    }
    from = binder_.BindFrom(sources, scope);
    for (const ScopeTable& table : scope.tables) {
      if (!SameName(table.name, name.name) && !SameName(table.full_name.name, name.name)) continue;
      if (!table.object) throw Unsupported("changing rows through a view");
      return table;
    }
    binder_.Resolve(name, 1);
    throw Unsupported("UPDATE and DELETE of a table that its FROM does not name");
  }

  static const ColumnInfo& AssignedColumn(const ObjectInfo& table, const Assignment& assignment,
                                          std::vector<const ColumnInfo*>& seen) {
    const int line = assignment.value->line;
    const ColumnInfo& column = FindColumn(table, assignment.column.back(), line);
    if (std::find(seen.begin(), seen.end(), &column) != seen.end()) {
      throw MakeError(264, {column.name}, line);
    }
    if (!column.identity_sql.empty()) throw MakeError(8102, {column.name}, line);
    if (column.type.id == TypeId::kTimestamp) throw MakeError(272, {}, line);
    seen.push_back(&column);
    return column;
  }

  std::string AssignedValue(const ColumnInfo& column, const Assignment& assignment,
                            const Scope& scope) {
    if (assignment.value->kind == ExpressionKind::kDefault) {
      return binder_.AssignTo(Default(column), column.type);
    }
    return binder_.AssignTo(binder_.Bind(*assignment.value, scope), column.type);
  }

  Binder& binder_;
};

Translator::Translator(NameResolver& resolver) : Translator(resolver, kNoParameters) {}

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
  Binder binder(resolver_, parameters_);
  return ChangeBuilder(binder).Insert(statement);
}

Translation Translator::Update(const UpdateStatement& statement) {
  Binder binder(resolver_, parameters_);
  return ChangeBuilder(binder).Update(statement);
}

Translation Translator::Delete(const DeleteStatement& statement) {
  Binder binder(resolver_, parameters_);
  return ChangeBuilder(binder).Delete(statement);
}

Translation Translator::Scalar(const Expression& expression) {
  Binder binder(resolver_, parameters_);
  BoundQuery query;
  query.items.push_back({"", binder.Bind(expression, Scope{})});
  return Translation{"SELECT " + query.items[0].value.sql, ColumnsOf(query), false, {}, {}, false};
}

Translation Translator::InsertBound(const ObjectInfo& table, const Parameters& columns) {
  Binder binder(resolver_, parameters_);
  ObjectInfo target = table;
  BoundQuery source;
  std::vector<const ColumnInfo*> infos;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    infos.push_back(&FindColumn(target, columns[i].name, 1));
    source.items.push_back({"", Bound{"?" + std::to_string(i + 1), columns[i].type}});
  }
  return ChangeBuilder(binder).Build(std::move(target), infos, source, false);
}

Translation Translator::UpdateRow(const ObjectInfo& table, const Parameters& columns) {
  Binder binder(resolver_, parameters_);
  Translation translation;
  std::string set;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const ColumnInfo& column = FindColumn(table, columns[i].name, 1);
    if (!column.identity_sql.empty()) throw MakeError(8102, {column.name});
    const Bound value{"?" + std::to_string(i + 1), columns[i].type};
    set +=
        (set.empty() ? "" : ", ") + ColumnSql(column) + " = " + binder.AssignTo(value, column.type);
  }
  for (const ColumnInfo& column : table.columns) {
    if (column.type.id != TypeId::kTimestamp) continue;
    set += ", " + ColumnSql(column) + " = ms_state('next_timestamp')";
  }
  translation.sqlite_sql = "UPDATE " + table.sqlite_from + " SET " + set + " WHERE _rowid_ = ?" +
                           std::to_string(columns.size() + 1);
  translation.target = table;
  return translation;
}

Translation Translator::DeleteRow(const ObjectInfo& table) {
  Translation translation;
  translation.sqlite_sql = "DELETE FROM " + table.sqlite_from + " WHERE _rowid_ = ?1";
  translation.target = table;
  return translation;
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
  binder.subqueries_allowed = false;
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
  Binder binder(resolver_, parameters_);
  return ChangeBuilder(binder).DefaultOf(text, type);
}

}  // namespace dbkeeper::server
