// Objects of a database: their texts, indexes and names; statements as texts.
#include <algorithm>

#include "server/engine/database_definition.h"
#include "server/engine/state_functions.h"
#include "server/engine/table_definition.h"
#include "server/procedures/procedure_call.h"
#include "server/sql/parser.h"
#include "server/types/conversion.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

void HelpText(ProcedureCall& call) {
  const FoundObject found = call.Object("@objname", "V P TR FN C D");
  const std::string text = call.resolver().CatalogAt(found).ObjectText(found.object.id);
  if (text.empty()) Fail(15197, {call.Text("@objname")});
  std::vector<std::vector<Cell>> rows;
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end_of_line = text.find('\n', begin);
    const std::size_t end = end_of_line == std::string::npos ? text.size() : end_of_line + 1;
    rows.push_back({text.substr(begin, end - begin)});
    begin = end;
  }
  call.Rows("Text nvarchar(255)", rows);
}

std::string DescriptionOf(const CatalogIndex& index) {
  std::string text = index.Has(IndexStatus::kClustered) ? "clustered" : "nonclustered";
  if (index.Has(IndexStatus::kUnique)) text += ", unique";
  if (index.Has(IndexStatus::kPrimaryKey)) text += ", primary key";
  if (index.Has(IndexStatus::kUniqueKey)) text += ", unique key";
  return text + " located on PRIMARY";
}

void HelpIndex(ProcedureCall& call) {
  const FoundObject found = call.Object("@objname", "U S");
  std::vector<std::vector<Cell>> rows;
  for (const CatalogIndex& index : call.resolver().CatalogAt(found).Indexes(found.object.id)) {
    if (index.keys.empty()) continue;
    std::string keys;
    for (const KeyColumn& key : index.keys) {
      keys += (keys.empty() ? "" : ", ") + key.name + (key.descending ? "(-)" : "");
    }
    rows.push_back({index.name, DescriptionOf(index), keys});
  }
  if (rows.empty()) {
    call.Inform(15472);
    return;
  }
  std::ranges::sort(rows, {}, [](const auto& row) { return std::get<std::string>(row[0]); });
  call.Rows("index_name sysname, index_description nvarchar(210), index_keys nvarchar(2078)", rows);
}

// "table.column" or "table.index" taken apart at the last part.
struct TablePart {
  FoundObject table;
  std::string part;
};

TablePart SplitPart(ProcedureCall& call, std::string_view kind) {
  std::optional<FoundObject> table;
  ObjectName name;
  try {
    name = ParseObjectName(call.Text("@objname"));
    table = call.resolver().Find({"", "", name.database, name.owner});
  } catch (const SqlError&) {
    Fail(15248, {kind});
  }
  if (!table || table->object.xtype != "U") Fail(15248, {kind});
  return {*table, name.name};
}

void RenameColumn(ProcedureCall& call, const std::string& new_name) {
  const TablePart name = SplitPart(call, "COLUMN");
  const CatalogTable definition = call.resolver().CatalogAt(name.table).Table(name.table.object);
  const CatalogColumn* column = definition.FindColumn(name.part);
  if (column == nullptr) Fail(15248, {"COLUMN"});
  const CatalogColumn* other = definition.FindColumn(new_name);
  if (other != nullptr && other != column) Fail(15335, {new_name, "column"});
  if (!definition.checks.empty()) Fail(15336, {call.Text("@objname")});
  TableDefinition(call.workspace(), call.resolver())
      .RenameColumn(name.table, column->name, new_name);
}

void RenameIndex(ProcedureCall& call, const std::string& new_name) {
  const TablePart name = SplitPart(call, "INDEX");
  const FoundObject& table = name.table;
  Catalog catalog = call.resolver().CatalogAt(table);
  const CatalogTable definition = catalog.Table(table.object);
  const CatalogIndex* index = definition.FindIndex(name.part);
  if (index == nullptr) Fail(15248, {"INDEX"});
  if (definition.FindIndex(new_name) != nullptr) Fail(15335, {new_name, "index"});
  WriteScope scope(call.workspace(), table.database, table.alias, table.object.id);
  catalog.Run("update {}sysindexes set name = ? where id = ? and indid = ?", new_name,
              table.object.id, index->indid);
  catalog.Run(
      "update {}sysobjects set name = ?1 where parent_obj = ?2 and name = ?3 and xtype in ('PK', "
      "'UQ')",
      new_name, table.object.id, index->name);
  scope.Commit();
}

