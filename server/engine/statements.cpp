// EngineSession's statements: each goes to the class that carries it out.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <thread>

#include "server/engine/backup_statements.h"
#include "server/engine/database_definition.h"
#include "server/engine/engine_messages.h"
#include "server/engine/engine_session.h"
#include "server/engine/object_definition.h"
#include "server/engine/permissions.h"
#include "server/engine/session_settings.h"
#include "server/engine/state_functions.h"
#include "server/engine/table_definition.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

void EngineSession::RunOne(const SelectStatement& statement, const Execution& execution,
                           StatementEnd& end) {
  end.rows = queries_.Select(statement, execution);
  const auto* core = std::get_if<SelectCore>(&statement.query->terms.front());
  end.is_select = core == nullptr || !core->into;
}

void EngineSession::RunOne(const InsertStatement& statement, const Execution& execution,
                           StatementEnd& end) {
  end.rows = queries_.Insert(statement, execution);
}

void EngineSession::RunOne(const UpdateStatement& statement, const Execution& execution,
                           StatementEnd& end) {
  end.rows = queries_.Update(statement, execution);
}

void EngineSession::RunOne(const DeleteStatement& statement, const Execution& execution,
                           StatementEnd& end) {
  end.rows = queries_.Delete(statement, execution);
}

void EngineSession::RunOne(const TruncateStatement& statement, const Execution&, StatementEnd&) {
  TableDefinition(workspace_, resolver_).Truncate(statement);
}

void EngineSession::RunOne(const CreateTableStatement& statement, const Execution&, StatementEnd&) {
  TableDefinition(workspace_, resolver_).Create(statement);
}

void EngineSession::RunOne(const AlterTableStatement& statement, const Execution& execution,
                           StatementEnd&) {
  TableDefinition(workspace_, resolver_).Alter(statement, execution.sink);
}

void EngineSession::RunOne(const DropStatement& statement, const Execution&, StatementEnd&) {
  for (const ObjectName& name : statement.names) {
    if (statement.object_class == ObjectClass::kTable) {
      TableDefinition(workspace_, resolver_).Drop(name);
    } else if (statement.object_class == ObjectClass::kDatabase) {
      DatabaseDefinition(workspace_).Drop(name.name);
    } else {
      ObjectDefinition(workspace_, resolver_).Drop(statement.object_class, name);
    }
  }
}

void EngineSession::RunOne(const CreateIndexStatement& statement, const Execution&, StatementEnd&) {
  TableDefinition(workspace_, resolver_).CreateIndex(statement);
}

void EngineSession::RunOne(const DropIndexStatement& statement, const Execution&, StatementEnd&) {
  for (const DropIndexStatement::Item& item : statement.items) {
    TableDefinition(workspace_, resolver_).DropIndex(item);
  }
}

void EngineSession::RunOne(const CreateViewStatement& statement, const Execution&, StatementEnd&) {
  ObjectDefinition(workspace_, resolver_).CreateView(statement);
}

void EngineSession::RunOne(const CreateModuleStatement& statement, const Execution& execution,
                           StatementEnd&) {
  ObjectDefinition(workspace_, resolver_).CreateModule(statement, execution.sink);
}

void EngineSession::RunOne(const CreateDatabaseStatement& statement, const Execution& execution,
                           StatementEnd&) {
  DatabaseDefinition(workspace_).Create(statement, execution.sink);
}

void EngineSession::RunOne(const AlterDatabaseStatement& statement, const Execution&,
                           StatementEnd&) {
  DatabaseDefinition(workspace_).Alter(statement);
}

void EngineSession::RunOne(const UseStatement& statement, const Execution& execution,
                           StatementEnd&) {
  const DatabaseInfo database = workspace_.FindDatabase(statement.database);
  workspace_.Open(database);
  const std::string from = workspace_.database();
  workspace_.SetCurrent(database);
  instance_.Update(spid(), [&](SessionRecord& record) {
    record.dbid = database.dbid;
    record.database = database.name;
  });
  execution.sink.OnDatabaseChanged(from, database.name);
}

void EngineSession::RunOne(const SetStatement& statement, const Execution&, StatementEnd&) {
  ApplySetting(statement, workspace_, resolver_);
}

void EngineSession::RunOne(const TransactionStatement& statement, const Execution&, StatementEnd&) {
  switch (statement.action) {
    case TransactionAction::kBegin:
      workspace_.BeginTransaction();
      break;
    case TransactionAction::kCommit:
      workspace_.CommitTransaction();
      break;
    case TransactionAction::kRollback:
      workspace_.RollbackTransaction();
      break;
    case TransactionAction::kSave:
      throw Unsupported("save transaction");
  }
  instance_.Update(spid(), [this](SessionRecord& record) {
    record.open_transactions = workspace_.transaction_count();
  });
}

