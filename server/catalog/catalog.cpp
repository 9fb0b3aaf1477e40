#include "server/catalog/catalog.h"

#include <algorithm>

#include "server/catalog/system_tables.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

// The server tells keys of every kind apart by "K" in sysobjects.type.
std::string_view OldType(std::string_view xtype) {
  return xtype == "PK" || xtype == "UQ" ? "K " : xtype;
}

int SystemStatus(std::string_view xtype) {
  if (xtype == "S") return 1;
  if (xtype == "V") return 2;
  if (xtype == "U") return 3;
  if (xtype == "P") return 4;
  if (xtype == "TR") return 8;
  return 0;
}

constexpr std::int64_t kDeleteCascade = 4096;
constexpr std::int64_t kUpdateCascade = 8192;
constexpr std::int64_t kDisabled = 16384;

std::optional<CatalogObject> ReadObject(SqliteStatement row) {
  if (!row.Step()) return std::nullopt;
  return CatalogObject{.id = row.Integer(0),
                       .name = row.Text(1),
                       .xtype = std::string(TrimRight(row.Bytes(2))),
                       .parent = row.Integer(3),
                       .info = row.Integer(4),
                       .status = row.Integer(5),
                       .owner = row.Integer(6)};
}

std::string QuotedList(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + QuoteName(name);
  return list;
}

}  // namespace

const CatalogColumn* CatalogTable::FindColumn(std::string_view name) const {
  const auto found =
      std::ranges::find_if(columns, [&](const auto& c) { return SameName(c.name, name); });
  return found == columns.end() ? nullptr : &*found;
}

const CatalogIndex* CatalogTable::FindIndex(std::string_view name) const {
  const auto found = std::ranges::find_if(
      indexes, [&](const auto& i) { return !i.keys.empty() && SameName(i.name, name); });
  return found == indexes.end() ? nullptr : &*found;
}

const CatalogIndex* CatalogTable::PrimaryKey() const {
  const auto found =
      std::ranges::find_if(indexes, [](const auto& i) { return i.Has(IndexStatus::kPrimaryKey); });
  return found == indexes.end() ? nullptr : &*found;
}

ColumnInfo ColumnInfoOf(const CatalogColumn& column) {
  ColumnInfo info;
  info.name = column.name;
  info.type = column.type;
  info.default_text = column.default_text;
  return info;
}

ObjectInfo InfoOf(const CatalogTable& table) {
  ObjectInfo info;
  info.name = table.object.name;
  for (const CatalogColumn& column : table.columns) info.columns.push_back(ColumnInfoOf(column));
  return info;
}

CatalogColumn PlainColumn(std::string name, std::int64_t colid, const SqlType& type) {
  CatalogColumn column;
  column.name = std::move(name);
  column.colid = colid;
  column.type = type;
  if (FamilyOf(type.id) == TypeFamily::kText) column.collation = kDefaultCollation;
  return column;
}

Catalog::Catalog(SqliteConnection& connection, std::string alias)
    : connection_(connection), alias_(std::move(alias)), quoted_(QuoteName(alias_) + ".") {}

std::string Catalog::Placed(CatalogSql sql) const {
  std::string placed(sql.text);
  for (std::size_t at = placed.find("{}"); at != std::string::npos; at = placed.find("{}", at)) {
    placed.replace(at, 2, quoted_);
    at += quoted_.size();
  }
  return placed;
}

std::optional<CatalogObject> Catalog::FindObject(std::string_view name) {
  return ReadObject(Prepare(
      "select id, name, xtype, parent_obj, info, status, uid from {}sysobjects where name = ?1",
      name));
}

std::optional<CatalogObject> Catalog::FindObject(std::int64_t id) {
  return ReadObject(Prepare(
      "select id, name, xtype, parent_obj, info, status, uid from {}sysobjects where id = ?1", id));
}

std::string Catalog::UserName(std::int64_t uid) {
  // Dbo keeps its name, and the temporary tables, which are its own, have no users beside them.
  return uid == kDbo ? "dbo" : TextOf("select name from {}sysusers where uid = ?1", uid);
}

