// The tree of a parsed batch. Names keep the letters they were written with; comparing them is the
// business of whoever resolves them.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "server/types/sql_type.h"

namespace dbkeeper::server {

// A visitor made of one function for each alternative.
template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

struct Expression;
struct Query;
struct TableSource;
using ExpressionPtr = std::unique_ptr<Expression>;
using QueryPtr = std::unique_ptr<Query>;
using TableSourcePtr = std::unique_ptr<TableSource>;

// A name of one to four parts; parts that were left out are empty.
struct ObjectName {
  std::string server;
  std::string database;
  std::string owner;
  std::string name;
  // As written, for messages: "db.owner.name" without brackets.
  std::string Text() const;
};

// ---- expressions -------------------------------------------------------------------------------

enum class LiteralKind {
  kNull,
  kInteger,
  kDecimal,
  kFloat,
  kMoney,
  kString,
  kNationalString,
  kBinary,
};

struct Literal {
  LiteralKind kind = LiteralKind::kNull;
  std::string
      text;  // digits as written; a string's characters; a binary's bytes; money without sign
};

struct ColumnReference {
  std::vector<std::string> parts;  // at most four, the column last
};

// "*" or "t.*"; only in a select list and in count(*).
struct Star {
  std::vector<std::string> qualifier;
};

struct Variable {
  std::string name;  // "@p1", "@@rowcount"
};

enum class UnaryOperator { kMinus, kPlus, kNot, kBitNot };

struct Unary {
  UnaryOperator op;
  ExpressionPtr operand;
};

enum class BinaryOperator {
  kAdd,
  kSubtract,
  kMultiply,
  kDivide,
  kModulo,
  kBitAnd,
  kBitOr,
  kBitXor,
  kEqual,
  kNotEqual,
  kLess,
  kLessOrEqual,
  kGreater,
  kGreaterOrEqual,
  kAnd,
  kOr,
};

struct Binary {
  BinaryOperator op;
  ExpressionPtr left;
  ExpressionPtr right;
};

struct FunctionCall {
  std::string name;
  std::vector<ExpressionPtr> arguments;
  bool distinct = false;  // count(distinct x)
};

// cast(x as t) and convert(t, x, style).
struct Cast {
  ExpressionPtr value;
  SqlType type;
  ExpressionPtr style;  // null: none given
};

struct Case {
  ExpressionPtr operand;  // null for the searched form
  struct When {
    ExpressionPtr condition;
    ExpressionPtr result;
  };
  std::vector<When> whens;
  ExpressionPtr otherwise;  // null: none given
};

struct InList {
  ExpressionPtr value;
  std::vector<ExpressionPtr> list;
  bool negated = false;
};

struct InQuery {
  ExpressionPtr value;
  QueryPtr query;
  bool negated = false;
};

struct Exists {
  QueryPtr query;
};

// value op any (query), value op all (query).
struct Quantified {
  ExpressionPtr value;
  BinaryOperator op;
  bool all = false;
  QueryPtr query;
};

struct ScalarSubquery {
  QueryPtr query;
};

struct Between {
  ExpressionPtr value;
  ExpressionPtr low;
  ExpressionPtr high;
  bool negated = false;
};

struct Like {
  ExpressionPtr value;
  ExpressionPtr pattern;
  ExpressionPtr escape;  // null: none given
  bool negated = false;
};

struct IsNull {
  ExpressionPtr value;
  bool negated = false;
};

// The word `default` as a value of an insert, an update or a procedure's argument.
struct DefaultValue {};

struct Expression {
  std::variant<Literal, ColumnReference, Star, Variable, Unary, Binary, FunctionCall, Cast, Case,
               InList, InQuery, Exists, Quantified, ScalarSubquery, Between, Like, IsNull,
               DefaultValue>
      node;
  int line = 1;
};

// Whether it is a predicate: true, false or unknown, but no value.
bool IsPredicate(const Expression& expression);

// ---- queries -----------------------------------------------------------------------------------

struct NamedTable {
  ObjectName name;
};

// ::fn_x(...), as a table.
struct FunctionTable {
  ObjectName name;
  std::vector<ExpressionPtr> arguments;
};

struct DerivedTable {
  QueryPtr query;
  std::vector<std::string> column_names;  // empty: those of the query
};

enum class JoinKind { kInner, kLeft, kRight, kFull, kCross };

struct JoinedTable {
  JoinKind kind;
  TableSourcePtr left;
  TableSourcePtr right;
  ExpressionPtr condition;  // null for a cross join
};

struct TableSource {
  std::variant<NamedTable, FunctionTable, DerivedTable, JoinedTable> node;
  std::string alias;
  int line = 1;
};

struct SelectItem {
  ExpressionPtr value;
  std::string alias;
};

struct OrderItem {
  ExpressionPtr value;
  bool descending = false;
};

// One select without order by.
struct SelectCore {
  bool distinct = false;
  ExpressionPtr top;  // null: all rows
  std::vector<SelectItem> items;
  std::optional<ObjectName> into;
  std::vector<TableSourcePtr> from;
  ExpressionPtr where;
  std::vector<ExpressionPtr> group_by;
  ExpressionPtr having;
  int line = 1;
};

enum class SetOperator { kUnion, kUnionAll };

// One or several selects joined by union. A parenthesised term is a query of its own.
struct Query {
  using Term = std::variant<SelectCore, QueryPtr>;
  std::vector<Term> terms;
  std::vector<SetOperator> operators;  // between the terms, so one fewer
  std::vector<OrderItem> order_by;
  int line = 1;
};

// ---- statements that read and change rows ------------------------------------------------------

struct SelectStatement {
  QueryPtr query;
};

struct InsertStatement {
  ObjectName table;
  std::vector<std::string> columns;   // empty: all
  std::vector<ExpressionPtr> values;  // of the values form
  QueryPtr query;                     // of the select form
  bool default_values = false;
};

struct Assignment {
  std::vector<std::string> column;  // one part, or table and column
  ExpressionPtr value;
};

struct UpdateStatement {
  ObjectName table;  // a table's name, or an alias of `from`
  std::vector<Assignment> assignments;
  std::vector<TableSourcePtr> from;
  ExpressionPtr where;
};

struct DeleteStatement {
  ObjectName table;
  std::vector<TableSourcePtr> from;
  ExpressionPtr where;
};

struct TruncateStatement {
  ObjectName table;
};

// ---- definitions -------------------------------------------------------------------------------

enum class ConstraintKind { kPrimaryKey, kUnique, kForeignKey, kCheck, kDefault };

struct KeyColumn {
  std::string name;
  bool descending = false;
};

struct Constraint {
  ConstraintKind kind = ConstraintKind::kCheck;
  std::string name;                // empty: the server makes one up
  std::vector<KeyColumn> columns;  // primary key, unique, foreign key
  std::optional<bool> clustered;   // primary key, unique; empty when nothing was said
  ObjectName referenced_table;     // foreign key
  std::vector<std::string> referenced_columns;
  bool delete_cascade = false;
  bool update_cascade = false;
  std::string text;            // check, default: the expression in parentheses as stored
  std::string default_column;  // default added with "for column"
};

struct Identity {
  std::string seed = "1";
  std::string increment = "1";
};

struct ColumnDefinition {
  std::string name;
  SqlType type;            // nullable as declared; true when nothing was said
  std::string type_name;   // as written, in lower case: "sysname" differs from "nvarchar" here only
  bool null_said = false;  // null or not null was written
  std::optional<Identity> identity;
  std::string collation;
  bool row_guid = false;
  std::vector<Constraint> constraints;  // written with the column; key columns are filled in
  int line = 1;
};

struct CreateTableStatement {
  ObjectName table;
  std::vector<ColumnDefinition> columns;
  std::vector<Constraint> constraints;
};

// alter table ... add.
struct AddColumns {
  std::vector<ColumnDefinition> columns;
  std::vector<Constraint> constraints;
  bool check_existing = true;  // false after "with nocheck"
};

// alter table ... alter column.
struct AlterColumn {
  ColumnDefinition column;
};

// alter table ... drop.
struct DropParts {
  std::vector<std::string> constraints;
  std::vector<std::string> columns;
};

// alter table ... check, nocheck constraint; enable, disable trigger.
struct SwitchParts {
  bool triggers = false;  // else constraints
  bool enable = false;
  std::vector<std::string> names;  // empty: all
};

struct AlterTableStatement {
  ObjectName table;
  std::variant<AddColumns, AlterColumn, DropParts, SwitchParts> action;
};

enum class ObjectClass { kTable, kView, kProcedure, kTrigger, kFunction, kDatabase };

struct DropStatement {
  ObjectClass object_class;
  std::vector<ObjectName> names;
};

struct CreateIndexStatement {
  std::string name;
  ObjectName table;
  std::vector<KeyColumn> columns;
  bool unique = false;
  bool clustered = false;
  bool ignore_duplicates = false;
  bool drop_existing = false;
};

struct DropIndexStatement {
  struct Item {
    ObjectName table;
    std::string index;
  };
  std::vector<Item> items;
};

// A view; `text` is the whole statement as it was sent.
struct CreateViewStatement {
  bool alter = false;
  ObjectName name;
  std::vector<std::string> columns;
  QueryPtr query;
  std::string text;
};

// A procedure, trigger or function, kept as text and never run.
struct CreateModuleStatement {
  bool alter = false;
  ObjectClass object_class;
  ObjectName name;
  ObjectName table;                         // of a trigger
  std::vector<std::string> trigger_events;  // "insert", "update", "delete"
  std::string text;
};

struct DatabaseFile {
  std::string logical_name;
  std::string file_name;
  std::string size;  // as written: "10", "10MB"; empty when nothing was said
  std::string maximum_size;
  std::string growth;
};

struct CreateDatabaseStatement {
  std::string name;
  std::vector<DatabaseFile> data_files;
  std::vector<DatabaseFile> log_files;
  std::string collation;
  bool for_attach = false;
};

// alter database ... set. Each in capitals: "ONLINE", "READ_ONLY", "RECOVERY SIMPLE",
// "AUTO_SHRINK ON".
struct DatabaseOptions {
  std::vector<std::string> options;
};

struct ModifyDatabaseName {
  std::string name;
};

struct ModifyDatabaseCollation {
  std::string collation;
};

struct AddDatabaseFiles {
  std::vector<DatabaseFile> files;
  bool log = false;
};

struct ModifyDatabaseFile {
  DatabaseFile file;
};

struct RemoveDatabaseFile {
  std::string logical_name;
};

struct AlterDatabaseStatement {
  std::string name;
  std::variant<DatabaseOptions, ModifyDatabaseName, ModifyDatabaseCollation, AddDatabaseFiles,
               ModifyDatabaseFile, RemoveDatabaseFile>
      action;
};

// ---- the rest ----------------------------------------------------------------------------------

struct UseStatement {
  std::string database;
};

struct SetStatement {
  std::vector<std::string> options;  // in capitals: "NOCOUNT", "TRANSACTION ISOLATION LEVEL"
  ObjectName table;                  // identity_insert, statistics objects
  std::string value;                 // as written; "ON" and "OFF" in capitals
};

enum class TransactionAction { kBegin, kCommit, kRollback };

struct TransactionStatement {
  TransactionAction action;
  std::string name;
};

struct PrintStatement {
  ExpressionPtr message;
};

struct RaiseErrorStatement {
  ExpressionPtr message;  // a text or a number
  ExpressionPtr severity;
  ExpressionPtr state;
  std::vector<ExpressionPtr> arguments;
};

struct ProcedureArgument {
  std::string name;     // "@x"; empty when passed by position
  ExpressionPtr value;  // a literal (bare and bracketed words are strings), variable or default
  bool output = false;
};

struct ExecuteStatement {
  ObjectName procedure;
  std::vector<ProcedureArgument> arguments;
};

// execute ('text' + ...).
struct ExecuteTextStatement {
  ExpressionPtr text;
};

// A backup's place: a device by name or a file.
struct BackupDevice {
  std::string kind;  // "DISK", "TAPE"; empty for a logical device
  std::string name;
};

// with a, b = 'c', move 'x' to 'y'.
struct BackupOption {
  std::string name;  // in capitals
  std::string value;
  std::string target;  // of move
};

struct BackupStatement {
  bool log = false;
  std::string database;
  std::vector<BackupDevice> devices;
  std::vector<BackupOption> options;
};

enum class RestoreKind { kDatabase, kLog, kHeaderOnly, kFileListOnly, kLabelOnly, kVerifyOnly };

struct RestoreStatement {
  RestoreKind kind = RestoreKind::kDatabase;
  std::string database;
  std::vector<BackupDevice> devices;
  std::vector<BackupOption> options;
};

struct DbccStatement {
  std::string command;                 // in capitals: "SHRINKDATABASE"
  std::vector<std::string> arguments;  // texts of words, strings and numbers
  std::vector<std::string> options;    // of with, in capitals
};

struct KillStatement {
  std::string process;
};

struct ShutdownStatement {};

struct CheckpointStatement {};

struct WaitForStatement {
  bool time = false;  // until a time of day, else for a delay
  std::string text;
};

enum class PermissionVerb { kGrant, kRevoke, kDeny };

struct PermissionStatement {
  PermissionVerb verb;
  bool all = false;                      // all [privileges]
  std::vector<std::string> permissions;  // in capitals: "SELECT", "CREATE TABLE"
  std::optional<ObjectName> object;      // none: permissions to statements
  std::vector<std::string> columns;
  std::vector<std::string> grantees;
  bool with_grant_option = false;
};

// insert bulk t (column type, ...): the packets that follow bring the rows.
struct InsertBulkStatement {
  ObjectName table;
  std::vector<ColumnDefinition> columns;
};

struct Statement {
  std::variant<SelectStatement, InsertStatement, UpdateStatement, DeleteStatement,
               TruncateStatement, CreateTableStatement, AlterTableStatement, DropStatement,
               CreateIndexStatement, DropIndexStatement, CreateViewStatement, CreateModuleStatement,
               CreateDatabaseStatement, AlterDatabaseStatement, UseStatement, SetStatement,
               TransactionStatement, PrintStatement, RaiseErrorStatement, ExecuteStatement,
               ExecuteTextStatement, BackupStatement, RestoreStatement, DbccStatement,
               KillStatement, ShutdownStatement, CheckpointStatement, WaitForStatement,
               PermissionStatement, InsertBulkStatement>
      node;
  int line = 1;
};

}  // namespace dbkeeper::server
