#include "server/engine/table_definition.h"

#include <algorithm>

#include "server/catalog/system_tables.h"
#include "server/types/decimal.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

bool IsKeyKind(const Constraint& constraint) {
  return constraint.kind == ConstraintKind::kPrimaryKey ||
         constraint.kind == ConstraintKind::kUnique;
}

// Throws SqlError 8115 for numbers that a column of the type, or 64 bits, cannot hold.
CatalogIdentity IdentityOf(const Identity& identity, const SqlType& type) {
  const auto number = [&](const std::string& text) {
    const std::optional<Decimal> value = ParseDecimal(text);
    if (!value || !FitsType(*value, type) || !FitsInteger(*value, TypeId::kBigInt)) {
      Fail(8115, {"IDENTITY", NameOf(type.id)});
    }
    return static_cast<std::int64_t>(value->value);
  };
  // Steps go down in types without negative numbers too.
  const std::string& step = identity.increment;
  const std::int64_t size = number(step.starts_with('-') ? step.substr(1) : step);
  return {number(identity.seed), step.starts_with('-') ? -size : size};
}

}  // namespace

bool TakesIdentity(const SqlType& type) {
  const TypeFamily family = FamilyOf(type.id);
  return (family == TypeFamily::kInteger && type.id != TypeId::kBit) ||
         (family == TypeFamily::kDecimal && type.scale == 0);
}

ServerMessage ConflictMessage(std::string_view verb, std::string_view kind,
                              std::string_view constraint, const DatabaseInfo& database,
                              std::string_view table, const std::string& column) {
  const std::string what = (column.empty() ? "TABLE " : "COLUMN ") + std::string(kind);
  return MakeMessage(547, {verb, what, constraint, database.name, table,
                           column.empty() ? "" : ", column '" + column + "'"});
}

void TableDefinition::NeedOwner(const FoundObject& place, std::string_view statement) {
  if (place.alias != "temp") workspace_.NeedOwner(place.database, statement);
}

FoundObject TableDefinition::NeedOwn(const ObjectName& name, std::string_view statement,
                                     int error) {
  FoundObject found = resolver_.Need(name, "U", error);
  NeedOwner(found, statement);
  return found;
}

TableDefinition::Work TableDefinition::Start(const FoundObject& found) {
  Catalog catalog = resolver_.CatalogAt(found);
  CatalogTable table = catalog.Table(found.object);
  return {found, std::move(catalog), std::move(table)};
}

void TableDefinition::Reload(Work& work) { work.table = work.catalog.Table(work.found.object); }

void TableDefinition::Follow(Work& work) {
  work.catalog.Touch(work.found.object.id);
  Reload(work);
  work.catalog.Redefine(work.table, resolver_);
}

std::string TableDefinition::NameFor(Work& work, const Constraint& constraint,
                                     std::string_view prefix, std::string_view column) {
  if (!constraint.name.empty()) {
    if (work.catalog.FindObject(constraint.name)) Fail(2714, {constraint.name});
    return constraint.name;
  }
  const auto first = [](std::string_view text, int count) {
    return std::string(CutText(text, count, TextUnit::kUtf16Unit)) + "__";
  };
  std::string name = std::string(prefix) + "__" + first(work.found.object.name, 9);
  if (!column.empty()) name += first(column, 5);
  const std::int64_t number = work.catalog.IntegerOf(0, "select count(*) from {}sysobjects");
  constexpr std::int64_t kSpread = 2'654'435'761;
  const std::int64_t hash = ((work.found.object.id + number) * kSpread) & 0x7FFFFFFF;
  for (int shift = 24; shift >= 0; shift -= 8) {
    name += HexDigits(std::string(1, static_cast<char>(hash >> shift)));
  }
  return name;
}

CatalogColumn TableDefinition::MakeColumn(const Work& work, const ColumnDefinition& definition) {
  if (work.table.FindColumn(definition.name) != nullptr) {
    Fail(2705, {definition.name, work.found.object.name});
  }
  const std::int64_t last = work.table.columns.empty() ? 0 : work.table.columns.back().colid;
  CatalogColumn column = PlainColumn(definition.name, last + 1, definition.type);
  column.is_sysname = definition.type_name == "sysname";
  column.row_guid = definition.row_guid;
  if (!column.collation.empty() && !definition.collation.empty()) {
    column.collation = definition.collation;
  }
  if (!definition.null_said && (column.is_sysname || column.type.id == TypeId::kTimestamp)) {
    column.type.nullable = false;
  }
  if (definition.identity) {
    if (std::ranges::any_of(work.table.columns,
                            [](const auto& c) { return c.identity.has_value(); })) {
      Fail(2744, {work.found.object.name});
    }
    if (!TakesIdentity(column.type) || (definition.null_said && column.type.nullable)) {
      Fail(2749, {column.name});
    }
    column.identity = IdentityOf(*definition.identity, column.type);
    column.type.nullable = false;
  }
  return column;
}