std::vector<CatalogColumn> Catalog::Columns(std::int64_t id) {
  std::vector<CatalogColumn> columns;
  SqliteStatement row = Prepare(
      "select c.name, c.colid, c.xtype, c.xusertype, c.length, c.xprec, c.xscale, c.isnullable, "
      "c.collation, c.cdefault, c.colstat, i.seed, i.increment from {}syscolumns c left join "
      "{}\"#identity\" i on i.id = c.id and i.colid = c.colid where c.id = ?1 order by c.colid",
      id);
  while (row.Step()) {
    CatalogColumn column;
    column.name = row.Text(0);
    column.colid = row.Integer(1);
    column.type = TypeOfStored(static_cast<int>(row.Integer(2)), static_cast<int>(row.Integer(4)),
                               static_cast<int>(row.Integer(5)), static_cast<int>(row.Integer(6)));
    column.type.nullable = row.Integer(7) != 0;
    column.is_sysname = row.Integer(3) == kSysnameType;
    column.collation = row.Text(8);
    column.default_id = row.Integer(9);
    column.row_guid = (row.Integer(10) & 2) != 0;
    if (!row.IsNull(11)) column.identity = CatalogIdentity{row.Integer(11), row.Integer(12)};
    if (column.default_id != 0) column.default_text = ObjectText(column.default_id);
    columns.push_back(std::move(column));
  }
  return columns;
}

std::vector<CatalogIndex> Catalog::Indexes(std::int64_t id) {
  std::vector<CatalogIndex> indexes;
  SqliteStatement row = Prepare(
      "select i.indid, i.name, i.status, c.name, substr(i.keys, k.keyno, 1) = x'01' from "
      "{}sysindexes i left join {}sysindexkeys k on k.id = i.id and k.indid = i.indid left join "
      "{}syscolumns c on c.id = k.id and c.colid = k.colid where i.id = ?1 order by i.indid, "
      "k.keyno",
      id);
  while (row.Step()) {
    if (indexes.empty() || indexes.back().indid != row.Integer(0)) {
      indexes.push_back({row.Integer(0), row.Text(1), row.Integer(2), {}});
    }
    if (!row.IsNull(3)) indexes.back().keys.push_back({row.Text(3), row.Integer(4) != 0});
  }
  return indexes;
}

std::vector<CatalogCheck> Catalog::Checks(std::int64_t id) {
  std::vector<CatalogCheck> checks;
  SqliteStatement row = Prepare(
      "select o.id, o.name, c.name, o.status from {}sysobjects o left join {}syscolumns c on c.id "
      "= o.parent_obj and c.colid = o.info where o.parent_obj = ?1 and o.xtype = 'C ' order by "
      "o.id",
      id);
  while (row.Step()) {
    checks.push_back({.id = row.Integer(0),
                      .name = row.Text(1),
                      .column = row.Text(2),
                      .text = ObjectText(row.Integer(0)),
                      .disabled = (row.Integer(3) & kDisabled) != 0});
  }
  return checks;
}

std::vector<CatalogForeignKey> Catalog::ForeignKeys(const Cell& child, const Cell& parent) {
  std::vector<CatalogForeignKey> keys;
  SqliteStatement row = Prepare(
      "select f.constid, o.name, f.fkeyid, f.rkeyid, t.name, r.name, fc.name, rc.name, o.status "
      "from {}sysforeignkeys f join {}sysobjects o on o.id = f.constid join {}sysobjects t on t.id "
      "= f.fkeyid join {}sysobjects r on r.id = f.rkeyid join {}syscolumns fc on fc.id = f.fkeyid "
      "and fc.colid = f.fkey join {}syscolumns rc on rc.id = f.rkeyid and rc.colid = f.rkey where "
      "f.fkeyid = ?1 or f.rkeyid = ?2 order by f.constid, f.keyno",
      child, parent);
  while (row.Step()) {
    if (keys.empty() || keys.back().id != row.Integer(0)) {
      const std::int64_t status = row.Integer(8);
      keys.push_back({.id = row.Integer(0),
                      .name = row.Text(1),
                      .child = row.Integer(2),
                      .parent = row.Integer(3),
                      .child_table = row.Text(4),
                      .parent_table = row.Text(5),
                      .child_columns = {},
                      .parent_columns = {},
                      .delete_cascade = (status & kDeleteCascade) != 0,
                      .update_cascade = (status & kUpdateCascade) != 0,
                      .disabled = (status & kDisabled) != 0});
    }
    keys.back().child_columns.push_back(row.Text(6));
    keys.back().parent_columns.push_back(row.Text(7));
  }
  return keys;
}

