// The engine's Session: takes a batch apart and carries out each statement.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/instance_state.h"
#include "server/engine/query_runner.h"
#include "server/engine/resolver.h"
#include "server/engine/session.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"
#include "server/sql/server_functions.h"

namespace dbkeeper::server {

class EngineSession : public Session, private ServerState {
 public:
  EngineSession(InstanceState& instance, const LoginInfo& login);
  ~EngineSession() override;

  // Makes the session known under a process id, in the database; throws SqlError when that cannot
  // be opened.
  void Enter(const ClientInfo& client, const std::string& database);

  int spid() const override { return workspace_.spid(); }
  const std::string& current_database() const override { return workspace_.database(); }
  void RunBatch(std::string_view text, ResultSink& sink) override;
  void RunParameterized(std::string_view text, const Parameters& parameters,
                        ResultSink& sink) override;
  void Describe(std::string_view text, const Parameters& parameters, ResultSink& sink) override;
  void RunProcedure(std::string_view name, const Parameters& parameters, ResultSink& sink) override;
  std::unique_ptr<Cursor> OpenCursor(std::string_view text, ResultSink& sink) override;
  void Interrupt() override { workspace_.Interrupt(); }

  // For procedures and cursors.
  Workspace& workspace() { return workspace_; }
  Resolver& resolver() { return resolver_; }
  QueryRunner& queries() { return queries_; }
  int NextCursor() { return ++last_cursor_; }
  // Runs text within a statement that is already running; throws the first SqlError.
  void RunInside(std::string_view text, const Parameters& parameters, ResultSink& sink);
  // Runs a system procedure; `name` may have a database. Throws SqlError.
  void Execute(const ObjectName& name, const Parameters& arguments, ResultSink& sink);

 private:
  class Activity;

  Cell Evaluate(std::string_view function, const std::vector<Cell>& arguments) override;

  // Parses the text, or gives back what is remembered of it.
  const std::vector<Statement>& Parse(std::string_view text, const Parameters& parameters,
                                      std::vector<Statement>& fresh);
  // Runs `work` and tells its error; false when there was one.
  template <typename Work>
  bool Reported(ResultSink& sink, const Work& work);
  // False when the batch ends with the statement.
  bool RunReported(const Statement& statement, const Execution& execution);
  void ReportError(const ServerMessage& message, ResultSink& sink);
  // Whether the client has asked that nothing of the kind is run.
  bool Skips(const Statement& statement);
  // Runs the statement and tells its end; errors have its line.
  void Run(const Statement& statement, const Execution& execution);

  InstanceState& instance_;
  Workspace workspace_;
  Resolver resolver_;
  QueryRunner queries_;
  int last_cursor_ = 0;

  // The last insert with parameters: the rows of a bulk load come as the same text again and again.
  std::string insert_text_;
  Parameters insert_parameters_;
  std::string insert_database_;
  std::vector<Statement> insert_;
};

}  // namespace dbkeeper::server
