// The rest of TableDefinition: alter table and the renames.
#include <algorithm>

#include "server/catalog/system_tables.h"
#include "server/engine/table_definition.h"
#include "server/sql/lexer.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

bool HasKey(const std::vector<KeyColumn>& keys, std::string_view name) {
  return std::ranges::any_of(keys, [&](const KeyColumn& key) { return SameName(key.name, name); });
}

// Whether the text of a check names the column.
bool Names(const std::string& text, std::string_view column) {
  return std::ranges::any_of(Tokenize(text, QuotedIdentifiers::kOn), [&](const Token& token) {
    const bool name = token.kind == TokenKind::kWord || token.kind == TokenKind::kQuotedName;
    return name && SameName(token.text, column);
  });
}

bool HasName(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::any_of(names, [&](const std::string& n) { return SameName(n, name); });
}

bool IsOfAnyLength(TypeId id) {
  return id == TypeId::kVarChar || id == TypeId::kNVarChar || id == TypeId::kVarBinary;
}

// True when every value of the one type is one of the other as it stands.
bool OnlyWidens(const SqlType& before, const SqlType& after) {
  return before.id == after.id && after.length >= before.length &&
         before.precision == after.precision && before.scale == after.scale;
}

}  // namespace

void TableDefinition::Alter(const AlterTableStatement& statement, ResultSink& sink) {
  const FoundObject found = NeedOwn(statement.table, "ALTER TABLE", 4902);
  WriteScope scope(workspace_, found.database, found.alias, found.object.id);
  Work work = Start(found);
  if (const auto* add = std::get_if<AddColumns>(&statement.action)) {
    AddNewColumns(work, *add);
  } else if (const auto* alter = std::get_if<AlterColumn>(&statement.action)) {
    ChangeColumn(work, alter->column, sink);
  } else if (const auto* drop = std::get_if<DropParts>(&statement.action)) {
    for (const std::string& name : drop->constraints) DropConstraint(work, name);
    for (const std::string& name : drop->columns) DropColumn(work, name, sink);
  } else {
    Switch(work, std::get<SwitchParts>(statement.action));
  }
  scope.Commit();
}

void TableDefinition::AddNewColumns(Work& work, const AddColumns& action) {
  SqliteConnection& connection = workspace_.connection();
  const std::string path = work.catalog.Path(work.found.object.name);
  std::vector<Constraint> constraints;
  for (const ColumnDefinition& definition : action.columns) {
    CatalogColumn column = MakeColumn(work, definition);
    for (const Constraint& constraint : definition.constraints) {
      constraints.push_back(constraint);
      if (constraints.back().columns.empty()) constraints.back().columns = {{column.name, false}};
      if (constraint.kind == ConstraintKind::kDefault) AddDefault(work, column, constraint);
      if (constraint.kind == ConstraintKind::kPrimaryKey) column.type.nullable = false;
    }
    if (!column.type.nullable && column.default_id == 0 && !column.identity &&
        column.type.id != TypeId::kTimestamp) {
      Fail(4901, {column.name, work.found.object.name});
    }
    connection.Execute("alter table " + path + " add column " + QuoteName(column.name) + " " +
                       SqliteDeclaration(column.type));
    work.catalog.AddColumn(work.found.object.id, column);
    const std::string set = "update " + path + " set " + QuoteName(column.name) + " = ";
    if (column.identity) {
      connection.Execute(set + NextIdentitySql(work.found, column.type));
      workspace_.SaveIdentities();
    } else if (!column.type.nullable && column.default_id != 0) {
      connection.Execute(set +
                         Translator(resolver_).DefaultExpression(column.default_text, column.type));
    }
    Reload(work);
  }
  for (const Constraint& constraint : action.constraints) {
    if (constraint.kind != ConstraintKind::kDefault) {
      constraints.push_back(constraint);
      continue;
    }
    const CatalogColumn* existing = work.table.FindColumn(constraint.default_column);
    if (existing == nullptr) Fail(1911, {constraint.default_column});
    CatalogColumn column = *existing;
    AddDefault(work, column, constraint);
    work.catalog.Run("update {}syscolumns set cdefault = ? where id = ? and colid = ?",
                     column.default_id, work.found.object.id, column.colid);
  }
  AddConstraints(work, constraints, action.check_existing);
}

