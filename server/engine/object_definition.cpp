#include "server/engine/object_definition.h"

#include <algorithm>

#include "server/catalog/system_tables.h"
#include "server/sql/translator.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

struct ClassRow {
  ObjectClass object_class;
  std::string_view word;
  std::string_view xtype;
};

constexpr ClassRow kClasses[] = {
    {ObjectClass::kTable, "table", "U"},      {ObjectClass::kTable, "table", "S"},
    {ObjectClass::kView, "view", "V"},        {ObjectClass::kProcedure, "procedure", "P"},
    {ObjectClass::kTrigger, "trigger", "TR"}, {ObjectClass::kFunction, "function", "FN"},
};

const ClassRow& RowOf(ObjectClass object_class) {
  return *std::ranges::find(kClasses, object_class, &ClassRow::object_class);
}

}  // namespace

FoundObject ObjectDefinition::Begin(const ObjectName& name, std::string_view xtype, bool alter) {
  if (!name.owner.empty() && !SameName(name.owner, "dbo")) {
    throw Unsupported("owners other than dbo");
  }
  if (alter) {
    FoundObject found = resolver_.Need(name, xtype);
    workspace_.NeedOwner(found.database, "ALTER");
    return found;
  }
  FoundObject place = resolver_.Place(name);
  workspace_.NeedOwner(place.database, "CREATE");
  if (resolver_.CatalogAt(place).FindObject(name.name)) Fail(2714, {name.name});
  return place;
}

void ObjectDefinition::CreateView(const CreateViewStatement& statement) {
  FoundObject place = Begin(statement.name, "V", statement.alter);
  const std::vector<ResultColumn> columns = Translator(resolver_).ViewColumns(statement);
  WriteScope scope(workspace_, place.database, place.alias);
  Catalog catalog = resolver_.CatalogAt(place);
  if (statement.alter) {
    for (const CatalogColumn& column : catalog.Columns(place.object.id)) {
      catalog.DropColumn(place.object.id, column.colid);
    }
    catalog.ReplaceText(place.object.id, statement.text);
  } else {
    place.object.id = catalog.AddObject(statement.name.name, "V");
    catalog.AddText(place.object.id, statement.text);
  }
  std::int64_t colid = 0;
  for (const ResultColumn& source : columns) {
    catalog.AddColumn(place.object.id, PlainColumn(source.name, ++colid, source.type));
  }
  scope.Commit();
}

void ObjectDefinition::CreateModule(const CreateModuleStatement& statement, ResultSink& sink) {
  const ClassRow& row = RowOf(statement.object_class);
  FoundObject place = Begin(statement.name, row.xtype, statement.alter);
  std::optional<FoundObject> table;
  if (statement.object_class == ObjectClass::kTrigger) {
    table = resolver_.Need(statement.table, "U V", 208);
  }
  WriteScope scope(workspace_, place.database, place.alias);
  Catalog catalog = resolver_.CatalogAt(place);
  if (statement.alter) {
    catalog.ReplaceText(place.object.id, statement.text);
  } else {
    place.object.id =
        catalog.AddObject(statement.name.name, row.xtype, table ? table->object.id : 0);
    catalog.AddText(place.object.id, statement.text);
  }
  if (table) SetTriggers(place, *table, statement);
  scope.Commit();
  sink.OnMessage(MakeMessage(50011, {row.word, statement.name.name}));
}

void ObjectDefinition::SetTriggers(const FoundObject& trigger, const FoundObject& table,
                                   const CreateModuleStatement& statement) {
  const std::string objects = resolver_.CatalogAt(table).Path("sysobjects");
  for (const auto& [event, column] :
       {std::pair{"insert", "instrig"}, std::pair{"update", "updtrig"},
        std::pair{"delete", "deltrig"}}) {
    if (std::ranges::find(statement.trigger_events, event) == statement.trigger_events.end()) {
      continue;
    }
    workspace_.connection().Run(
        "update " + objects + " set " + column + " = ?1 where id in (?1, ?2)", trigger.object.id,
        table.object.id);
  }
}

void ObjectDefinition::Drop(ObjectClass object_class, const ObjectName& name) {
  const ClassRow& row = RowOf(object_class);
  const std::optional<FoundObject> found = resolver_.Find(name);
  if (!found) Fail(3701, {row.word, name.Text()});
  if (found->object.xtype != row.xtype) {
    const auto* actual = std::ranges::find(kClasses, found->object.xtype, &ClassRow::xtype);
    if (actual == std::end(kClasses)) Fail(3701, {row.word, name.Text()});
    Fail(3705, {ToUpperAscii(row.word), name.Text(), actual->word, ToUpperAscii(actual->word)});
  }
  if (found->IsSystem()) Fail(3708, {row.word, name.Text()});
  workspace_.NeedOwner(found->database, "DROP " + ToUpperAscii(row.word));
  WriteScope scope(workspace_, found->database, found->alias, found->object.id);
  Catalog catalog = resolver_.CatalogAt(*found);
  for (const char* column : {"instrig", "updtrig", "deltrig"}) {
    workspace_.connection().Run(
        "update " + catalog.Path("sysobjects") + " set " + column + " = 0 where " + column + " = ?",
        found->object.id);
  }
  catalog.DropObject(found->object.id);
  scope.Commit();
}

}  // namespace dbkeeper::server
