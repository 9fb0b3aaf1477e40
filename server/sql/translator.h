// From a parsed statement to what SQLite runs.
//
// The engine parses a batch (parser.h), and when the turn of a statement comes it asks the
// translator for the SQLite form; so a `use` or a `create table` takes effect for the statements
// after it. What is no select, insert, update or delete the engine carries out itself from the
// tree.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "server/sql/ast.h"
#include "server/types/messages.h"
#include "server/types/parameter.h"
#include "server/types/result_sink.h"

namespace dbkeeper::server {

struct ColumnInfo {
  std::string name;
  SqlType type;
  // The default as stored ("(getdate())"); empty: none. An insert without the column evaluates it.
  std::string default_text;
  // Of an identity column: an SQLite expression that takes the next value each time it is
  // evaluated; an insert puts it where the column's value would stand. Empty: no identity column.
  std::string identity_sql;
};

enum class ObjectKind { kTable, kSystemTable, kView };

// A table, a system table or a view as the translator needs it.
struct ObjectInfo {
  ObjectKind kind = ObjectKind::kTable;
  std::string database;
  std::string owner;
  std::string name;
  // What stands behind FROM, without an alias: "\"d7\".\"t\"" of a table, or "(select ...)" of a
  // system table whose rows are made up. Unused for a view.
  std::string sqlite_from;
  std::vector<ColumnInfo> columns;
  bool identity_insert = false;  // values for the identity column are taken from the insert
  // Of a view: the text of its definition ("create view v as select ..."). Names in it are resolved
  // in `database`.
  std::string view_text;
};

// The engine's knowledge of names, asked while a statement is translated. Names compare without
// case. Empty parts mean the current database and the owner the server would look for first.
class NameResolver {
 public:
  virtual ~NameResolver() = default;

  // None when there is no such object in a database that exists (the translator raises 208 then).
  // Throws SqlError for everything else, such as 911 for an unknown database.
  virtual std::optional<ObjectInfo> ResolveObject(const ObjectName& name) = 0;

  // A function used as a table, such as fn_listextendedproperty. An argument is an SQLite
  // expression; `default` and NULL come as "NULL". The answer's sqlite_from holds the call. None
  // when there is no such function.
  virtual std::optional<ObjectInfo> ResolveTableFunction(
      const ObjectName& name, const std::vector<std::string>& arguments) = 0;

  // The name in SQLite of the current database: "main".
  virtual std::string CurrentSchema() = 0;

  // The current time in the storage form of datetime; all rows of a statement see one moment.
  virtual std::int64_t StatementTime() = 0;
};

struct TranslateOptions {
  // Asks for a last, extra column with the row's id when the query reads one base table row by row
  // (no distinct, group by, aggregate, union, join); see Translation::has_row_id.
  bool with_row_id = false;
};

// What the engine runs.
struct Translation {
  std::string sqlite_sql;
  // The table that an insert, update or delete changes; the base table of a select with a row id.
  std::optional<ObjectInfo> target = {};
  std::vector<ResultColumn> columns = {};  // of a select
  bool has_row_id = false;                 // one more SQLite column behind `columns`
  // select ... into: the engine makes this table from `columns`, then runs
  // "insert into <it> " + sqlite_sql.
  std::optional<ObjectName> into = {};
  // Of an update or delete: values of the target's rows are read on the way.
  bool reads_target = false;
  // Of an insert: it gives the identity column a value of its own or takes the next.
  bool takes_identity = false;
  // Of an update: the same in two steps. A select of the rows to change, "r" the row's id and c1,
  // c2 ... the values of the columns `assigned`; and what sets them from such a row "s".
  std::string rows_sql = {};
  std::string set_sql = {};
  std::vector<std::string> assigned = {};
};

class Translator {
 public:
  // Both outlive the translator. The n-th parameter is "?n" in the SQLite text.
  explicit Translator(NameResolver& resolver, const Parameters& parameters = kNoParameters)
      : resolver_(resolver), parameters_(parameters) {}

  // All of these throw SqlError, with the line counted from the start of the batch.
  Translation Select(const SelectStatement& statement, const TranslateOptions& options = {});
  Translation Insert(const InsertStatement& statement);
  Translation Update(const UpdateStatement& statement);
  Translation Delete(const DeleteStatement& statement);

  // "select <expression>" for raiserror and procedure arguments: one row of one column, told as
  // `columns`.
  Translation Scalar(const Expression& expression);
  // The same as a text, for print and execute (text).
  Translation ScalarText(const Expression& expression);

  // An insert of `columns.size()` values bound as ?1.. with the given types, for bulk load and
  // cursors; columns left out get their defaults. Conversion and errors are those of a statement.
  Translation InsertBound(const ObjectInfo& table, const Parameters& columns);
  // Sets columns of the row whose row id is bound as the last parameter.
  Translation UpdateRow(const ObjectInfo& table, const Parameters& columns);
  Translation DeleteRow(const ObjectInfo& table);

  // The columns that a view would have; also the check that its definition holds.
  std::vector<ResultColumn> ViewColumns(const CreateViewStatement& view);

  // A check expression as SQLite writes it inside its create table; `table` needs its columns only.
  std::string CheckExpression(const std::string& text, const ObjectInfo& table);
  // A default as an SQLite expression of the column's storage form (for rows that are there when a
  // column is added).
  std::string DefaultExpression(const std::string& text, const SqlType& type);

 private:
  NameResolver& resolver_;
  const Parameters& parameters_;
};

}  // namespace dbkeeper::server
