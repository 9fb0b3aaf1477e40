// The tables of a from clause.
#include <utility>

#include "server/sql/binder.h"
#include "server/sql/lexer.h"
#include "server/sql/parser.h"
#include "server/types/messages.h"
#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

constexpr int kMaximumViewDepth = 32;

void MakeNullable(Scope& scope, std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) {
    for (ScopeColumn& column : scope.tables[i].columns) column.type.nullable = true;
  }
}

}  // namespace

std::string Binder::BindFrom(const std::vector<TableSourcePtr>& from, Scope& scope) {
  std::string text;
  for (const TableSourcePtr& source : from) {
    if (!text.empty()) text += ", ";
    std::string item = BindSource(*source, scope);
    const bool joined = std::holds_alternative<JoinedTable>(source->node);
    text += joined && from.size() > 1 ? '(' + item + ')' : item;
  }
  return text;
}

ObjectInfo Binder::Resolve(const ObjectName& name, int line) {
  ObjectName wanted = name;
  if (wanted.database.empty() && wanted.name.substr(0, 1) != "#") {
    wanted.database = default_database;
  }
  std::optional<ObjectInfo> object;
  try {
    object = resolver_.ResolveObject(wanted);
  } catch (const SqlError& error) {
    ServerMessage message = error.message();
    message.line = line;
    throw SqlError(message);
  }
  if (!object) throw MakeError(208, {name.Text()}, line);
  return *std::move(object);
}

ScopeTable& Binder::NewTable(const std::string& name, const ObjectName& full_name, Scope& scope) {
  ScopeTable& table = scope.tables.emplace_back();
  table.name = name;
  table.full_name = full_name;
  table.sqlite_alias = "t" + std::to_string(++alias_count_);
  return table;
}

ScopeTable& Binder::AddTable(const ObjectInfo& object, const std::string& name,
                             const ObjectName& full_name, Scope& scope) {
  ScopeTable& table = NewTable(name, full_name, scope);
  table.full_name.database = object.database;
  table.full_name.owner = object.owner;
  const bool updatable = object.kind == ObjectKind::kTable;
  for (const ColumnInfo& info : object.columns) {
    ScopeColumn column;
    column.name = info.name;
    column.sql = table.sqlite_alias + '.' +
                 QuoteName(info.sqlite_name.empty() ? info.name : info.sqlite_name);
    column.type = info.type;
    column.identity = !info.identity_sql.empty();
    if (updatable) column.base_table = object.name;
    table.columns.push_back(std::move(column));
  }
  if (updatable) table.object = object;
  return table;
}

ScopeTable& Binder::AddDerived(const BoundQuery& query, const std::vector<std::string>& names,
                               const std::string& alias, int line, Scope& scope) {
  if (!names.empty() && names.size() != query.items.size()) {
    throw MakeError(names.size() < query.items.size() ? 8158 : 8159, {alias}, line);
  }
  ScopeTable& table = NewTable(alias, ObjectName{"", "", "", alias}, scope);
  for (std::size_t i = 0; i < query.items.size(); ++i) {
    ScopeColumn column;
    column.name = names.empty() ? query.items[i].name : names[i];
    if (column.name.empty()) throw MakeError(8155, {std::to_string(i + 1), alias}, line);
    for (const ScopeColumn& other : table.columns) {
      if (SameName(other.name, column.name)) throw MakeError(8156, {column.name, alias}, line);
    }
    column.sql = table.sqlite_alias + ".c" + std::to_string(i + 1);
    column.type = query.items[i].value.type;
    table.columns.push_back(std::move(column));
  }
  return table;
}

std::string Binder::BindSource(const TableSource& source, Scope& scope) {
  if (const auto* table = std::get_if<NamedTable>(&source.node)) {
    return BindNamed(*table, source, scope);
  }
  if (const auto* function = std::get_if<FunctionTable>(&source.node)) {
    return BindFunction(*function, source, scope);
  }
  if (const auto* derived = std::get_if<DerivedTable>(&source.node)) {
    return BindDerived(*derived, source, scope);
  }
  return BindJoin(std::get<JoinedTable>(source.node), scope);
}