CatalogTable Catalog::Table(const CatalogObject& object) {
  return {object, Columns(object.id), Indexes(object.id), Checks(object.id),
          ForeignKeys(object.id, {})};
}

std::string Catalog::ObjectText(std::int64_t id) {
  std::string text;
  SqliteStatement row =
      Prepare("select text from {}syscomments where id = ?1 order by number, colid", id);
  while (row.Step()) text += row.Bytes(0);
  return text;
}

std::int64_t Catalog::NewId() {
  // The server steps through the numbers in the same way, so that ids look familiar.
  constexpr std::int64_t kFirst = 1'977'058'079;
  constexpr std::int64_t kStep = 16'000'057;
  constexpr std::int64_t kRange = 2'147'483'647;
  std::int64_t id = IntegerOf(0, "select id from {}sysobjects order by rowid desc limit 1");
  id = id < 1000 ? kFirst : id;
  do {
    id = (id + kStep) % kRange;
  } while (id < 1000 || FindObject(id));
  return id;
}

std::int64_t Catalog::AddObject(std::string_view name, std::string_view xtype, std::int64_t parent,
                                std::int64_t info, std::int64_t fixed_id) {
  const std::int64_t id = fixed_id != 0 ? fixed_id : NewId();
  const std::string padded = std::string(xtype) + (xtype.size() == 1 ? " " : "");
  const std::string old_type(OldType(padded));
  Run("insert into {}sysobjects values (?1, ?2, ?3, 1, ?4, 0, 0, 0, ?5, ?6, 0, 0, 0, ?7, 1, ?8, 0, "
      "?6, 0, 0, 0, 0, 0, ?9, 0)",
      name, id, padded, info, parent, CurrentTime(), old_type, SystemStatus(xtype),
      xtype == "S" ? 2 : 0);
  return id;
}

void Catalog::WriteColumn(std::int64_t id, const CatalogColumn& column) {
  const StoredType stored = StoredTypeOf(column.type, column.is_sysname);
  const int status = (column.type.nullable ? 8 : 0) + (column.identity ? 128 : 0);
  const int colstat = (column.identity ? 1 : 0) + (column.row_guid ? 2 : 0);
  const Cell none;
  Run("insert into {}syscolumns values (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, 0, 0, 0, ?10, ?11, 0, "
      "0, ?9, null, 0, ?12, null, ?13, ?14, ?15, null, ?16, ?17, 0, 0, ?18, ?19, null)",
      column.name, id, stored.xtype, column.type.nullable ? 0 : 1, stored.xusertype, stored.length,
      stored.xprec, stored.xscale, column.colid, colstat, column.default_id,
      column.collation.empty() ? none : Cell(kJapaneseCollationId), status, stored.type,
      stored.usertype, stored.prec, stored.scale, column.type.nullable ? 1 : 0,
      column.collation.empty() ? none : Cell(column.collation));
}

void Catalog::AddColumn(std::int64_t id, const CatalogColumn& column) {
  WriteColumn(id, column);
  if (!column.identity) return;
  Run("insert into {}\"#identity\"(id, colid, seed, increment, last) values (?, ?, ?, ?, null)", id,
      column.colid, column.identity->seed, column.identity->increment);
}

void Catalog::ChangeColumn(std::int64_t id, const CatalogColumn& column) {
  Run("delete from {}syscolumns where id = ? and colid = ?", id, column.colid);
  WriteColumn(id, column);
}

