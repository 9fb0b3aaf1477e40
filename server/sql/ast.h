// The tree of a parsed batch. Names keep the letters they were written with; comparing them is the
// business of whoever resolves them.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "server/sql/lexer.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

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

// What binds how tight: the levels of the grammar, the loosest first.
enum class OperatorLevel { kOr, kAnd, kComparison, kAdditive, kMultiplicative };

// An operator between two operands: a row of the one table in parse_expression.cpp.
struct Operator {
  std::string_view word;  // as it is written
  OperatorLevel level;
  std::string_view sqlite;  // as SQLite and the server's functions write it
  std::string_view name;    // in messages
};

// The row of an operator that is written so.
const Operator& OperatorOf(std::string_view word);

enum class ExpressionKind {
  // Values.
  kLiteral,   // `literal`, `text`
  kColumn,    // `name`: at most four parts, the column last
  kStar,      // "*" or "t.*", `name` before the star; only in a select list and in count(*)
  kVariable,  // `text`: "@p1", "@@rowcount"
  kDefault,   // the word `default` as a value of an insert, an update or a procedure's argument
  kUnary,     // `text`: "-", "+", "~"
  kBinary,    // arithmetic
  kCall,      // `text`: the function
  kCast,      // cast(x as t), convert(t, x, style): the value and, if given, the style; `type`
  kCase,      // what is compared or null, a condition and a result each, what `else` gives or null
  kSubquery,  // `query` of one value
  // Predicates: true, false or unknown, but no value.
  kComparison,
  kLogical,     // and, or
  kNot,         // the predicate
  kIn,          // the value, the list; or the value and `query`
  kExists,      // `query`
  kQuantified,  // the value; `op` any (query), `op` all (query)
  kBetween,     // the value, the low and the high bound
  kLike,        // the text, the pattern and, if given, the escape character
  kIsNull,      // the value
};

struct Expression {
  ExpressionKind kind = ExpressionKind::kLiteral;
  int line = 1;
  TokenKind literal = TokenKind::kWord;  // what the literal is; kWord: null
  bool negated = false;                  // not in, not between, not like, is not null
  bool distinct = false;                 // count(distinct x)
  bool all = false;                      // of a quantified comparison: all, not any
  // Of a literal: digits as written; a string's characters; a binary's bytes; money without sign.
  std::string text;
  std::vector<std::string> name;
  const Operator* op = nullptr;  // of kBinary, kComparison, kLogical, kQuantified
  std::vector<ExpressionPtr> operands;
  QueryPtr query;
  SqlType type;

  bool IsPredicate() const { return kind >= ExpressionKind::kComparison; }
};

// ---- queries -----------------------------------------------------------------------------------

enum class JoinKind { kInner, kLeft, kRight, kFull, kCross };

// A table, view or function by its name; a query in parentheses; or a join.
struct TableSource {
  enum class Kind { kNamed, kFunction, kDerived, kJoined };
  Kind kind = Kind::kNamed;
  int line = 1;
  ObjectName name;
  std::vector<ExpressionPtr> arguments;  // of ::fn_x(...)
  QueryPtr query;
  std::vector<std::string> column_names;  // of a query; empty: its own
  std::string alias;
  JoinKind join = JoinKind::kInner;
  TableSourcePtr left;
  TableSourcePtr right;
  ExpressionPtr condition;  // null for a cross join
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
};

// What a table is made of, and what alter table ... add brings to it.
struct TableParts {
  std::vector<ColumnDefinition> columns;
  std::vector<Constraint> constraints;
};

struct CreateTableStatement : TableParts {
  ObjectName table;
};

struct AddColumns : TableParts {
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
  bool for_attach = false;
};

// One of the three; none is a form that the engine refuses.
struct AlterDatabaseStatement {
  std::string name;
  // Of set, in capitals: "ONLINE", "READ_ONLY", "RECOVERY SIMPLE", "AUTO_SHRINK ON".
  std::vector<std::string> options;
  std::string new_name;             // of modify name
  std::optional<std::string> file;  // of modify file, remove file: its logical name
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

// What backup and restore share.
struct BackupBody {
  std::string database;
  std::vector<BackupDevice> devices;
  std::vector<BackupOption> options;
};

struct BackupStatement : BackupBody {
  bool log = false;
};

enum class RestoreKind { kDatabase, kLog, kHeaderOnly, kFileListOnly, kLabelOnly, kVerifyOnly };

struct RestoreStatement : BackupBody {
  RestoreKind kind = RestoreKind::kDatabase;
};

struct DbccStatement {
  std::string command;                 // in capitals: "SHRINKDATABASE"
  std::vector<std::string> arguments;  // texts of words, strings and numbers
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
