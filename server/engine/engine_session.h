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

// An argument of a procedure; named, or by position when `name` is empty.
struct ArgumentValue {
  std::string name;
  Cell value;
  SqlType type;
};

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
  void RunParameterized(std::string_view text, const std::vector<RpcParameter>& parameters,
                        ResultSink& sink) override;
  void RunProcedure(std::string_view name, const std::vector<RpcParameter>& parameters,
                    ResultSink& sink) override;
  std::unique_ptr<Cursor> OpenCursor(std::string_view text, ResultSink& sink) override;
  void Interrupt() override { workspace_.Interrupt(); }

  // For procedures and cursors.
  Workspace& workspace() { return workspace_; }
  Resolver& resolver() { return resolver_; }
  QueryRunner& queries() { return queries_; }
  int NextCursor() { return ++last_cursor_; }
  // Runs text within a statement that is already running; throws the first SqlError.
  void RunInside(std::string_view text, const std::vector<ParameterInfo>& parameters,
                 const std::vector<Cell>& values, ResultSink& sink);
  // Runs a system procedure; `name` may have a database. Throws SqlError.
  void Execute(const ObjectName& name, const std::vector<ArgumentValue>& arguments,
               ResultSink& sink);

 private:
  Cell Evaluate(std::string_view function, const std::vector<Cell>& arguments) override;

  void RunText(std::string_view text, const std::vector<ParameterInfo>& parameters,
               const std::vector<Cell>& values, ResultSink& sink);
  // Parses the text, or gives back what is remembered of it.
  const std::vector<Statement>& Parse(std::string_view text,
                                      const std::vector<ParameterInfo>& parameters,
                                      std::vector<Statement>& fresh);
  // False when the batch ends with the statement.
  bool RunReported(const Statement& statement, const Execution& execution);
  void ReportError(const ServerMessage& message, int line, ResultSink& sink);
  StatementEnd Run(const Statement& statement, const Execution& execution);

  void RunOne(const SelectStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const InsertStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const UpdateStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const DeleteStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const TruncateStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const CreateTableStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const AlterTableStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const DropStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const CreateIndexStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const DropIndexStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const CreateViewStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const CreateModuleStatement& statement, const Execution& execution,
              StatementEnd& end);
  void RunOne(const CreateDatabaseStatement& statement, const Execution& execution,
              StatementEnd& end);
  void RunOne(const AlterDatabaseStatement& statement, const Execution& execution,
              StatementEnd& end);
  void RunOne(const UseStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const SetStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const TransactionStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const PrintStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const RaiseErrorStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const ExecuteStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const ExecuteTextStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const BackupStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const RestoreStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const DbccStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const KillStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const ShutdownStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const CheckpointStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const ReconfigureStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const WaitForStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const PermissionStatement& statement, const Execution& execution, StatementEnd& end);
  void RunOne(const InsertBulkStatement& statement, const Execution& execution, StatementEnd& end);

  InstanceState& instance_;
  Workspace workspace_;
  Resolver resolver_;
  QueryRunner queries_;
  int last_cursor_ = 0;

  // The last insert with parameters: the rows of a bulk load come as the same text again and again.
  std::string insert_text_;
  std::vector<ParameterInfo> insert_parameters_;
  std::string insert_database_;
  std::vector<Statement> insert_;
};

// The value of a parameter as a cell.
Cell CellOf(const RpcParameter& parameter);

}  // namespace dbkeeper::server
