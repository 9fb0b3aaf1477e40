#include "server/engine/statements.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <thread>

#include "server/engine/database_definition.h"
#include "server/engine/object_definition.h"
#include "server/engine/state_functions.h"
#include "server/engine/table_definition.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// A visitor made of one function for each alternative.
template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

// What a statement works with, and how it ended. Each goes to the class that carries it out.
struct Context {
  EngineSession& session;
  Workspace& workspace;
  Resolver& resolver;
  const Execution& execution;
  StatementEnd& end;
  ResultSink& sink() const { return execution.sink; }
};

void RunOne(const Context& c, const DropStatement& statement) {
  for (const ObjectName& name : statement.names) {
    if (statement.object_class == ObjectClass::kTable) {
      TableDefinition(c.workspace, c.resolver).Drop(name);
    } else if (statement.object_class == ObjectClass::kDatabase) {
      DatabaseDefinition(c.workspace).Drop(name.name);
    } else {
      ObjectDefinition(c.workspace, c.resolver).Drop(statement.object_class, name);
    }
  }
}

void RunOne(const Context& c, const DropIndexStatement& statement) {
  for (const DropIndexStatement::Item& item : statement.items) {
    TableDefinition(c.workspace, c.resolver).DropIndex(item);
  }
}

void RunOne(const Context& c, const UseStatement& statement) {
  const DatabaseInfo database = c.workspace.FindDatabase(statement.database);
  c.workspace.Open(database);
  const std::string from = c.workspace.database();
  c.workspace.SetCurrent(database);
  c.workspace.instance().Update(c.workspace.spid(),
                                [&](SessionRecord& record) { record.dbid = database.dbid; });
  c.sink().OnDatabaseChanged(from, database.name);
}

void RunOne(const Context& c, const TransactionStatement& statement) {
  switch (statement.action) {
    case TransactionAction::kBegin:
      c.workspace.BeginTransaction();
      break;
    case TransactionAction::kCommit:
      c.workspace.CommitTransaction();
      break;
    case TransactionAction::kRollback:
      c.workspace.RollbackTransaction();
      break;
  }
  c.workspace.instance().Update(c.workspace.spid(), [&](SessionRecord& record) {
    record.open_transactions = c.workspace.transaction_count();
  });
}

void RunOne(const Context& c, const PrintStatement& statement) {
  ServerMessage message;
  message.severity = 0;
  message.line = c.execution.line;
  message.text = c.session.queries().Text(*statement.message, c.execution);
  c.sink().OnMessage(message);
}

void RunOne(const Context& c, const RaiseErrorStatement& statement) {
  const ServerMessage message = RaisedMessage(statement, c.session.queries(), c.execution);
  if (message.IsError()) throw SqlError(message);
  c.sink().OnMessage(message);
}

void RunOne(const Context& c, const ExecuteStatement& statement) {
  Parameters arguments;
  for (const ProcedureArgument& argument : statement.arguments) {
    if (argument.output) throw Unsupported("output parameters");
    if (argument.value->kind == ExpressionKind::kDefault) {
      if (argument.name.empty()) arguments.push_back({});
      continue;
    }
    Parameter value{argument.name, {}};
    value.value = c.session.queries().Scalar(*argument.value, c.execution, value.type);
    arguments.push_back(std::move(value));
  }
  c.session.Execute(statement.procedure, arguments, c.sink());
}

void RunOne(const Context& c, const ExecuteTextStatement& statement) {
  const std::string text = c.session.queries().Text(*statement.text, c.execution);
  c.session.RunInside(text, {}, c.sink());
}

void RunOne(const Context& c, const RestoreStatement& statement) {
  c.end.rows = RunRestore(c.session, statement, c.execution);
  c.end.is_select = c.end.rows >= 0;
}