void Catalog::AddText(std::int64_t id, std::string_view text) {
  constexpr int kCharactersPerRow = 4000;
  int row = 0;
  while (!text.empty() || row == 0) {
    const std::string_view piece = CutText(text, kCharactersPerRow, TextUnit::kUtf16Unit);
    Run("insert into {}syscomments values (?, 1, ?, 2, null, 2, 0, 0, 0, ?)", id, ++row, piece);
    text.remove_prefix(piece.size());
  }
}

void Catalog::ReplaceText(std::int64_t id, std::string_view text) {
  Run("delete from {}syscomments where id = ?", id);
  AddText(id, text);
  Touch(id);
}

void Catalog::AddIndex(std::int64_t id, const CatalogIndex& index, const CatalogTable& table) {
  std::string directions;
  std::int64_t number = 0;
  for (const KeyColumn& key : index.keys) {
    directions += key.descending ? '\1' : '\0';
    Run("insert into {}sysindexkeys values (?, ?, ?, ?)", id, index.indid,
        table.FindColumn(key.name)->colid, ++number);
  }
  Run("insert into {}sysindexes values (?, ?, null, ?, null, 0, ?, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, "
      "0, 0, 0, null, 0, 0, 0, ?, ?, null, 0, 0)",
      id, index.status, index.indid, number, number == 0 ? Cell() : Cell(Blob{directions}),
      index.name);
}

void Catalog::AddForeignKey(const CatalogForeignKey& key, const CatalogTable& child,
                            const CatalogTable& parent) {
  Run("update {}sysobjects set status = ? where id = ?",
      (key.delete_cascade ? kDeleteCascade : 0) + (key.update_cascade ? kUpdateCascade : 0) +
          (key.disabled ? kDisabled : 0),
      key.id);
  for (std::size_t i = 0; i < key.child_columns.size(); ++i) {
    Run("insert into {}sysforeignkeys values (?, ?, ?, ?, ?, ?)", key.id, key.child, key.parent,
        child.FindColumn(key.child_columns[i])->colid,
        parent.FindColumn(key.parent_columns[i])->colid, static_cast<std::int64_t>(i + 1));
  }
}

void Catalog::DropIndex(std::int64_t id, std::int64_t indid) {
  Run("delete from {}sysindexes where id = ? and indid = ?", id, indid);
  Run("delete from {}sysindexkeys where id = ? and indid = ?", id, indid);
  Run("delete from {}sysproperties where id = ? and smallid = ? and type = 6", id, indid);
}

void Catalog::DropObject(std::int64_t id) {
  std::vector<std::int64_t> parts;
  SqliteStatement part = Prepare("select id from {}sysobjects where parent_obj = ?", id);
  while (part.Step()) parts.push_back(part.Integer(0));
  for (const std::int64_t child : parts) DropObject(child);
  for (const char* table : {"sysobjects", "syscolumns", "sysindexes", "sysindexkeys", "syscomments",
                            "sysprotects", "sysproperties", "#identity"}) {
    connection_.Run("delete from " + Path(table) + " where id = ?", id);
  }
  Run("delete from {}sysforeignkeys where constid = ?1 or fkeyid = ?1", id);
  Run("update {}syscolumns set cdefault = 0 where cdefault = ?", id);
}

void Catalog::DropColumn(std::int64_t id, std::int64_t colid) {
  Run("delete from {}syscolumns where id = ? and colid = ?", id, colid);
  Run("delete from {}\"#identity\" where id = ? and colid = ?", id, colid);
  Run("delete from {}sysproperties where id = ? and smallid = ? and type = 4", id, colid);
}

void Catalog::Touch(std::int64_t id) {
  Run("update {}sysobjects set schema_ver = schema_ver + 16 where id = ?", id);
}

void Catalog::Define(const CatalogTable& table, NameResolver& resolver) {
  connection_.Execute("CREATE TABLE " + Path(table.object.name) + TableBody(table, resolver));
}