bool TableDefinition::TellDependents(Work& work, const CatalogColumn& column,
                                     const SqlType* new_type, ResultSink& sink) {
  // Another length, precision or scale is nothing to a default, and the length of a column that is
  // of any length is nothing to a check.
  const bool same_type = new_type != nullptr && new_type->id == column.type.id;
  const bool only_length = same_type && IsOfAnyLength(column.type.id);
  bool any = false;
  const auto tell = [&](std::string_view kind, std::string_view name) {
    sink.OnMessage(MakeMessage(5074, {kind, name, column.name}));
    any = true;
  };
  for (const CatalogIndex& index : work.table.indexes) {
    if (!HasKey(index.keys, column.name)) continue;
    tell(index.IsKey() ? "object" : "index", index.name);
  }
  for (const CatalogForeignKey& key : work.table.foreign_keys) {
    if (HasName(key.child_columns, column.name)) tell("object", key.name);
  }
  for (const CatalogForeignKey& key : work.catalog.ReferencesTo(work.found.object.id)) {
    if (HasName(key.parent_columns, column.name)) tell("object", key.name);
  }
  for (const CatalogCheck& check : work.table.checks) {
    if (!only_length && Names(check.text, column.name)) tell("object", check.name);
  }
  if (column.default_id != 0 && !same_type) {
    const auto object = work.catalog.FindObject(column.default_id);
    if (object) tell("object", object->name);
  }
  return any;
}

void TableDefinition::ChangeColumn(Work& work, const ColumnDefinition& definition,
                                   ResultSink& sink) {
  const std::string& table_name = work.found.object.name;
  const CatalogColumn* existing = work.table.FindColumn(definition.name);
  if (existing == nullptr) Fail(4924, {"ALTER", definition.name, table_name});
  const CatalogColumn before = *existing;
  if (before.type.id == TypeId::kTimestamp || IsLargeObject(before.type.id)) {
    Fail(4928, {before.name, NameOf(before.type.id)});
  }
  CatalogColumn after = before;
  after.type = definition.type;
  // Without a word about nulls the column allows them, as the server does by its ANSI default.
  if (!definition.null_said) after.type.nullable = true;
  after.is_sysname = definition.type_name == "sysname";
  if (FamilyOf(after.type.id) != TypeFamily::kText) {
    after.collation.clear();
  } else if (!definition.collation.empty() || after.collation.empty()) {
    after.collation = definition.collation.empty() ? kDefaultCollation : definition.collation;
  }
  const bool in_primary_key =
      work.table.PrimaryKey() != nullptr && HasKey(work.table.PrimaryKey()->keys, before.name);
  const bool loosens_key = in_primary_key && after.type.nullable;
  if ((loosens_key || !OnlyWidens(before.type, after.type)) &&
      TellDependents(work, before, &after.type, sink)) {
    Fail(4922, {"ALTER", before.name});
  }
  if (after.identity && !TakesIdentity(after.type)) Fail(2749, {after.name});
  if (after.identity) after.type.nullable = false;
  const std::string path = work.catalog.Path(table_name);
  if (!after.type.nullable &&
      workspace_.connection().IntegerOf(0, "select 1 from " + path + " where " +
                                               QuoteName(before.name) + " is null limit 1") != 0) {
    Fail(515, {before.name, work.found.database.name + ".dbo." + table_name, "UPDATE"});
  }
  work.catalog.ChangeColumn(work.found.object.id, after);
  Follow(work);
  if (!OnlyWidens(before.type, after.type) || after.type.id == TypeId::kChar ||
      after.type.id == TypeId::kNChar || after.type.id == TypeId::kBinary) {
    ConvertRows(work, before, after);
  }
}

void TableDefinition::ConvertRows(Work& work, const CatalogColumn& before,
                                  const CatalogColumn& after) {
  ObjectName name;
  name.database = work.found.object.name.starts_with('#') ? "" : work.found.database.name;
  name.name = work.found.object.name;
  std::optional<ObjectInfo> info = resolver_.ResolveObject(name);
  // What the identity column holds it may keep in another type.
  for (ColumnInfo& column : info->columns) column.identity_sql.clear();
  const Parameters columns = {{after.name, before.type}};
  const Translation update = Translator(resolver_, columns).UpdateRow(*info, columns);
  SqliteConnection& connection = workspace_.connection();
  SqliteStatement rows = connection.Prepare("select rowid, " + QuoteName(after.name) + " from " +
                                            work.catalog.Path(name.name));
  SqliteStatement change = connection.Prepare(update.sqlite_sql);
  while (rows.Step()) {
    if (rows.IsNull(1)) continue;
    change.Reset();
    change.Bind(1, rows.Value(1));
    change.Bind(2, rows.Integer(0));
    change.Step();
  }
}

