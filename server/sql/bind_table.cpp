// The tables of a from clause.
#include <utility>

#include "server/sql/binder.h"
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
    const std::string item = BindSource(*source, scope);
    const bool joined = source->kind == TableSource::Kind::kJoined;
    AppendItem(text, joined && from.size() > 1 ? '(' + item + ')' : item);
  }
  return text;
}

ObjectInfo Binder::Resolve(const ObjectName& name, int line) {
  ObjectName wanted = name;
  if (wanted.database.empty() && wanted.name.substr(0, 1) != "#") {
    wanted.database = default_database;
  }
  std::optional<ObjectInfo> object;
  AtLine(line, [&] { object = resolver_.ResolveObject(wanted); });
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
    column.sql = table.sqlite_alias + '.' + QuoteName(info.name);
    column.type = info.type;
    column.identity = !info.identity_sql.empty();
    if (updatable) column.base_table = object.name;
    table.columns.push_back(std::move(column));
  }
  if (updatable) table.object = object;
  return table;
}

// The text of a query as a table. `names` are its columns' names; empty: their own.
std::string Binder::AddDerived(const BoundQuery& query, const std::vector<std::string>& names,
                               const ObjectName& full_name, const std::string& alias, int line,
                               Scope& scope) {
  if (!names.empty() && names.size() != query.items.size()) {
    throw MakeError(names.size() < query.items.size() ? 8158 : 8159, {alias}, line);
  }
  ScopeTable& table = NewTable(alias, full_name, scope);
  for (std::size_t i = 0; i < query.items.size(); ++i) {
    ScopeColumn column;
    column.name = names.empty() ? query.items[i].name : names[i];
    if (column.name.empty()) throw MakeError(8155, {std::to_string(i + 1), alias}, line);
    for (const ScopeColumn& other : table.columns) {
      if (SameName(other.name, column.name)) throw MakeError(8156, {column.name, alias}, line);
    }
    column.sql = table.sqlite_alias + '.' + NumberedColumn(i + 1);
    column.type = query.items[i].value.type;
    table.columns.push_back(std::move(column));
  }
  return '(' + TextOf(query, ColumnNames::kNumbered) + ") AS " + table.sqlite_alias;
}

std::string Binder::BindSource(const TableSource& source, Scope& scope) {
  switch (source.kind) {
    case TableSource::Kind::kNamed:
      return BindNamed(source, scope);
    case TableSource::Kind::kFunction:
      return BindFunction(source, scope);
    case TableSource::Kind::kDerived:
      return AddDerived(BindQuery(*source.query, nullptr, QueryPlace::kSubquery),
                        source.column_names, {"", "", "", source.alias}, source.alias, source.line,
                        scope);
    case TableSource::Kind::kJoined:
      break;
  }
  return BindJoin(source, scope);
}

std::string Binder::BindNamed(const TableSource& source, Scope& scope) {
  const ObjectInfo object = Resolve(source.name, source.line);
  const std::string& name = source.alias.empty() ? source.name.name : source.alias;
  for (const ScopeTable& other : scope.tables) {
    if (!SameName(other.name, name)) continue;
    if (!source.alias.empty()) throw MakeError(1011, {name}, source.line);
    if (SameName(other.full_name.database, object.database)) {
      throw MakeError(1013, {name}, source.line);
    }
  }
  if (object.kind == ObjectKind::kView) return BindView(object, name, scope);
  const ObjectName full_name{"", object.database, object.owner, object.name};
  return object.sqlite_from + " AS " + AddTable(object, name, full_name, scope).sqlite_alias;
}

// A view is its query, bound anew; names in it belong to its own database.
std::string Binder::BindView(const ObjectInfo& view, const std::string& name, Scope& scope) {
  if (++view_depth_ > kMaximumViewDepth) throw MakeError(4407, {view.name});
  const std::vector<Statement> statements = ParseBatch(view.view_text);
  const auto* definition =
      statements.size() == 1 ? std::get_if<CreateViewStatement>(&statements[0].node) : nullptr;
  if (definition == nullptr) throw MakeError(208, {view.name});
  const std::string outer_database = std::exchange(default_database, view.database);
  const BoundQuery query = BindQuery(*definition->query, nullptr, QueryPlace::kSubquery);
  default_database = outer_database;
  --view_depth_;
  return AddDerived(query, definition->columns, {"", view.database, view.owner, view.name}, name, 1,
                    scope);
}

std::string Binder::BindFunction(const TableSource& source, Scope& scope) {
  std::vector<std::string> arguments;
  for (const ExpressionPtr& argument : source.arguments) {
    const bool is_default = argument->kind == ExpressionKind::kDefault;
    arguments.push_back(is_default ? "NULL" : Bind(*argument, Scope{}).sql);
  }
  const std::optional<ObjectInfo> object = resolver_.ResolveTableFunction(source.name, arguments);
  if (!object) throw MakeError(208, {source.name.Text()}, source.line);
  const std::string& name = source.alias.empty() ? source.name.name : source.alias;
  return object->sqlite_from + " AS " + AddTable(*object, name, source.name, scope).sqlite_alias;
}

std::string Binder::BindJoin(const TableSource& join, Scope& scope) {
  constexpr std::string_view kWords[] = {" JOIN ", " LEFT JOIN ", " RIGHT JOIN ", " FULL JOIN ",
                                         " JOIN "};
  const std::size_t begin = scope.tables.size();
  std::string text = BindSource(*join.left, scope);
  const std::size_t middle = scope.tables.size();
  const std::string right = BindSource(*join.right, scope);
  const bool nested = join.right->kind == TableSource::Kind::kJoined;
  text += std::string(kWords[static_cast<std::size_t>(join.join)]) +
          (nested ? '(' + right + ')' : right);
  if (join.condition != nullptr) text += " ON " + BindCondition(*join.condition, scope);
  const bool full = join.join == JoinKind::kFull;
  if (full || join.join == JoinKind::kLeft) MakeNullable(scope, middle, scope.tables.size());
  if (full || join.join == JoinKind::kRight) MakeNullable(scope, begin, middle);
  return text;
}

}  // namespace dbkeeper::server