void TableDefinition::AddDefault(Work& work, CatalogColumn& column, const Constraint& constraint) {
  if (column.default_id != 0) Fail(1781);
  // Refuses what cannot be evaluated.
  static_cast<void>(Translator(resolver_).DefaultExpression(constraint.text, column.type));
  const std::string name = NameFor(work, constraint, "DF", column.name);
  column.default_id = work.catalog.AddObject(name, "D", work.found.object.id, column.colid);
  column.default_text = constraint.text;
  work.catalog.AddText(column.default_id, constraint.text);
}

void TableDefinition::Create(const CreateTableStatement& statement) {
  FoundObject place = resolver_.Place(statement.table);
  Catalog catalog = resolver_.CatalogAt(place);
  if (!statement.table.owner.empty() && !SameName(statement.table.owner, "dbo")) {
    throw Unsupported("owners other than dbo");
  }
  NeedOwner(place, "CREATE TABLE");
  if (catalog.FindObject(statement.table.name)) Fail(2714, {statement.table.name});
  WriteScope scope(workspace_, place.database, place.alias);
  place.object = {.id = catalog.AddObject(statement.table.name, "U"),
                  .name = statement.table.name,
                  .xtype = "U"};
  Work work{place, catalog, {place.object, {}, {}, {}, {}}};
  std::vector<Constraint> constraints;
  for (const ColumnDefinition& definition : statement.columns) {
    for (const Constraint& constraint : definition.constraints) {
      constraints.push_back(constraint);
      // A check written with a column knows its column; the parser leaves that out.
      if (constraint.columns.empty()) constraints.back().columns = {{definition.name, false}};
    }
  }
  constraints.insert(constraints.end(), statement.constraints.begin(), statement.constraints.end());
  if (std::ranges::count(constraints, ConstraintKind::kPrimaryKey, &Constraint::kind) > 1) {
    Fail(8110, {statement.table.name});
  }
  for (const ColumnDefinition& definition : statement.columns) {
    CatalogColumn column = MakeColumn(work, definition);
    for (const Constraint& constraint : constraints) {
      const bool names_column = std::ranges::any_of(
          constraint.columns, [&](const auto& key) { return SameName(key.name, column.name); });
      if (constraint.kind != ConstraintKind::kPrimaryKey || !names_column) continue;
      if (definition.null_said && column.type.nullable) Fail(8111, {statement.table.name});
      column.type.nullable = false;
    }
    for (const Constraint& constraint : definition.constraints) {
      if (constraint.kind == ConstraintKind::kDefault) AddDefault(work, column, constraint);
    }
    catalog.AddColumn(place.object.id, column);
    work.table.columns.push_back(std::move(column));
  }
  catalog.AddIndex(place.object.id, {0, place.object.name, 0, {}}, work.table);
  catalog.Define(work.table, resolver_);
  Reload(work);
  AddConstraints(work, constraints, true);
  scope.Commit();
}

void TableDefinition::AddConstraints(Work& work, const std::vector<Constraint>& constraints,
                                     bool check_existing) {
  // Keys come first: a foreign key of the table may refer to the table itself.
  for (const Constraint& constraint : constraints) {
    if (IsKeyKind(constraint)) AddKey(work, constraint);
  }
  for (const Constraint& constraint : constraints) {
    if (constraint.kind == ConstraintKind::kCheck) AddCheck(work, constraint, check_existing);
    if (constraint.kind == ConstraintKind::kForeignKey) {
      AddForeignKey(work, constraint, check_existing);
    }
  }
  Follow(work);
}