void EngineSession::RunOne(const PrintStatement& statement, const Execution& execution,
                           StatementEnd&) {
  ServerMessage message;
  message.severity = 0;
  message.line = execution.line;
  message.text = TextOfCell(queries_.Scalar(*statement.message, execution));
  execution.sink.OnMessage(message);
}

void EngineSession::RunOne(const RaiseErrorStatement& statement, const Execution& execution,
                           StatementEnd&) {
  const ServerMessage message = RaisedMessage(statement, queries_, execution);
  if (message.IsError()) throw SqlError(message);
  execution.sink.OnMessage(message);
}

void EngineSession::RunOne(const ExecuteStatement& statement, const Execution& execution,
                           StatementEnd&) {
  std::vector<ArgumentValue> arguments;
  for (const ProcedureArgument& argument : statement.arguments) {
    if (std::holds_alternative<DefaultValue>(argument.value->node)) {
      if (argument.name.empty()) arguments.push_back({});
      continue;
    }
    ArgumentValue value{argument.name, {}, {}};
    value.value = queries_.Scalar(*argument.value, execution, value.type);
    arguments.push_back(std::move(value));
  }
  Execute(statement.procedure, arguments, execution.sink);
}

void EngineSession::RunOne(const ExecuteTextStatement& statement, const Execution& execution,
                           StatementEnd&) {
  const std::string text = TextOfCell(queries_.Scalar(*statement.text, execution));
  RunInside(text, {}, {}, execution.sink);
}

void EngineSession::RunOne(const BackupStatement& statement, const Execution& execution,
                           StatementEnd&) {
  RunBackup(*this, statement, execution);
}

void EngineSession::RunOne(const RestoreStatement& statement, const Execution& execution,
                           StatementEnd& end) {
  end.rows = RunRestore(*this, statement, execution);
  end.is_select = end.rows >= 0;
}

void EngineSession::RunOne(const DbccStatement& statement, const Execution& execution,
                           StatementEnd&) {
  if (statement.command == "SHRINKDATABASE" && !statement.arguments.empty()) {
    DatabaseDefinition(workspace_).Shrink(statement.arguments[0]);
    execution.sink.OnMessage(MessageOf(2528));
    return;
  }
  throw Unsupported("dbcc " + statement.command);
}

void EngineSession::RunOne(const KillStatement& statement, const Execution& execution,
                           StatementEnd&) {
  if (!workspace_.login().sysadmin) Fail(15247);
  int process = 0;
  const std::string& text = statement.process;
  const char* const end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, process);
  if (problem == std::errc::result_out_of_range) Fail(6101, {text, "32767"});
  if (problem != std::errc() || stop != end) {
    throw MakeError(170, {text, std::to_string(execution.line)}, execution.line);
  }
  instance_.Kill(process, spid());
}

void EngineSession::RunOne(const ShutdownStatement&, const Execution& execution, StatementEnd&) {
  if (!workspace_.login().sysadmin) Fail(15247);
  ServerMessage message = MessageOf(6005, {workspace_.login().name});
  execution.sink.OnMessage(message);
  instance_.RequestShutdown();
}

void EngineSession::RunOne(const CheckpointStatement&, const Execution&, StatementEnd&) {
  const std::string alias = workspace_.Open(workspace_.FindDatabase(workspace_.database()));
  sqlite3_wal_checkpoint_v2(workspace_.connection().handle(), alias.c_str(),
                            SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
}

void EngineSession::RunOne(const ReconfigureStatement&, const Execution&, StatementEnd&) {
  throw Unsupported("reconfigure");
}

void EngineSession::RunOne(const WaitForStatement& statement, const Execution&, StatementEnd&) {
  if (statement.time) throw Unsupported("waitfor time");
  const auto end = std::chrono::steady_clock::now() + DelayOf(statement.text);
  while (std::chrono::steady_clock::now() < end) {
    if (workspace_.interrupted()) Fail(3617);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void EngineSession::RunOne(const PermissionStatement& statement, const Execution&, StatementEnd&) {
  ChangePermissions(statement, workspace_, resolver_);
}

void EngineSession::RunOne(const InsertBulkStatement& statement, const Execution&, StatementEnd&) {
  // The rows come in a message of their own, as inserts; here the table only has to be there.
  resolver_.Need(statement.table, "U");
}

}  // namespace dbkeeper::server
