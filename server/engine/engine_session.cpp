#include "server/engine/engine_session.h"

#include <algorithm>
#include <array>

#include "server/engine/cursor.h"
#include "server/engine/engine_messages.h"
#include "server/engine/state_functions.h"
#include "server/procedures/procedure_table.h"
#include "server/sql/parser.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

// What sp_who shows while a statement runs, in the order of Statement's alternatives.
constexpr std::array<const char*, std::variant_size_v<decltype(Statement::node)>> kCommands = {
    "SELECT",
    "INSERT",
    "UPDATE",
    "DELETE",
    "TRUNCATE TABLE",
    "CREATE TABLE",
    "ALTER TABLE",
    "DROP TABLE",
    "CREATE INDEX",
    "DROP INDEX",
    "CREATE VIEW",
    "CREATE PROCEDURE",
    "CREATE DATABASE",
    "ALTER DATABASE",
    "USE DATABASE",
    "SET OPTION ON",
    "TRANSACTION",
    "PRINT",
    "RAISERROR",
    "EXECUTE",
    "EXECUTE",
    "BACKUP DATABASE",
    "RESTORE DATABASE",
    "DBCC",
    "KILL",
    "SHUTDOWN",
    "CHECKPOINT",
    "RECONFIGURE",
    "WAITFOR",
    "GRANT",
    "BULK INSERT",
};

// Errors of a change of rows, after which the server says that the statement was terminated.
constexpr int kTerminating[] = {220, 232, 512, 515, 547, 2601, 2627, 8115, 8152, 1505};

}  // namespace

Cell CellOf(const RpcParameter& parameter) {
  if (parameter.is_null) return {};
  switch (FamilyOf(parameter.type.id)) {
    case TypeFamily::kInteger:
    case TypeFamily::kDateTime:
      return parameter.integer;
    case TypeFamily::kReal:
      return parameter.real;
    case TypeFamily::kBinary:
    case TypeFamily::kGuid:
      return Blob{parameter.bytes};
    default:
      return parameter.bytes;
  }
}

EngineSession::EngineSession(InstanceState& instance, const LoginInfo& login)
    : instance_(instance),
      workspace_(instance, login, *this),
      resolver_(workspace_),
      queries_(workspace_, resolver_) {}

EngineSession::~EngineSession() { instance_.Leave(workspace_.spid()); }

void EngineSession::Enter(const ClientInfo& client, const std::string& database) {
  const DatabaseInfo info = workspace_.FindDatabase(database);
  workspace_.Open(info);
  workspace_.SetCurrent(info);
  workspace_.set_spid(
      instance_.Enter(*this, workspace_.login().name, client, info.dbid, info.name));
}

Cell EngineSession::Evaluate(std::string_view function, const std::vector<Cell>& arguments) {
  return EvaluateStateFunction({workspace_, resolver_}, function, arguments);
}

void EngineSession::RunBatch(std::string_view text, ResultSink& sink) {
  RunText(text, {}, {}, sink);
}

void EngineSession::RunParameterized(std::string_view text,
                                     const std::vector<RpcParameter>& parameters,
                                     ResultSink& sink) {
  std::vector<ParameterInfo> infos;
  std::vector<Cell> values;
  for (const RpcParameter& parameter : parameters) {
    infos.push_back({parameter.name, parameter.type});
    values.push_back(CellOf(parameter));
  }
  RunText(text, infos, values, sink);
}

void EngineSession::RunText(std::string_view text, const std::vector<ParameterInfo>& parameters,
                            const std::vector<Cell>& values, ResultSink& sink) {
  workspace_.ClearInterrupt();
  instance_.Update(spid(), [](SessionRecord& record) {
    record.status = "runnable";
    record.last_batch = CurrentTime();
  });
  try {
    std::vector<Statement> fresh;
    const std::vector<Statement>& statements = Parse(text, parameters, fresh);
    const TreeLife life = &statements == &insert_ ? TreeLife::kKept : TreeLife::kOneRun;
    for (const Statement& statement : statements) {
      const Execution execution{sink, parameters, values, statement.line, life};
      if (!RunReported(statement, execution)) break;
    }
  } catch (const SqlError& error) {
    ReportError(error.message(), 0, sink);
    sink.OnStatementEnd({.failed = true});
  }
  instance_.Update(spid(), [this](SessionRecord& record) {
    record.status = "sleeping";
    record.command = "AWAITING COMMAND";
    record.open_transactions = workspace_.transaction_count();
  });
}

const std::vector<Statement>& EngineSession::Parse(std::string_view text,
                                                   const std::vector<ParameterInfo>& parameters,
                                                   std::vector<Statement>& fresh) {
  const auto same = [](const ParameterInfo& left, const ParameterInfo& right) {
    return left.name == right.name && EncodeType(left.type) == EncodeType(right.type);
  };
  if (!insert_.empty() && text == insert_text_ && workspace_.database() == insert_database_ &&
      std::ranges::equal(parameters, insert_parameters_, same)) {
    return insert_;
  }
  const auto quoted =
      workspace_.options().quoted_identifiers ? QuotedIdentifiers::kOn : QuotedIdentifiers::kOff;
  fresh = ParseBatch(text, quoted);
  const bool is_insert =
      fresh.size() == 1 && std::holds_alternative<InsertStatement>(fresh[0].node);
  if (!is_insert || parameters.empty()) return fresh;
  queries_.ForgetInsert();
  insert_ = std::move(fresh);
  insert_text_ = text;
  insert_parameters_ = parameters;
  insert_database_ = workspace_.database();
  return insert_;
}

