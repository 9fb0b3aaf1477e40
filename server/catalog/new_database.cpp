// What a new database starts with.
#include "server/catalog/system_tables.h"

#include <vector>

#include "server/sql/parser.h"
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

void FillTypes(SqliteConnection& connection, const std::string& table) {
  for (const SystemType& type : SystemTypes()) {
    const bool variable = type.name.starts_with("var") || type.name.starts_with("nvar");
    connection.Run("insert into " + table +
                       " values (?, ?, 0, ?, ?, ?, ?, 0, 0, ?, 0, ?, ?, ?, 1, ?, null, ?, ?, ?)",
                   type.name, type.xtype, type.xusertype, type.length, type.precision,
                   type.scale < 0 ? 0 : type.scale, type.name == "sysname" ? 1 : 4,
                   type.collated ? Cell(kJapaneseCollationId) : Cell(), type.usertype,
                   variable ? 1 : 0, type.type, type.precision,
                   type.scale < 0 ? Cell() : Cell(static_cast<std::int64_t>(type.scale)),
                   type.collated ? Cell(std::string(kDefaultCollation)) : Cell());
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

void FillNewDatabase(SqliteConnection& connection, const std::string& alias,
                     const std::string& owner_sid) {
  MakeSystemTables(connection, alias, DatabaseSystemTables());
  Catalog catalog(connection, alias);
  RegisterSystemTables(catalog, DatabaseSystemTables(), 1);
  FillTypes(connection, catalog.Path("systypes"));
  catalog.Run(kFillUsers, Cell(Blob{owner_sid}), CurrentTime());
  catalog.Run("insert into {}sysmembers values (1, 16384)");
}

}  // namespace dbkeeper::server
