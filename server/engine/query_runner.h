// Runs what the translator translates: select, insert, update, delete, select into.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/resolver.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"
#include "server/sql/translator.h"
#include "server/types/result_sink.h"

namespace dbkeeper::server {

// Whether the parsed statement outlives its run, so that more of it may be remembered.
enum class TreeLife { kOneRun, kKept };

// What a statement runs with.
struct Execution {
  ResultSink& sink;
  const Parameters& parameters;
  int line = 1;
  TreeLife tree = TreeLife::kOneRun;
};

class QueryRunner {
 public:
  QueryRunner(Workspace& workspace, Resolver& resolver)
      : workspace_(workspace), resolver_(resolver) {}

  // All of these give the number of rows sent or changed, and throw SqlError.
  std::int64_t Select(const SelectStatement& statement, const Execution& execution);
  std::int64_t Insert(const InsertStatement& statement, const Execution& execution);
  std::int64_t Update(const UpdateStatement& statement, const Execution& execution);
  std::int64_t Delete(const DeleteStatement& statement, const Execution& execution);

  Cell Scalar(const Expression& expression, const Execution& execution);
  Cell Scalar(const Expression& expression, const Execution& execution, SqlType& type);
  std::string Text(const Expression& expression, const Execution& execution);

  // Lets go of what is remembered of an insert; to be called before its tree goes.
  void ForgetInsert() { insert_.reset(); }

  // Throws SqlError 229 unless the login may read what the translation met, but for the target of a
  // change.
  void NeedReading(const FoundObject* target = nullptr);
  // Sends the rows of a translated select, without its columns.
  std::int64_t SendRows(SqliteStatement& rows, ResultSink& sink);
  // Runs a translated change of rows. `verb` is "INSERT", "UPDATE" or "DELETE".
  std::int64_t Change(const Translation& translation, const Parameters& values,
                      const std::string& verb);

 private:
  // A translated and prepared insert, to be run again with other values.
  struct PreparedInsert {
    const InsertStatement* tree;
    std::int64_t version;  // of the target's definitions
    std::string identity_insert;
    FoundObject target;
    Translation translation;
    SqliteStatement statement;
  };

  Cell FirstCell(const Translation& translation, const Execution& execution);
  // What "set rowcount" adds to a statement that changes rows.
  std::string RowLimit() const;
  std::int64_t Execute(const Translation& translation, SqliteStatement& statement,
                       const FoundObject& target, const Parameters& values,
                       const std::string& verb);
  // Gives the number of rows changed.
  std::int64_t RunToEnd(SqliteStatement& statement, const Parameters& values);
  // Runs an update again whose rows may only have met each other's earlier keys; `failure` is what
  // it failed with.
  std::int64_t UpdateInSteps(const Translation& translation, const FoundObject& target,
                             const Parameters& values, const SqliteError& failure);
  // The server's message for a failed change of `target`.
  ServerMessage MessageOfFailed(const SqliteError& failure, const FoundObject& target,
                                const std::string& verb);
  std::int64_t SelectInto(const Translation& translation, const Execution& execution);
  ServerMessage ForeignKeyFailure(const FoundObject& target, const std::string& sql,
                                  const Parameters& values, const std::string& verb);
  // The message for a key without its other side, when the statement has run with checks put off.
  ServerMessage OrphanMessage(const FoundObject& target, const std::string& verb);

  Workspace& workspace_;
  Resolver& resolver_;
  std::optional<PreparedInsert> insert_;
};

// Columns of rows that are made up, declared as a table would: "name sysname, dbid smallint".
std::vector<ResultColumn> DeclaredColumns(std::string_view columns);

// Throws 229 when the login's user may not; `word` is "SELECT", "INSERT", "UPDATE" or "DELETE".
// System tables are open to all; owners and administrators may do everything.
void NeedPermission(Workspace& workspace, const FoundObject& found, std::string_view word);

// Binds the values to ?1, ?2 ... of a statement, as far as it has them.
void BindAll(SqliteStatement& statement, const Parameters& values);

}  // namespace dbkeeper::server