void TableDefinition::DropConstraint(Work& work, const std::string& name) {
  const std::optional<CatalogObject> object = work.catalog.FindObject(name);
  if (!object || !HasWord("PK UQ F C D", object->xtype)) Fail(3728, {name});
  if (object->parent != work.found.object.id) Fail(3733, {name, work.found.object.name});
  if (object->xtype == "PK" || object->xtype == "UQ") {
    const CatalogIndex index = *work.table.FindIndex(object->name);
    for (const CatalogForeignKey& key : work.catalog.ReferencesTo(work.found.object.id)) {
      const bool uses = key.parent_columns.size() == index.keys.size() &&
                        std::ranges::all_of(key.parent_columns, [&](const std::string& column) {
                          return HasKey(index.keys, column);
                        });
      if (uses) Fail(3725, {object->name, key.child_table, key.name});
    }
    RemoveIndex(work, index);
  }
  work.catalog.DropObject(object->id);
  Follow(work);
}

void TableDefinition::DropColumn(Work& work, const std::string& name, ResultSink& sink) {
  const std::string& table_name = work.found.object.name;
  const CatalogColumn* found = work.table.FindColumn(name);
  if (found == nullptr) Fail(4924, {"DROP", name, table_name});
  const CatalogColumn column = *found;
  if (TellDependents(work, column, nullptr, sink)) Fail(4922, {"DROP", column.name});
  if (work.table.columns.size() == 1) Fail(4923, {column.name, table_name});
  workspace_.connection().Execute("alter table " + work.catalog.Path(table_name) + " drop column " +
                                  QuoteName(column.name));
  work.catalog.DropColumn(work.found.object.id, column.colid);
  work.catalog.Touch(work.found.object.id);
  Reload(work);
}

void TableDefinition::Switch(Work& work, const SwitchParts& action) {
  constexpr int kDisabled = 16384;
  for (const std::string& name : action.names) {
    const std::optional<CatalogObject> object = work.catalog.FindObject(name);
    if (!object || object->parent != work.found.object.id) {
      Fail(4917, {name});
    }
  }
  const auto set = [&](const Cell& name) {
    work.catalog.Run(
        "update {}sysobjects set status = (status & ~?1) | ?2 where parent_obj = ?3 and xtype in "
        "('TR', 'C ', 'F ') and (xtype = 'TR') = ?4 and (?5 is null or name = ?5)",
        kDisabled, action.enable ? 0 : kDisabled, work.found.object.id, action.triggers ? 1 : 0,
        name);
  };
  for (const std::string& name : action.names) set(name);
  if (action.names.empty()) set({});
  Follow(work);
}

void TableDefinition::RenameTable(const FoundObject& found, const std::string& name) {
  WriteScope scope(workspace_, found.database, found.alias, found.object.id);
  Catalog catalog = resolver_.CatalogAt(found);
  workspace_.connection().Execute("alter table " + catalog.Path(found.object.name) + " rename to " +
                                  QuoteName(name));
  catalog.Run("update {}sysobjects set name = ? where id = ?", name, found.object.id);
  catalog.Run("update {}sysindexes set name = ? where id = ? and indid = 0", name, found.object.id);
  catalog.Touch(found.object.id);
  scope.Commit();
}

void TableDefinition::RenameColumn(const FoundObject& found, const std::string& column,
                                   const std::string& name) {
  WriteScope scope(workspace_, found.database, found.alias, found.object.id);
  Catalog catalog = resolver_.CatalogAt(found);
  workspace_.connection().Execute("alter table " + catalog.Path(found.object.name) +
                                  " rename column " + QuoteName(column) + " to " + QuoteName(name));
  catalog.Run("update {}syscolumns set name = ?1 where id = ?2 and name = ?3", name,
              found.object.id, column);
  catalog.Touch(found.object.id);
  scope.Commit();
}

}  // namespace dbkeeper::server
