// The system tables of one database as the engine reads and writes them. They are the one store of
// truth: what SQLite knows of a table is written from them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/sql/ast.h"
#include "server/sql/translator.h"
#include "server/storage/sqlite.h"
#include "server/types/datetime.h"
#include "server/types/text.h"

namespace dbkeeper::server {

// The user who owns a database, in its sysusers.
inline constexpr std::int64_t kDbo = 1;

struct CatalogObject {
  std::int64_t id = 0;
  std::string name;
  std::string xtype;  // "U", "S", "V", "P", "TR", "PK", "UQ", "F", "C", "D", "X"
  std::int64_t parent = 0;
  std::int64_t info = 0;  // the column of a constraint written with a column
  std::int64_t status = 0;
  std::int64_t owner = kDbo;  // in sysusers
};

struct CatalogIdentity {
  std::int64_t seed = 1;
  std::int64_t increment = 1;
};

struct CatalogColumn {
  std::string name;
  std::int64_t colid = 0;
  SqlType type;
  bool is_sysname = false;
  bool row_guid = false;
  std::string collation;
  std::optional<CatalogIdentity> identity;
  std::int64_t default_id = 0;
  std::string default_text;
};

// Bits of sysindexes.status.
struct IndexStatus {
  static constexpr std::int64_t kUnique = 2;
  static constexpr std::int64_t kClustered = 16;
  static constexpr std::int64_t kPrimaryKey = 2048;
  static constexpr std::int64_t kUniqueKey = 4096;
};

struct CatalogIndex {
  std::int64_t indid = 0;
  std::string name;
  std::int64_t status = 0;
  std::vector<KeyColumn> keys;
  bool Has(std::int64_t bit) const { return (status & bit) != 0; }
  // Whether it belongs to a constraint.
  bool IsKey() const { return Has(IndexStatus::kPrimaryKey | IndexStatus::kUniqueKey); }
};

struct CatalogCheck {
  std::int64_t id = 0;
  std::string name;
  std::string column;  // of a check written with its column
  std::string text;
  bool disabled = false;
};

struct CatalogForeignKey {
  std::int64_t id = 0;
  std::string name;
  std::int64_t child = 0;
  std::int64_t parent = 0;
  std::string child_table;
  std::string parent_table;
  std::vector<std::string> child_columns;
  std::vector<std::string> parent_columns;
  bool delete_cascade = false;
  bool update_cascade = false;
  bool disabled = false;
  // Of one side of the key; empty when there are several.
  static std::string OnlyColumn(const std::vector<std::string>& columns) {
    return columns.size() == 1 ? columns.front() : std::string();
  }
};

struct CatalogTable {
  CatalogObject object;
  std::vector<CatalogColumn> columns;
  std::vector<CatalogIndex> indexes;
  std::vector<CatalogCheck> checks;
  std::vector<CatalogForeignKey> foreign_keys;  // that this table has
  const CatalogColumn* FindColumn(std::string_view name) const;
  const CatalogIndex* FindIndex(std::string_view name) const;
  const CatalogIndex* PrimaryKey() const;
};

// A statement written in the program: in it "{}" stands for the database, "select * from
// {}sysusers".
struct CatalogSql {
  // NOLINTNEXTLINE(google-explicit-constructor): any literal, and nothing else
  consteval CatalogSql(const char* literal) : text(literal) {}
  std::string_view text;
};

class Catalog {
 public:
  // `alias` is the database's name in the connection ("main", "d7", "temp").
  Catalog(SqliteConnection& connection, std::string alias);

  const std::string& alias() const { return alias_; }
  // "\"d7\".\"name\""
  std::string Path(std::string_view name) const { return quoted_ + QuoteName(name); }