void TableDefinition::AddKey(Work& work, const Constraint& constraint) {
  const bool primary = constraint.kind == ConstraintKind::kPrimaryKey;
  const std::string& table_name = work.found.object.name;
  if (primary && work.table.PrimaryKey() != nullptr) Fail(1779, {table_name});
  for (const KeyColumn& key : constraint.columns) {
    const CatalogColumn* column = work.table.FindColumn(key.name);
    if (column == nullptr) Fail(1911, {key.name});
    if (primary && column->type.nullable) Fail(8111, {table_name});
  }
  const bool has_clustered = std::ranges::any_of(
      work.table.indexes, [](const auto& i) { return i.Has(IndexStatus::kClustered); });
  CatalogIndex index;
  index.name = NameFor(work, constraint, primary ? "PK" : "UQ", "");
  index.status =
      IndexStatus::kUnique | (primary ? IndexStatus::kPrimaryKey : IndexStatus::kUniqueKey);
  if (constraint.clustered.value_or(primary && !has_clustered)) {
    index.status |= IndexStatus::kClustered;
  }
  index.keys = constraint.columns;
  work.catalog.AddObject(index.name, primary ? "PK" : "UQ", work.found.object.id);
  AddIndex(work, std::move(index));
}

void TableDefinition::AddIndex(Work& work, CatalogIndex index) {
  const std::int64_t id = work.found.object.id;
  for (std::size_t i = 0; i < index.keys.size(); ++i) {
    const CatalogColumn* column = work.table.FindColumn(index.keys[i].name);
    if (column == nullptr) Fail(1911, {index.keys[i].name});
    if (IsLargeObject(column->type.id)) Fail(1919, {column->name});
    for (std::size_t j = 0; j < i; ++j) {
      if (SameName(index.keys[i].name, index.keys[j].name)) Fail(1909, {column->name});
    }
    index.keys[i].name = column->name;
  }
  if (index.Has(IndexStatus::kClustered)) {
    for (const CatalogIndex& other : work.table.indexes) {
      if (other.Has(IndexStatus::kClustered)) Fail(1902, {work.found.object.name, other.name});
    }
    work.catalog.DropIndex(id, 0);
    index.indid = 1;
  } else {
    index.indid = 2;
    for (const CatalogIndex& other : work.table.indexes) {
      index.indid = std::max(index.indid, other.indid + 1);
    }
  }
  RefuseDuplicates(work, index);
  work.catalog.AddIndex(id, index, work.table);
  workspace_.connection().Execute(work.catalog.IndexSql(work.table, index));
  Reload(work);
}

void TableDefinition::RefuseDuplicates(Work& work, const CatalogIndex& index) {
  if (!index.Has(IndexStatus::kUnique)) return;
  std::string columns;
  for (const KeyColumn& key : index.keys) {
    columns += (columns.empty() ? "" : ", ") + QuoteName(key.name);
  }
  // Unlike SQLite, the server takes two nulls for equal.
  SqliteStatement row = workspace_.connection().Prepare(
      "select " + columns + " from " + work.catalog.Path(work.found.object.name) + " group by " +
      columns + " having count(*) > 1 limit 1");
  if (!row.Step()) return;
  Fail(1505, {std::to_string(index.indid), row.IsNull(0) ? "<NULL>" : row.Bytes(0)});
}

void TableDefinition::AddCheck(Work& work, const Constraint& constraint, bool check_existing) {
  const ObjectInfo info = InfoOf(work.table);
  const std::string expression = Translator(resolver_).CheckExpression(constraint.text, info);
  const std::string column_name = constraint.columns.empty() ? "" : constraint.columns[0].name;
  const CatalogColumn* column = work.table.FindColumn(column_name);
  const std::string name = NameFor(work, constraint, "CK", column_name);
  if (check_existing &&
      workspace_.connection().IntegerOf(0, "select 1 from " + work.catalog.Path(info.name) +
                                               " where not (" + expression + ") limit 1") != 0) {
    throw SqlError(ConflictMessage("ALTER TABLE", "CHECK", name, work.found.database, info.name,
                                   column == nullptr ? "" : column->name));
  }
  const std::int64_t id = work.catalog.AddObject(name, "C", work.found.object.id,
                                                 column == nullptr ? 0 : column->colid);
  work.catalog.AddText(id, constraint.text);
}

