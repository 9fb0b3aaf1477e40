#include "server/engine/resolver.h"

#include "server/engine/live_tables.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

constexpr std::string_view kInformationSchema = "INFORMATION_SCHEMA";

ObjectInfo ViewInfo(const DatabaseInfo& database, std::string_view owner, const std::string& name,
                    std::string_view text) {
  ObjectInfo info;
  info.kind = ObjectKind::kView;
  info.database = database.name;
  info.owner = owner;
  info.name = name;
  info.view_text = text;
  return info;
}

}  // namespace

FoundObject Resolver::Place(const ObjectName& name) {
  if (!name.server.empty() && !SameName(name.server, workspace_.instance().options().server_name)) {
    Fail(7202, {name.server});
  }
  FoundObject place;
  if (name.name.starts_with("##")) throw Unsupported("global temporary tables");
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
  if (const Known* table = FindTable(found, name.name)) {
    found.object = table->object;
  } else if (std::optional<CatalogObject> object = CatalogAt(found).FindObject(name.name)) {
    found.object = std::move(*object);
  } else {
    return std::nullopt;
  }
  return Means(name, found) ? std::optional(found) : std::nullopt;
}

// A name without an owner is one of the user's own objects, or of dbo's.
bool Resolver::Means(const ObjectName& name, const FoundObject& found) {
  const std::string owner = CatalogAt(found).UserName(found.object.owner);
  if (!name.owner.empty()) return SameName(owner, name.owner);
  return found.object.owner == kDbo || SameName(owner, workspace_.UserName(found.database));
}

const Resolver::Known* Resolver::FindTable(const FoundObject& place, const std::string& name) {
  const std::int64_t version = workspace_.DefinitionVersion(place.alias);
  Known& known = known_[{place.alias, name}];
  if (known.object.id != 0 && known.version == version) return &known;
  const std::optional<CatalogObject> object = CatalogAt(place).FindObject(name);
  if (!object || (object->xtype != "U" && object->xtype != "S")) {
    known_.erase({place.alias, name});
    return nullptr;
  }
  FoundObject found = place;
  found.object = *object;
  known = {version, *object, ReadTable(found)};
  return &known;
}

FoundObject Resolver::Need(const ObjectName& name, std::string_view xtypes, int error) {
  std::optional<FoundObject> found = Find(name);
  if (!found || !HasWord(xtypes, found->object.xtype)) {
    Fail(error, {name.Text(), workspace_.database()});
  }
  return *found;
}

std::string NextIdentitySql(const FoundObject& table, const SqlType& type) {
  return "ms_state('next_identity', " + QuoteText(table.alias) + ", " +
         std::to_string(table.object.id) + ", " + std::to_string(EncodeType(type)) + ")";
}

std::optional<ObjectInfo> Resolver::ResolveObject(const ObjectName& name) {
  if (SameName(name.owner, kInformationSchema)) {
    const FoundObject place = Place(name);
    const auto text = InformationSchemaText(name.name);
    if (!text) return std::nullopt;
    return ViewInfo(place.database, kInformationSchema, name.name, *text);
  }
  const std::optional<FoundObject> found = Find(name);
  if (!found || !HasWord("U S V", found->object.xtype)) return std::nullopt;
  Note(name, *found);
  if (found->object.xtype == "V" && !found->IsSystem()) {
    Catalog catalog = CatalogAt(*found);
    return ViewInfo(found->database, catalog.UserName(found->object.owner), found->object.name,
                    catalog.ObjectText(found->object.id));
  }
  const Known* table = FindTable(*found, name.name);
  ObjectInfo info = table != nullptr ? table->info : ReadTable(*found);
  if (info.kind == ObjectKind::kSystemTable) {
    info.sqlite_from =
        LiveTableSource(workspace_, found->database, found->alias, found->object.name)
            .value_or(info.sqlite_from);
  }
  const std::string& inserts_into = workspace_.options().identity_insert;
  info.identity_insert =
      !inserts_into.empty() && SameName(inserts_into, info.database + "." + info.name);
  return info;
}

void Resolver::Note(const ObjectName& name, const FoundObject& found) {
  if (workspace_.login().sysadmin) return;
  // A view's own tables are looked up with its database; who may read the view may read them.
  for (const FoundObject& other : seen_) {
    if (other.object.xtype == "V" && SameName(other.database.name, name.database)) return;
  }
  seen_.push_back(found);
}

ObjectInfo Resolver::ReadTable(const FoundObject& found) {
  Catalog catalog = CatalogAt(found);
  ObjectInfo info;
  info.kind = found.IsSystem() ? ObjectKind::kSystemTable : ObjectKind::kTable;
  info.database = found.database.name;
  info.owner = catalog.UserName(found.object.owner);
  info.name = found.object.name;
  info.sqlite_from = catalog.Path(found.object.name);
  for (const CatalogColumn& column : catalog.Columns(found.object.id)) {
    ColumnInfo column_info = ColumnInfoOf(column);
    if (column.identity) {
      column_info.identity_sql = NextIdentitySql(found, column.type);
    }
    info.columns.push_back(std::move(column_info));
  }
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
  for (const char* column : {"objtype", "objname", "name", "value"}) {
    info.columns.push_back(ColumnInfoOf(PlainColumn(column, 0, sysname)));
  }
  info.columns.back().type = {.id = TypeId::kSqlVariant};
  return info;
}

}  // namespace dbkeeper::server