std::string Catalog::TableBody(const CatalogTable& table, NameResolver& resolver) {
  std::string sql = "(";
  const ObjectInfo info = InfoOf(table);
  std::string separator;
  for (const CatalogColumn& column : table.columns) {
    sql += separator + QuoteName(column.name) + " " + SqliteDeclaration(column.type);
    if (!column.type.nullable) sql += " NOT NULL";
    separator = ", ";
  }
  Translator translator(resolver);
  for (const CatalogCheck& check : table.checks) {
    if (check.disabled) continue;
    sql += ", CONSTRAINT " + QuoteName(check.name) + " CHECK(" +
           translator.CheckExpression(check.text, info) + ")";
  }
  for (const CatalogForeignKey& key : table.foreign_keys) {
    if (key.disabled) continue;
    sql += ", CONSTRAINT " + QuoteName(key.name) + " FOREIGN KEY(" + QuotedList(key.child_columns) +
           ") REFERENCES " + QuoteName(key.parent_table) + "(" + QuotedList(key.parent_columns) +
           ")";
    if (key.delete_cascade) sql += " ON DELETE CASCADE";
    if (key.update_cascade) sql += " ON UPDATE CASCADE";
  }
  return sql + ")";
}

void Catalog::Redefine(const CatalogTable& table, NameResolver& resolver) {
  // SQLite's own way to change constraints: the stored text is replaced and the schema's version
  // raised, so that every connection reads it anew. The layout of the rows must stay the same.
  connection_.Execute("pragma writable_schema = on");
  connection_.Run(
      "update " + quoted_ + "sqlite_schema set sql = ?1 where type = 'table' and name = ?2",
      "CREATE TABLE " + QuoteName(table.object.name) + TableBody(table, resolver),
      table.object.name);
  RaiseVersion();
  connection_.Execute("pragma writable_schema = off");
}

void Catalog::RaiseVersion() {
  const std::int64_t version = connection_.IntegerOf(0, "pragma " + quoted_ + "schema_version");
  connection_.Execute("pragma " + quoted_ + "schema_version = " + std::to_string(version + 1));
}

std::string Catalog::OrphanSql(const CatalogForeignKey& key) const {
  std::string given;
  std::string match;
  for (std::size_t i = 0; i < key.child_columns.size(); ++i) {
    const std::string child = "c." + QuoteName(key.child_columns[i]);
    given += child + " is not null and ";
    match += (i == 0 ? "" : " and ") + ("p." + QuoteName(key.parent_columns[i])) + " = " + child;
  }
  return "select 1 from " + Path(key.child_table) + " c where " + given +
         "not exists (select 1 from " + Path(key.parent_table) + " p where " + match + ") limit 1";
}

std::string Catalog::IndexSqliteName(std::int64_t id, std::int64_t indid) {
  return "#ix" + std::to_string(id) + "_" + std::to_string(indid);
}

std::string Catalog::NullIndexSqliteName(std::int64_t id, std::int64_t indid) {
  return IndexSqliteName(id, indid) + "n";
}

std::string Catalog::IndexSql(const CatalogTable& table, const CatalogIndex& index) const {
  const bool unique = index.Has(IndexStatus::kUnique);
  const std::string create = unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
  const std::string on = " ON " + QuoteName(table.object.name) + "(";
  std::string keys;
  std::string keys_with_null;
  std::string any_null;
  for (const KeyColumn& key : index.keys) {
    const std::string name = QuoteName(key.name);
    keys += (keys.empty() ? "" : ", ") + name + (key.descending ? " DESC" : "");
    const TypeId type = table.FindColumn(key.name)->type.id;
    const std::string_view collation = CollationOf(type);
    keys_with_null += keys_with_null.empty() ? "" : ", ";
    keys_with_null += "ifnull(" + name + (IsStoredAsBytes(type) ? ", 0)" : ", x'')");
    if (!collation.empty()) keys_with_null.append(" COLLATE ").append(collation);
    any_null += (any_null.empty() ? "" : " OR ") + name + " IS NULL";
  }
  std::string sql = create + Path(IndexSqliteName(table.object.id, index.indid)) + on + keys + ")";
  // The server takes two nulls for equal, SQLite does not. A null's stand-in is of another storage
  // class than the column's values.
  if (unique && !index.Has(IndexStatus::kPrimaryKey)) {
    sql += "; " + create + Path(NullIndexSqliteName(table.object.id, index.indid)) + on +
           keys_with_null + ") WHERE " + any_null;
  }
  return sql;
}

}  // namespace dbkeeper::server
