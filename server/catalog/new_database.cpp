// What a new database starts with.
#include "server/catalog/system_tables.h"

#include <map>
#include <string_view>
#include <vector>

#include "server/sql/parser.h"
#include "server/storage/host_file.h"
#include "server/storage/text_order.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

// The indexes by which the engine reads the system tables; a "#" keeps their names apart from
// everything a client can make.
constexpr std::pair<const char*, const char*> kSystemIndexes[] = {
    {"#sysobjects1", "sysobjects(id)"},
    {"#sysobjects2", "sysobjects(name)"},
    {"#sysobjects3", "sysobjects(parent_obj)"},
    {"#syscolumns1", "syscolumns(id, colid)"},
    {"#sysindexes1", "sysindexes(id, indid)"},
    {"#sysindexkeys1", "sysindexkeys(id, indid, keyno)"},
    {"#syscomments1", "syscomments(id)"},
    {"#sysproperties1", "sysproperties(id)"},
    {"#sysprotects1", "sysprotects(id)"},
    {"#sysforeignkeys1", "sysforeignkeys(fkeyid)"},
    {"#sysforeignkeys2", "sysforeignkeys(rkeyid)"},
};

// Users, and roles, which have themselves as their group; dbo is the login of the owner.
constexpr CatalogSql kFillUsers = R"(
with fixed(uid, name, is_role) as (values (0, 'public', 1), (1, 'dbo', 0), (2, 'guest', 0),
  (3, 'INFORMATION_SCHEMA', 0), (4, 'system_function_schema', 0), (16384, 'db_owner', 1),
  (16385, 'db_accessadmin', 1), (16386, 'db_securityadmin', 1), (16387, 'db_ddladmin', 1),
  (16389, 'db_backupoperator', 1), (16390, 'db_datareader', 1), (16391, 'db_datawriter', 1),
  (16392, 'db_denydatareader', 1), (16393, 'db_denydatawriter', 1))
insert into {}sysusers select uid, 0, name, case uid when 1 then ?1 end, null, ?2, ?2, 0, null,
  uid * is_role, null, uid = 1, 1 - is_role, 0, 0, 0, 1 - is_role, 0, is_role, 0 from fixed)";

void FillType(SqliteConnection& connection, std::string_view name, const SqlType& type) {
  const bool is_sysname = name == "sysname";
  const StoredType stored = StoredTypeOf(type, is_sysname);
  const bool is_text = FamilyOf(type.id) == TypeFamily::kText;
  const bool variable = name.starts_with("var") || name.starts_with("nvar");
  const int precision = IsNationalText(type.id) ? type.length : type.precision;
  connection.Run(
      "insert into systypes values (?, ?, 0, ?, ?, ?, ?, 0, 0, ?, 0, ?, ?, ?, 1, ?, "
      "null, ?, ?, ?)",
      name, stored.xtype, stored.xusertype, stored.length, precision, stored.xscale,
      is_sysname ? 1 : 4, is_text ? Cell(kJapaneseCollationId) : Cell(), stored.usertype,
      variable ? 1 : 0, stored.type, precision, stored.scale,
      is_text ? Cell(std::string(kDefaultCollation)) : Cell());
}

// By number, each with the largest measures that it can have.
void FillTypes(SqliteConnection& connection) {
  std::map<int, const TypeFacts*> types;
  for (const TypeFacts& facts : kTypes) types[facts.xtype] = &facts;
  for (const auto& [number, facts] : types) {
    if (facts->id == TypeId::kNVarChar) {
      FillType(connection, "sysname", {facts->id, 128, 0, 0, true});
    }
    FillType(connection, facts->name,
             {facts->id, facts->maximum,
              facts->TakesPrecision() ? facts->maximum : facts->precision, facts->maximum, true});
  }
}

}  // namespace

void MakeSystemTables(SqliteConnection& connection, const std::string& alias,
                      std::string_view definitions) {
  const std::string schema = QuoteName(alias) + ".";
  for (const Statement& statement : ParseBatch(definitions)) {
    const auto& table = std::get<CreateTableStatement>(statement.node);
    std::string sql = "create table " + schema + QuoteName(table.table.name) + "(";
    std::string separator;
    for (const ColumnDefinition& column : table.columns) {
      sql += separator + QuoteName(column.name) + " " + SqliteDeclaration(column.type);
      separator = ", ";
    }
    connection.Execute(sql + ")");
  }
  if (definitions != DatabaseSystemTables()) return;
  for (const auto& [name, columns] : kSystemIndexes) {
    connection.Execute("create index " + schema + QuoteName(name) + " on " + columns);
  }
  connection.Execute("create table " + schema +
                     "\"#identity\"(id integer primary key, colid integer, seed integer, "
                     "increment integer, last integer)");
}

void RegisterSystemTables(Catalog& catalog, std::string_view definitions, int first_id) {
  for (const Statement& statement : ParseBatch(definitions)) {
    const auto& table = std::get<CreateTableStatement>(statement.node);
    // The server has these two as views over tables that nobody else needs.
    const bool is_view = table.table.name == "sysconstraints" || table.table.name == "syslogins";
    const std::int64_t id =
        catalog.AddObject(table.table.name, is_view ? "V" : "S", 0, 0, first_id++);
    std::int64_t colid = 0;
    for (const ColumnDefinition& definition : table.columns) {
      CatalogColumn column = PlainColumn(definition.name, ++colid, definition.type);
      column.is_sysname = definition.type_name == "sysname";
      catalog.AddColumn(id, column);
    }
  }
}

SqliteConnection MakeDatabaseFile(const std::filesystem::path& file, const std::string& owner_sid) {
  RemoveWithLogs(file);
  SqliteConnection connection(file.string());
  RegisterServerFunctions(connection.handle());
  connection.Execute("pragma journal_mode = wal");
  connection.Execute("begin");
  MakeSystemTables(connection, "main", DatabaseSystemTables());
  Catalog catalog(connection, "main");
  RegisterSystemTables(catalog, DatabaseSystemTables(), 1);
  FillTypes(connection);
  catalog.Run(kFillUsers, Cell(Blob{owner_sid}), CurrentTime());
  catalog.Run("insert into {}sysmembers values (1, 16384)");
  MarkTextOrder(connection, "main");
  connection.Execute("commit");
  return connection;
}

}  // namespace dbkeeper::server