void TableDefinition::AddForeignKey(Work& work, const Constraint& constraint, bool check_existing) {
  const std::string first = constraint.columns.empty() ? "" : constraint.columns[0].name;
  CatalogForeignKey key;
  key.name = NameFor(work, constraint, "FK", first);
  ObjectName parent_name = constraint.referenced_table;
  if (parent_name.database.empty() && !work.found.object.name.starts_with('#')) {
    parent_name.database = work.found.database.name;
  }
  const std::optional<FoundObject> parent_found = resolver_.Find(parent_name);
  if (!parent_found || parent_found->object.xtype != "U" ||
      parent_found->alias != work.found.alias) {
    Fail(1767, {key.name, constraint.referenced_table.Text()});
  }
  const CatalogTable parent = work.catalog.Table(parent_found->object);
  key.child = work.found.object.id;
  key.parent = parent.object.id;
  key.child_table = work.found.object.name;
  key.parent_table = parent.object.name;
  key.delete_cascade = constraint.delete_cascade;
  key.update_cascade = constraint.update_cascade;
  key.disabled = false;
  for (const KeyColumn& column : constraint.columns) {
    const CatalogColumn* child = work.table.FindColumn(column.name);
    if (child == nullptr) Fail(1769, {key.name, column.name, key.child_table});
    key.child_columns.push_back(child->name);
  }
  std::vector<std::string> referenced = constraint.referenced_columns;
  if (referenced.empty()) {
    if (parent.PrimaryKey() == nullptr) Fail(1773, {key.name, key.parent_table});
    for (const KeyColumn& column : parent.PrimaryKey()->keys) referenced.push_back(column.name);
  }
  for (std::size_t i = 0; i < referenced.size(); ++i) {
    const CatalogColumn* column = parent.FindColumn(referenced[i]);
    if (column == nullptr) Fail(1770, {key.name, referenced[i], key.parent_table});
    key.parent_columns.push_back(column->name);
    if (i >= key.child_columns.size()) continue;
    const CatalogColumn* child = work.table.FindColumn(key.child_columns[i]);
    if (child->type.id != column->type.id) {
      Fail(1778, {key.parent_table, column->name, key.child_table, child->name, key.name});
    }
  }
  const bool has_key = std::ranges::any_of(parent.indexes, [&](const CatalogIndex& index) {
    return index.Has(IndexStatus::kUnique) && index.keys.size() == key.parent_columns.size() &&
           std::ranges::all_of(index.keys, [&](const KeyColumn& column) {
             return std::ranges::find(key.parent_columns, column.name) != key.parent_columns.end();
           });
  });
  if (!has_key || key.child_columns.size() != key.parent_columns.size()) {
    Fail(1776, {key.parent_table, key.name});
  }
  if (check_existing && workspace_.connection().IntegerOf(0, work.catalog.OrphanSql(key)) != 0) {
    throw SqlError(ConflictMessage("ALTER TABLE", "FOREIGN KEY", key.name, work.found.database,
                                   key.parent_table, key.OnlyColumn(key.parent_columns)));
  }
  const CatalogColumn* only =
      key.child_columns.size() == 1 ? work.table.FindColumn(key.child_columns[0]) : nullptr;
  key.id = work.catalog.AddObject(key.name, "F", key.child, only == nullptr ? 0 : only->colid);
  work.catalog.AddForeignKey(key, work.table, parent);
}

void TableDefinition::CreateIndex(const CreateIndexStatement& statement) {
  const FoundObject found = NeedOwn(statement.table, "CREATE INDEX", 1088);
  WriteScope scope(workspace_, found.database, found.alias, found.object.id);
  Work work = Start(found);
  CatalogIndex index;
  index.name = statement.name;
  index.status = (statement.unique ? IndexStatus::kUnique : 0) |
                 (statement.clustered ? IndexStatus::kClustered : 0);
  index.keys = statement.columns;
  if (const CatalogIndex* existing = work.table.FindIndex(statement.name)) {
    if (!statement.drop_existing) Fail(1913, {found.object.name, statement.name});
    const CatalogIndex old = *existing;
    if (old.IsKey()) {
      const auto same = [](const KeyColumn& left, const KeyColumn& right) {
        return SameName(left.name, right.name) && left.descending == right.descending;
      };
      if (!statement.unique || !std::ranges::equal(old.keys, index.keys, same)) {
        Fail(1907, {statement.name});
      }
      index.status |= old.status & (IndexStatus::kPrimaryKey | IndexStatus::kUniqueKey);
    }
    RemoveIndex(work, old);
  }
  if (statement.ignore_duplicates) throw Unsupported("indexes with ignore_dup_key");
  AddIndex(work, std::move(index));
  scope.Commit();
}

void TableDefinition::DropIndex(const DropIndexStatement::Item& item) {
  const std::string written = item.table.Text() + "." + item.index;
  const std::optional<FoundObject> found = resolver_.Find(item.table);
  if (!found || found->object.xtype != "U") Fail(3701, {"index", written});
  Work work = Start(*found);
  const CatalogIndex* index = work.table.FindIndex(item.index);
  if (index == nullptr) Fail(3701, {"index", written});
  if (index->Has(IndexStatus::kPrimaryKey)) Fail(3723, {written, "PRIMARY KEY"});
  if (index->Has(IndexStatus::kUniqueKey)) Fail(3723, {written, "UNIQUE KEY"});
  NeedOwner(*found, "DROP INDEX");
  WriteScope scope(workspace_, found->database, found->alias, found->object.id);
  const CatalogIndex old = *index;
  RemoveIndex(work, old);
  scope.Commit();
}

