// The system procedures: the rows of their tables, and one call of a procedure.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "server/catalog/catalog.h"
#include "server/engine/engine_session.h"

namespace dbkeeper::server {

class ProcedureCall;

struct ProcedureRow {
  std::string_view name;
  // "@loginame, @passwd=, @defdb=": in order, "=" behind those that may be left out; a last "..."
  // takes further arguments under any name.
  std::string_view parameters;
  // What is done first; null: nothing.
  void (*run)(ProcedureCall& call);
  // Statements of the dialect, run then; the procedure's parameters are there as variables.
  std::string_view text = {};
};

// The arguments by the names of the parameters, what they are bound to, and the ways to answer.
class ProcedureCall {
 public:
  // Throws SqlError 201, 8144, 8145 when the arguments do not fit the parameters.
  ProcedureCall(const ProcedureRow& row, EngineSession& session, const Parameters& arguments,
                ResultSink& sink);

  const ProcedureRow& row() const { return row_; }
  Workspace& workspace() { return session_.workspace(); }
  Resolver& resolver() { return session_.resolver(); }
  EngineSession& session() { return session_; }
  SqliteConnection& sqlite() { return session_.workspace().connection(); }
  ResultSink& sink() { return sink_; }
  const Parameters& arguments() const { return arguments_; }

  // The database the procedure runs in.
  DatabaseInfo database() { return workspace().FindDatabase(workspace().database()); }
  Catalog catalog() { return workspace().CatalogOf(""); }

  // Given and not null; the name is with "@".
  bool Has(std::string_view parameter) const;
  const Cell& Value(std::string_view parameter) const;
  std::string Text(std::string_view parameter, std::string_view otherwise = {}) const;
  // Throws 8114 when the value is no integer.
  std::int64_t Integer(std::string_view parameter, std::int64_t otherwise = 0) const;
  // A name that is looked up as an object; throws 15009 when there is none of the kinds `xtypes`.
  FoundObject Object(std::string_view parameter, std::string_view xtypes);

  // Runs statements of the dialect with the arguments as variables.
  void Run(std::string_view text);
  // Answers with rows made up by the procedure; `columns` declares them as a table would: "name
  // sysname, dbid smallint".
  void Rows(std::string_view columns, const std::vector<std::vector<Cell>>& rows);
  void Inform(int number, std::initializer_list<std::string_view> parts = {});
  // A message without a number.
  void Say(std::string text);
  // Whether the query gives a row whose first column is not 0.
  template <typename... Values>
  bool Exists(std::string_view sql, const Values&... values) {
    return sqlite().IntegerOf(0, sql, values...) != 0;
  }
  // Runs one statement of SQLite as a change of master.
  template <typename... Values>
  void ChangeMaster(std::string_view sql, const Values&... values) {
    WriteScope scope(workspace());
    sqlite().Run(sql, values...);
    scope.Commit();
  }
  // Throws 15247 unless the login is a system administrator or has the flag.
  void NeedAdministrator(bool or_has = false);
  // Throws 15247 unless the login owns the database or is in the role.
  void NeedOwner(std::int64_t or_role = kOwners);

 private:
  const Parameter* Find(std::string_view parameter) const;

  const ProcedureRow& row_;
  EngineSession& session_;
  Parameters arguments_;  // one for each parameter in order, then the further ones
  ResultSink& sink_;
};

// A change of the database the procedure runs in, or of another: made whole when it is committed.
struct DatabaseChange {
  explicit DatabaseChange(ProcedureCall& call, std::string_view database = {})
      : catalog(call.workspace().CatalogOf(database)),
        scope(call.workspace(),
              database.empty() ? call.database() : call.workspace().FindDatabase(database),
              catalog.alias()) {}
  Catalog catalog;
  WriteScope scope;
};

// Runs the system procedure `name` in the session's current database; false when there is none of
// that name there. Throws SqlError.
bool RunSystemProcedure(std::string_view name, EngineSession& session, const Parameters& arguments,
                        ResultSink& sink);

// The families, one source each; procedure_call.cpp lists them.
std::span<const ProcedureRow> BackupHistoryProcedures();
std::span<const ProcedureRow> DatabaseProcedures();
std::span<const ProcedureRow> JobHistoryProcedures();
std::span<const ProcedureRow> JobProcedures();
std::span<const ProcedureRow> JobScheduleProcedures();
std::span<const ProcedureRow> JobStepProcedures();
std::span<const ProcedureRow> LoginProcedures();
std::span<const ProcedureRow> MetadataProcedures();
std::span<const ProcedureRow> ObjectProcedures();
std::span<const ProcedureRow> PropertyProcedures();
std::span<const ProcedureRow> UserProcedures();

}  // namespace dbkeeper::server