void RenameObject(ProcedureCall& call, const std::string& new_name) {
  const FoundObject found = call.Object("@objname", "U V P TR FN PK UQ F C D");
  Catalog catalog = call.resolver().CatalogAt(found);
  if (catalog.FindObject(new_name)) Fail(15335, {new_name, "object"});
  if (found.object.xtype == "U") {
    TableDefinition(call.workspace(), call.resolver()).RenameTable(found, new_name);
    return;
  }
  WriteScope scope(call.workspace(), found.database, found.alias, found.object.id);
  catalog.Run("update {}sysobjects set name = ? where id = ?", new_name, found.object.id);
  if (found.object.xtype == "PK" || found.object.xtype == "UQ") {
    catalog.Run("update {}sysindexes set name = ?1 where id = ?2 and name = ?3", new_name,
                found.object.parent, found.object.name);
  }
  if (const auto parent = catalog.FindObject(found.object.parent)) {
    // Checks and foreign keys stand under their names in SQLite's definition.
    catalog.Redefine(catalog.Table(*parent), call.resolver());
  }
  scope.Commit();
}

void Rename(ProcedureCall& call) {
  call.NeedOwner();
  const std::string new_name = call.Text("@newname");
  const std::string type = call.Text("@objtype", "OBJECT");
  if (new_name.empty()) Fail(15006, {new_name});
  if (SameName(type, "COLUMN")) {
    RenameColumn(call, new_name);
  } else if (SameName(type, "INDEX")) {
    RenameIndex(call, new_name);
  } else if (SameName(type, "OBJECT")) {
    RenameObject(call, new_name);
  } else if (SameName(type, "DATABASE")) {
    DatabaseDefinition(call.workspace()).Alter({call.Text("@objname"), {}, new_name, {}});
  } else {
    Fail(15249, {type, std::to_string(type.size())});
  }
  call.Inform(15477);
}

// The object goes to another user or role, with its triggers and constraints.
void ChangeOwner(ProcedureCall& call) {
  call.NeedOwner();
  const FoundObject found = call.Object("@objname", "U V P FN");
  const std::string owner = call.Text("@newowner");
  Catalog catalog = call.resolver().CatalogAt(found);
  const std::int64_t uid =
      catalog.IntegerOf(-1, "select uid from {}sysusers where name = ?1", owner);
  if (uid < 0) Fail(15410, {owner});
  WriteScope scope(call.workspace(), found.database, found.alias, found.object.id);
  catalog.Run("update {}sysobjects set uid = ?1 where id = ?2 or parent_obj = ?2", uid,
              found.object.id);
  catalog.RaiseVersion();
  scope.Commit();
  call.Inform(15477);
}

// sp_executesql N'select ... where a = @p', N'@p int', 1. Its last arguments have names of their
// own, so it is no row of parameters.
void ExecuteText(ProcedureCall& call) {
  Parameters parameters = ParseParameterDeclarations(call.Text("@params"));
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].is_output) throw Unsupported("output parameters of sp_executesql");
    if (i + 2 >= call.arguments().size()) Fail(8178, {parameters[i].name});
    const Parameter& given = call.arguments()[i + 2];
    parameters[i].value =
        ConvertCell(given.value, given.type, parameters[i].type, 0, ConversionKind::kAssignment);
  }
  call.session().RunInside(call.Text("@stmt"), parameters, call.sink());
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_helptext", "@objname, @columnname=", HelpText},
    {"sp_helpindex", "@objname", HelpIndex},
    {"sp_rename", "@objname, @newname, @objtype=", Rename},
    {"sp_changeobjectowner", "@objname, @newowner", ChangeOwner},
    {"sp_executesql", "@stmt, @params=, ...", ExecuteText},
};

}  // namespace

std::span<const ProcedureRow> ObjectProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