void TableDefinition::RemoveIndex(Work& work, const CatalogIndex& index) {
  const std::int64_t id = work.found.object.id;
  workspace_.connection().Execute(
      "drop index " + work.catalog.Path(Catalog::IndexSqliteName(id, index.indid)) +
      "; drop index if exists " + work.catalog.Path(Catalog::NullIndexSqliteName(id, index.indid)));
  work.catalog.DropIndex(id, index.indid);
  if (index.Has(IndexStatus::kClustered)) {
    work.catalog.AddIndex(id, {0, work.found.object.name, 0, {}}, work.table);
  }
  Reload(work);
}

void TableDefinition::Drop(const ObjectName& name) {
  const std::optional<FoundObject> found = resolver_.Find(name);
  if (!found || found->object.xtype == "PK") Fail(3701, {"table", name.Text()});
  if (found->IsSystem() && !name.name.starts_with('#')) Fail(3708, {"table", name.Text()});
  if (found->object.xtype == "V") Fail(3705, {"TABLE", name.Text(), "view", "VIEW"});
  if (found->object.xtype == "P") Fail(3705, {"TABLE", name.Text(), "procedure", "PROCEDURE"});
  if (found->object.xtype != "U") Fail(3701, {"table", name.Text()});
  NeedOwner(*found, "DROP TABLE");
  Catalog catalog = resolver_.CatalogAt(*found);
  for (const CatalogForeignKey& key : catalog.ReferencesTo(found->object.id)) {
    if (key.child != found->object.id) Fail(3726, {name.Text()});
  }
  WriteScope scope(workspace_, found->database, found->alias, found->object.id);
  workspace_.connection().Execute("drop table " + catalog.Path(found->object.name));
  catalog.DropObject(found->object.id);
  scope.Commit();
}

void TableDefinition::Truncate(const TruncateStatement& statement) {
  const FoundObject found = NeedOwn(statement.table, "TRUNCATE TABLE", 4701);
  Catalog catalog = resolver_.CatalogAt(found);
  for (const CatalogForeignKey& key : catalog.ReferencesTo(found.object.id)) {
    if (key.child != found.object.id) Fail(4712, {statement.table.Text()});
  }
  WriteScope scope(workspace_, found.database, found.alias, found.object.id);
  workspace_.connection().Execute("delete from " + catalog.Path(found.object.name));
  catalog.Run("update {}\"#identity\" set last = null where id = ?", found.object.id);
  scope.Commit();
}

CatalogObject TableDefinition::MakeFromColumns(const FoundObject& place, const std::string& name,
                                               const std::vector<ResultColumn>& columns) {
  NeedOwner(place, "CREATE TABLE");
  Catalog catalog = resolver_.CatalogAt(place);
  if (catalog.FindObject(name)) Fail(2714, {name});
  CatalogTable table;
  table.object = {.id = catalog.AddObject(name, "U"), .name = name, .xtype = "U"};
  for (const ResultColumn& source : columns) {
    if (source.name.empty()) Fail(8155, {std::to_string(table.columns.size() + 1), name});
    if (table.FindColumn(source.name) != nullptr) Fail(2705, {source.name, name});
    CatalogColumn column =
        PlainColumn(source.name, static_cast<std::int64_t>(table.columns.size()) + 1, source.type);
    if (source.identity) column.identity = CatalogIdentity{};
    catalog.AddColumn(table.object.id, column);
    table.columns.push_back(std::move(column));
  }
  catalog.AddIndex(table.object.id, {0, name, 0, {}}, table);
  catalog.Define(table, resolver_);
  return table.object;
}

void TableDefinition::AdoptIdentity(const FoundObject& found) {
  Catalog catalog = resolver_.CatalogAt(found);
  for (const CatalogColumn& column : catalog.Columns(found.object.id)) {
    if (!column.identity) continue;
    const std::string extreme = column.identity->increment > 0 ? "max" : "min";
    workspace_.connection().Run(
        "update " + catalog.Path("#identity") + " set last = (select " + extreme +
            "(value) from (select last as value union all select " + QuoteName(column.name) +
            " from " + catalog.Path(found.object.name) + ")) where id = ?1",
        found.object.id);
  }
}

}  // namespace dbkeeper::server