  // As the functions of the connection.
  template <typename... Values>
  void Run(CatalogSql sql, const Values&... values) {
    connection_.Run(Placed(sql), values...);
  }
  template <typename... Values>
  SqliteStatement Prepare(CatalogSql sql, const Values&... values) {
    return connection_.Prepare(Placed(sql), values...);
  }
  template <typename... Values>
  std::int64_t IntegerOf(std::int64_t otherwise, CatalogSql sql, const Values&... values) {
    return connection_.IntegerOf(otherwise, Placed(sql), values...);
  }
  template <typename... Values>
  std::string TextOf(CatalogSql sql, const Values&... values) {
    return connection_.TextOf(Placed(sql), values...);
  }

  std::optional<CatalogObject> FindObject(std::string_view name);
  std::optional<CatalogObject> FindObject(std::int64_t id);
  // Columns, without indexes and constraints.
  std::vector<CatalogColumn> Columns(std::int64_t id);
  CatalogTable Table(const CatalogObject& object);
  std::vector<CatalogIndex> Indexes(std::int64_t id);
  // Foreign keys that refer to the table.
  std::vector<CatalogForeignKey> ReferencesTo(std::int64_t id) { return ForeignKeys({}, id); }
  std::string ObjectText(std::int64_t id);
  // The user or role of that number.
  std::string UserName(std::int64_t uid);

  // All of these change the catalog only. They give back the id.
  std::int64_t AddObject(std::string_view name, std::string_view xtype, std::int64_t parent = 0,
                         std::int64_t info = 0, std::int64_t fixed_id = 0);
  void AddColumn(std::int64_t id, const CatalogColumn& column);
  void ChangeColumn(std::int64_t id, const CatalogColumn& column);
  void AddText(std::int64_t id, std::string_view text);
  void ReplaceText(std::int64_t id, std::string_view text);
  void AddIndex(std::int64_t id, const CatalogIndex& index, const CatalogTable& table);
  void AddForeignKey(const CatalogForeignKey& key, const CatalogTable& child,
                     const CatalogTable& parent);
  void DropIndex(std::int64_t id, std::int64_t indid);
  // The object with everything that hangs on it: columns, constraints, indexes, texts, rights,
  // properties.
  void DropObject(std::int64_t id);
  void DropColumn(std::int64_t id, std::int64_t colid);
  void Touch(std::int64_t id);  // raises schema_ver

  // Makes the table in SQLite as the catalog has it, without indexes.
  void Define(const CatalogTable& table, NameResolver& resolver);
  // Makes SQLite's definition of an existing table follow the catalog without touching its rows.
  void Redefine(const CatalogTable& table, NameResolver& resolver);
  // Has every connection read anew what it remembers of the objects.
  void RaiseVersion();
  // A query with a row when one of the key's child table has no row in the parent table.
  std::string OrphanSql(const CatalogForeignKey& key) const;
  static std::string IndexSqliteName(std::int64_t id, std::int64_t indid);
  // Of the index beside a unique one that holds the rows with nulls in their keys.
  static std::string NullIndexSqliteName(std::int64_t id, std::int64_t indid);
  // The statements that make an index.
  std::string IndexSql(const CatalogTable& table, const CatalogIndex& index) const;

 private:
  std::string Placed(CatalogSql sql) const;
  // What follows the name in "CREATE TABLE"; checks are translated with `resolver`.
  std::string TableBody(const CatalogTable& table, NameResolver& resolver);
  // Of the one table, to the other; null: none.
  std::vector<CatalogForeignKey> ForeignKeys(const Cell& child, const Cell& parent);
  std::vector<CatalogCheck> Checks(std::int64_t id);
  void WriteColumn(std::int64_t id, const CatalogColumn& column);
  std::int64_t NewId();

  SqliteConnection& connection_;
  std::string alias_;
  std::string quoted_;  // "\"d7\"."
};

// A column as its name and type alone make it.
CatalogColumn PlainColumn(std::string name, std::int64_t colid, const SqlType& type);
// What the translator needs of a column, and of a table in a check of its own.
ColumnInfo ColumnInfoOf(const CatalogColumn& column);
ObjectInfo InfoOf(const CatalogTable& table);

}  // namespace dbkeeper::server