std::string Binder::BindNamed(const NamedTable& table, const TableSource& source, Scope& scope) {
  const ObjectInfo object = Resolve(table.name, source.line);
  const std::string name = source.alias.empty() ? table.name.name : source.alias;
  for (const ScopeTable& other : scope.tables) {
    if (!SameName(other.name, name)) continue;
    if (!source.alias.empty()) throw MakeError(1011, {name}, source.line);
    if (SameName(other.full_name.database, object.database)) {
      throw MakeError(1013, {name}, source.line);
    }
  }
  const ObjectName full_name{"", object.database, object.owner, object.name};
  if (object.kind == ObjectKind::kView) return BindView(object, name, full_name, scope);
  const ScopeTable& added = AddTable(object, name, full_name, scope);
  return object.sqlite_from + " AS " + added.sqlite_alias;
}

// A view is its query, bound anew; names in it belong to its own database.
std::string Binder::BindView(const ObjectInfo& view, const std::string& name,
                             const ObjectName& full_name, Scope& scope) {
  if (++view_depth_ > kMaximumViewDepth) throw MakeError(4407, {view.name});
  const std::vector<Statement> statements = ParseBatch(view.view_text);
  const auto* definition =
      statements.size() == 1 ? std::get_if<CreateViewStatement>(&statements[0].node) : nullptr;
  if (definition == nullptr) throw MakeError(208, {view.name});
  const std::string outer_database = std::exchange(default_database, view.database);
  const BoundQuery query = BindQuery(*definition->query, nullptr, QueryPlace::kSubquery);
  default_database = outer_database;
  --view_depth_;
  ScopeTable& table = AddDerived(query, definition->columns, name, 1, scope);
  table.full_name = full_name;
  return '(' + TextOf(query, ColumnNames::kNumbered) + ") AS " + table.sqlite_alias;
}

std::string Binder::BindFunction(const FunctionTable& function, const TableSource& source,
                                 Scope& scope) {
  std::vector<std::string> arguments;
  for (const ExpressionPtr& argument : function.arguments) {
    const bool is_default = std::holds_alternative<DefaultValue>(argument->node);
    arguments.push_back(is_default ? "NULL" : Bind(*argument, Scope{}).sql);
  }
  const std::optional<ObjectInfo> object = resolver_.ResolveTableFunction(function.name, arguments);
  if (!object) throw MakeError(208, {function.name.Text()}, source.line);
  const std::string name = source.alias.empty() ? function.name.name : source.alias;
  const ScopeTable& added = AddTable(*object, name, function.name, scope);
  return object->sqlite_from + " AS " + added.sqlite_alias;
}

std::string Binder::BindDerived(const DerivedTable& derived, const TableSource& source,
                                Scope& scope) {
  const BoundQuery query = BindQuery(*derived.query, nullptr, QueryPlace::kSubquery);
  const ScopeTable& table =
      AddDerived(query, derived.column_names, source.alias, source.line, scope);
  return '(' + TextOf(query, ColumnNames::kNumbered) + ") AS " + table.sqlite_alias;
}

std::string Binder::BindJoin(const JoinedTable& join, Scope& scope) {
  constexpr std::string_view kWords[] = {" JOIN ", " LEFT JOIN ", " RIGHT JOIN ", " FULL JOIN ",
                                         " JOIN "};
  const std::size_t begin = scope.tables.size();
  std::string text = BindSource(*join.left, scope);
  const std::size_t middle = scope.tables.size();
  const std::string right = BindSource(*join.right, scope);
  const bool nested = std::holds_alternative<JoinedTable>(join.right->node);
  text += std::string(kWords[static_cast<std::size_t>(join.kind)]) +
          (nested ? '(' + right + ')' : right);
  if (join.condition != nullptr) text += " ON " + BindCondition(*join.condition, scope);
  const bool keeps_left = join.kind == JoinKind::kLeft || join.kind == JoinKind::kFull;
  const bool keeps_right = join.kind == JoinKind::kRight || join.kind == JoinKind::kFull;
  if (keeps_left) MakeNullable(scope, middle, scope.tables.size());
  if (keeps_right) MakeNullable(scope, begin, middle);
  return text;
}

}  // namespace dbkeeper::server