void RunOne(const Context& c, const DbccStatement& statement) {
  if (statement.command == "SHRINKDATABASE" && !statement.arguments.empty()) {
    DatabaseDefinition(c.workspace).Shrink(statement.arguments[0]);
    c.sink().OnMessage(MakeMessage(2528));
    return;
  }
  throw Unsupported("dbcc " + statement.command);
}

void RunOne(const Context& c, const KillStatement& statement) {
  if (!c.workspace.login().sysadmin) Fail(15247);
  int process = 0;
  const std::string& text = statement.process;
  const char* const end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, process);
  if (problem == std::errc::result_out_of_range) Fail(6101, {text, "32767"});
  if (problem != std::errc() || stop != end) {
    Fail(170, {text, std::to_string(c.execution.line)});
  }
  c.workspace.instance().Kill(process, c.workspace.spid());
}

void RunOne(const Context& c, const ShutdownStatement&) {
  if (!c.workspace.login().sysadmin) Fail(15247);
  ServerMessage message = MakeMessage(6005, {c.workspace.login().name});
  c.sink().OnMessage(message);
  c.workspace.instance().RequestShutdown();
}

void RunOne(const Context& c, const CheckpointStatement&) {
  const std::string alias = c.workspace.Open(c.workspace.FindDatabase(c.workspace.database()));
  sqlite3_wal_checkpoint_v2(c.workspace.connection().handle(), alias.c_str(),
                            SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
}

void RunOne(const Context& c, const WaitForStatement& statement) {
  if (statement.time) throw Unsupported("waitfor time");
  const auto end = std::chrono::steady_clock::now() + DelayOf(statement.text);
  while (std::chrono::steady_clock::now() < end) {
    c.workspace.StopIfInterrupted();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void RunOne(const Context& c, const InsertBulkStatement& statement) {
  // The rows come in a message of their own, as inserts; here the table only has to be there.
  c.resolver.Need(statement.table, "U");
}

}  // namespace

bool MakesTable(const SelectStatement& statement) {
  const auto* core = std::get_if<SelectCore>(&statement.query->terms.front());
  return core != nullptr && core->into;
}

StatementEnd RunStatement(EngineSession& session, const Statement& statement,
                          const Execution& execution) {
  StatementEnd end;
  const Context c{session, session.workspace(), session.resolver(), execution, end};
  TableDefinition tables(c.workspace, c.resolver);
  ObjectDefinition objects(c.workspace, c.resolver);
  DatabaseDefinition databases(c.workspace);
  QueryRunner& queries = session.queries();
  std::visit(Overloaded{
                 [&](const SelectStatement& node) {
                   end.rows = queries.Select(node, execution);
                   end.is_select = !MakesTable(node);
                 },
                 [&](const InsertStatement& node) { end.rows = queries.Insert(node, execution); },
                 [&](const UpdateStatement& node) { end.rows = queries.Update(node, execution); },
                 [&](const DeleteStatement& node) { end.rows = queries.Delete(node, execution); },
                 [&](const TruncateStatement& node) { tables.Truncate(node); },
                 [&](const CreateTableStatement& node) { tables.Create(node); },
                 [&](const AlterTableStatement& node) { tables.Alter(node, c.sink()); },
                 [&](const CreateIndexStatement& node) { tables.CreateIndex(node); },
                 [&](const CreateViewStatement& node) { objects.CreateView(node); },
                 [&](const CreateModuleStatement& node) { objects.CreateModule(node, c.sink()); },
                 [&](const CreateDatabaseStatement& node) { databases.Create(node, c.sink()); },
                 [&](const AlterDatabaseStatement& node) { databases.Alter(node); },
                 [&](const SetStatement& node) { ApplySetting(node, c.workspace, c.resolver); },
                 [&](const BackupStatement& node) { RunBackup(session, node, execution); },
                 [&](const PermissionStatement& node) {
                   ChangePermissions(node, c.workspace, c.resolver);
                 },
                 [&](const auto& node) { RunOne(c, node); },
             },
             statement.node);
  return end;
}

}  // namespace dbkeeper::server