void EngineSession::ReportError(const ServerMessage& message, int line, ResultSink& sink) {
  ServerMessage told = message;
  // A message made away from the text has the line of its statement.
  if (told.line <= 1 && line > 1) told.line = line;
  workspace_.last_error = told.number;
  sink.OnMessage(told);
}

bool EngineSession::RunReported(const Statement& statement, const Execution& execution) {
  const std::size_t kind = statement.node.index();
  instance_.Update(spid(), [kind](SessionRecord& record) { record.command = kCommands.at(kind); });
  ServerMessage message;
  try {
    workspace_.statement_time = CurrentTime();
    const StatementEnd end = Run(statement, execution);
    // Asking for the last error or row count must not change them before it is answered.
    workspace_.last_error = 0;
    if (end.rows >= 0) workspace_.last_row_count = end.rows;
    execution.sink.OnStatementEnd(
        workspace_.options().no_count && !end.is_select ? StatementEnd{.rows = -1} : end);
    return true;
  } catch (const SqlError& error) {
    message = error.message();
  } catch (const SqliteError& error) {
    message = queries_.MessageOfFailed(error, nullptr, "", statement.line);
  }
  workspace_.last_row_count = 0;
  ReportError(message, statement.line, execution.sink);
  if (std::ranges::find(kTerminating, message.number) != std::end(kTerminating)) {
    execution.sink.OnMessage(MessageOf(3621));
  }
  if (workspace_.LostTransaction()) execution.sink.OnMessage(MessageOf(3998));
  execution.sink.OnStatementEnd({.failed = true});
  return !EndsBatch(message.number);
}

StatementEnd EngineSession::Run(const Statement& statement, const Execution& execution) {
  StatementEnd end;
  if (workspace_.interrupted()) Fail(3617);
  if (workspace_.options().no_execute && !std::holds_alternative<SetStatement>(statement.node)) {
    return end;
  }
  std::visit([&](const auto& node) { RunOne(node, execution, end); }, statement.node);
  return end;
}

void EngineSession::RunInside(std::string_view text, const std::vector<ParameterInfo>& parameters,
                              const std::vector<Cell>& values, ResultSink& sink) {
  const std::vector<Statement> statements = ParseBatch(text);
  for (const Statement& statement : statements) {
    const Execution execution{sink, parameters, values, statement.line};
    const StatementEnd end = Run(statement, execution);
    if (end.rows >= 0) workspace_.last_row_count = end.rows;
    sink.OnStatementEnd(workspace_.options().no_count && !end.is_select ? StatementEnd{.rows = -1}
                                                                        : end);
  }
}

void EngineSession::RunProcedure(std::string_view name, const std::vector<RpcParameter>& parameters,
                                 ResultSink& sink) {
  workspace_.ClearInterrupt();
  instance_.Update(spid(), [](SessionRecord& record) {
    record.status = "runnable";
    record.command = "EXECUTE";
    record.last_batch = CurrentTime();
  });
  bool failed = false;
  try {
    workspace_.statement_time = CurrentTime();
    std::vector<ArgumentValue> arguments;
    for (const RpcParameter& parameter : parameters) {
      arguments.push_back({parameter.name, CellOf(parameter), parameter.type});
    }
    const std::vector<Statement> call = ParseBatch("exec " + std::string(name));
    Execute(std::get<ExecuteStatement>(call.at(0).node).procedure, arguments, sink);
  } catch (const SqlError& error) {
    ReportError(error.message(), 0, sink);
    failed = true;
  } catch (const SqliteError& error) {
    ReportError(queries_.MessageOfFailed(error, nullptr, "", 1), 0, sink);
    failed = true;
  }
  instance_.Update(spid(), [](SessionRecord& record) {
    record.status = "sleeping";
    record.command = "AWAITING COMMAND";
  });
  sink.OnReturnStatus(failed ? 1 : 0);
  sink.OnStatementEnd({.failed = failed});
}

void EngineSession::Execute(const ObjectName& name, const std::vector<ArgumentValue>& arguments,
                            ResultSink& sink) {
  const DatabaseInfo before{workspace_.dbid(), workspace_.database(), 0};
  const DatabaseInfo inside =
      workspace_.FindDatabase(name.database.empty() ? workspace_.database() : name.database);
  const ProcedureRow* procedure = FindProcedure(name.name);
  if (procedure == nullptr) {
    const std::optional<FoundObject> kept = resolver_.Find(name);
    if (kept && kept->object.xtype == "P") Fail(50012, {name.Text()});
    Fail(2812, {name.Text()});
  }
  workspace_.Open(inside);
  workspace_.SetCurrent(inside);
  try {
    RunSystemProcedure(*procedure, *this, arguments, sink);
  } catch (...) {
    workspace_.SetCurrent(before);
    throw;
  }
  workspace_.SetCurrent(before);
}

std::unique_ptr<Cursor> EngineSession::OpenCursor(std::string_view text, ResultSink& sink) {
  workspace_.ClearInterrupt();
  workspace_.statement_time = CurrentTime();
  try {
    return OpenEngineCursor(*this, text);
  } catch (const SqlError& error) {
    ReportError(error.message(), 0, sink);
  } catch (const SqliteError& error) {
    ReportError(queries_.MessageOfFailed(error, nullptr, "SELECT", 1), 0, sink);
  }
  sink.OnStatementEnd({.failed = true});
  return nullptr;
}

}  // namespace dbkeeper::server
