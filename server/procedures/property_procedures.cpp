// Extended properties.
#include "server/procedures/procedure_call.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// What a property hangs on, as sysproperties keys it.
struct Place {
  std::int64_t id = 0;
  std::int64_t part = 0;  // column or index
  int type = 0;           // 0 database, 3 object, 4 column, 6 index
  std::string name;       // for messages
};

std::string_view ObjectTypeOf(const std::string& level_type) {
  if (SameName(level_type, "table")) return "U";
  if (SameName(level_type, "view")) return "V";
  if (SameName(level_type, "procedure")) return "P";
  if (SameName(level_type, "function")) return "FN";
  return "";
}

Place PartOf(ProcedureCall& call, Catalog& catalog, const CatalogObject& object) {
  const std::string type = call.Text("@level2type");
  const std::string name = call.Text("@level2name");
  Place place{object.id, 0, 4, object.name + "." + name};
  const CatalogTable table = catalog.Table(object);
  if (SameName(type, "column")) {
    if (const CatalogColumn* column = table.FindColumn(name)) place.part = column->colid;
  } else if (SameName(type, "index")) {
    place.type = 6;
    if (const CatalogIndex* index = table.FindIndex(name)) place.part = index->indid;
  } else if (SameName(type, "constraint") || SameName(type, "trigger")) {
    const std::optional<CatalogObject> part = catalog.FindObject(name);
    if (part && part->parent == object.id) return {part->id, 0, 3, place.name};
  } else {
    Fail(15600, {call.row().name});
  }
  if (place.part == 0) Fail(15135, {place.name});
  return place;
}

Place PlaceOf(ProcedureCall& call, Catalog& catalog) {
  if (!call.Has("@level0type")) return {0, 0, 0, "object specified"};
  const bool user_level = SameName(call.Text("@level0type"), "user");
  if (!user_level || !call.Has("@level0name") || !call.Has("@level1type") ||
      !call.Has("@level1name")) {
    Fail(15600, {call.row().name});
  }
  const std::string name = call.Text("@level1name");
  const std::string shown = call.Text("@level0name") + "." + name;
  const std::string_view xtype = ObjectTypeOf(call.Text("@level1type"));
  if (xtype.empty()) Fail(15600, {call.row().name});
  const std::optional<CatalogObject> object = catalog.FindObject(name);
  if (!object || object->xtype != xtype || !SameName(call.Text("@level0name"), "dbo")) {
    Fail(15135, {shown});
  }
  if (call.Has("@level2type")) return PartOf(call, catalog, *object);
  return {object->id, 0, 3, shown};
}

enum class Change { kAdd, kUpdate, kDrop };

void ChangeProperty(ProcedureCall& call, Change change) {
  call.NeedOwner();
  constexpr std::size_t kLongestValue = 7500;
  Catalog catalog = call.catalog();
  const Place place = PlaceOf(call, catalog);
  const std::string name = call.Text("@name");
  const std::string properties = catalog.Path("sysproperties");
  const std::string which = " where id = ?1 and smallid = ?2 and type = ?3 and name = ?4";
  const bool exists =
      call.Exists("select 1 from " + properties + which, place.id, place.part, place.type, name);
  if (change == Change::kAdd && exists) Fail(15233, {name, place.name});
  if (change != Change::kAdd && !exists) Fail(15217, {name, place.name});
  DatabaseChange changed(call);
  if (change == Change::kDrop) {
    call.sqlite().Run("delete from " + properties + which, place.id, place.part, place.type, name);
  } else {
    const Cell& value = call.Value("@value");
    if (call.Text("@value").size() > kLongestValue) Fail(15097);
    call.sqlite().Run(change == Change::kAdd
                          ? "insert into " + properties + " values (?1, ?2, ?3, ?4, ?5)"
                          : "update " + properties + " set value = ?5" + which,
                      place.id, place.part, place.type, name, value);
  }
  changed.scope.Commit();
}

constexpr std::string_view kWithValue =
    "@name, @value=, @level0type=, @level0name=, @level1type=, @level1name=, @level2type=, "
    "@level2name=";
constexpr std::string_view kWithoutValue =
    "@name, @level0type=, @level0name=, @level1type=, @level1name=, @level2type=, @level2name=";

constexpr ProcedureRow kProcedures[] = {
    {"sp_addextendedproperty", kWithValue,
     [](ProcedureCall& call) { ChangeProperty(call, Change::kAdd); }},
    {"sp_updateextendedproperty", kWithValue,
     [](ProcedureCall& call) { ChangeProperty(call, Change::kUpdate); }},
    {"sp_dropextendedproperty", kWithoutValue,
     [](ProcedureCall& call) { ChangeProperty(call, Change::kDrop); }},
};

}  // namespace

std::span<const ProcedureRow> PropertyProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
