#include "server/engine/resolver.h"

#include "server/catalog/live_tables.h"
#include "server/engine/engine_messages.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

constexpr std::string_view kInformationSchema = "INFORMATION_SCHEMA";

ColumnInfo PropertyColumn(std::string name, const SqlType& type) {
  ColumnInfo column;
  column.name = std::move(name);
  column.type = type;
  return column;
}

bool OneOf(std::string_view word, std::string_view words) {
  const std::size_t at = words.find(word);
  return at != std::string_view::npos && (at == 0 || words[at - 1] == ' ') &&
         (at + word.size() == words.size() || words[at + word.size()] == ' ');
}

}  // namespace

FoundObject Resolver::Place(const ObjectName& name) {
  if (!name.server.empty() && !SameName(name.server, workspace_.instance().options().server_name)) {
    Fail(7202, {name.server});
  }
  FoundObject place;
  if (name.name.starts_with('#')) {
    place.database = workspace_.FindDatabase("tempdb");
    place.alias = workspace_.CatalogOf("#").alias();
    return place;
  }
  place.database =
      workspace_.FindDatabase(name.database.empty() ? workspace_.database() : name.database);
  place.alias = workspace_.Open(place.database);
  return place;
}

std::optional<FoundObject> Resolver::Find(const ObjectName& name) {
  FoundObject found = Place(name);
  if (!name.owner.empty() && !SameName(name.owner, "dbo")) return std::nullopt;
  std::optional<CatalogObject> object = CatalogAt(found).FindObject(name.name);
  if (!object) return std::nullopt;
  found.object = std::move(*object);
  return found;
}

FoundObject Resolver::Need(const ObjectName& name, std::string_view xtypes, int error) {
  std::optional<FoundObject> found = Find(name);
  if (!found || !OneOf(found->object.xtype, xtypes)) Fail(error, {name.Text()});
  return *found;
}

std::optional<ObjectInfo> Resolver::ResolveObject(const ObjectName& name) {
  if (SameName(name.owner, kInformationSchema)) {
    const FoundObject place = Place(name);
    if (!InformationSchemaText(name.name)) return std::nullopt;
    return InformationSchemaView(name, place.database);
  }
  const std::optional<FoundObject> found = Find(name);
  if (!found || !OneOf(found->object.xtype, "U S V")) return std::nullopt;
  Catalog catalog = CatalogAt(*found);
  ObjectInfo info;
  info.database = found->database.name;
  info.owner = "dbo";
  info.name = found->object.name;
  if (found->object.xtype == "V" && !found->IsSystem()) {
    info.kind = ObjectKind::kView;
    info.view_text = catalog.ObjectText(found->object.id);
    return info;
  }
  info.kind = found->IsSystem() ? ObjectKind::kSystemTable : ObjectKind::kTable;
  info.sqlite_from = catalog.Path(found->object.name);
  if (info.kind == ObjectKind::kSystemTable) {
    info.sqlite_from =
        LiveTableSource(workspace_, found->database, found->alias, found->object.name)
            .value_or(info.sqlite_from);
  }
  const std::string key = info.database + "." + info.name;
  info.identity_insert = SameName(workspace_.options().identity_insert, key);
  const CatalogTable table = catalog.Table(found->object);
  const CatalogIndex* primary_key = table.PrimaryKey();
  for (const CatalogColumn& column : table.columns) {
    ColumnInfo column_info = ColumnInfoOf(column);
    if (column.identity) {
      column_info.identity_sql = "next_identity(" + QuoteText(found->alias) + ", " +
                                 std::to_string(found->object.id) + ")";
    }
    if (primary_key != nullptr) {
      for (const KeyColumn& key_column : primary_key->keys) {
        if (SameName(key_column.name, column.name)) column_info.primary_key = true;
      }
    }
    info.columns.push_back(std::move(column_info));
  }
  return info;
}

ObjectInfo Resolver::InformationSchemaView(const ObjectName& name, const DatabaseInfo& database) {
  ObjectInfo info;
  info.kind = ObjectKind::kView;
  info.database = database.name;
  info.owner = std::string(kInformationSchema);
  info.name = name.name;
  info.view_text = std::string(*InformationSchemaText(name.name));
  return info;
}

std::optional<ObjectInfo> Resolver::ResolveTableFunction(
    const ObjectName& name, const std::vector<std::string>& arguments) {
  if (!SameName(name.name, "fn_listextendedproperty")) return std::nullopt;
  const FoundObject place = Place({});
  ObjectInfo info;
  info.kind = ObjectKind::kSystemTable;
  info.database = place.database.name;
  info.owner = "system_function_schema";
  info.name = "fn_listextendedproperty";
  info.sqlite_from = ExtendedPropertySource(place.alias, arguments);
  const SqlType sysname{.id = TypeId::kNVarChar, .length = 128};
  info.columns = {PropertyColumn("objtype", sysname), PropertyColumn("objname", sysname),
                  PropertyColumn("name", sysname),
                  PropertyColumn("value", {.id = TypeId::kSqlVariant})};
  return info;
}

}  // namespace dbkeeper::server
