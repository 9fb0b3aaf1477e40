#include "server/engine/engine_session.h"

#include <algorithm>
#include <array>
#include <utility>

#include "server/engine/state_functions.h"
#include "server/engine/statements.h"
#include "server/sql/parser.h"
#include "server/types/messages.h"
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
    "WAITFOR",
    "GRANT",
    "BULK INSERT"};

// Errors after which the server says that the statement was terminated.
constexpr int kTerminating[] = {220, 232, 512, 515, 547, 1505, 2601, 2627, 8115, 8134, 8152};

// It says so of statements that change something.
bool TellsTermination(const Statement& statement, int error) {
  const auto* select = std::get_if<SelectStatement>(&statement.node);
  return (select == nullptr || MakesTable(*select)) &&
         std::ranges::find(kTerminating, error) != std::end(kTerminating);
}

}  // namespace

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
  workspace_.set_spid(instance_.Enter(*this, workspace_.login().name, client, info.dbid));
}

// The session is shown as busy while this lives.
class EngineSession::Activity {
 public:
  Activity(EngineSession& session, const char* command) : session_(session) {
    session_.workspace_.ClearInterrupt();
    const std::int64_t now = CurrentTime();
    session_.workspace_.statement_time = now;
    session_.instance_.Update(session_.spid(), [&](SessionRecord& record) {
      record.status = "runnable";
      record.command = command;
      record.last_batch = now;
    });
  }
  ~Activity() {
    session_.instance_.Update(session_.spid(), [this](SessionRecord& record) {
      record.status = "sleeping";
      record.command = "AWAITING COMMAND";
      record.open_transactions = session_.workspace_.transaction_count();
    });
  }
  Activity(const Activity&) = delete;
  Activity& operator=(const Activity&) = delete;

 private:
  EngineSession& session_;
};

Cell EngineSession::Evaluate(std::string_view function, const std::vector<Cell>& arguments) {
  return EvaluateStateFunction({workspace_, resolver_}, function, arguments);
}

void EngineSession::RunBatch(std::string_view text, ResultSink& sink) {
  RunParameterized(text, {}, sink);
}

template <typename Work>
bool EngineSession::Reported(ResultSink& sink, const Work& work) {
  try {
    work();
    return true;
  } catch (const SqlError& error) {
    ReportError(error.message(), sink);
    return false;
  }
}

void EngineSession::RunParameterized(std::string_view text, const Parameters& parameters,
                                     ResultSink& sink) {
  const Activity activity(*this, "SELECT");
  const bool parsed = Reported(sink, [&] {
    std::vector<Statement> fresh;
    const std::vector<Statement>& statements = Parse(text, parameters, fresh);
    const TreeLife life = &statements == &insert_ ? TreeLife::kKept : TreeLife::kOneRun;
    for (const Statement& statement : statements) {
      const Execution execution{sink, parameters, statement.line, life};
      if (!RunReported(statement, execution)) break;
    }
  });
  if (!parsed) sink.OnStatementEnd({.failed = true});
}

const std::vector<Statement>& EngineSession::Parse(std::string_view text,
                                                   const Parameters& parameters,
                                                   std::vector<Statement>& fresh) {
  const auto same = [](const Parameter& left, const Parameter& right) {
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

void EngineSession::ReportError(const ServerMessage& message, ResultSink& sink) {
  workspace_.last_error = message.number;
  sink.OnMessage(message);
}

bool EngineSession::RunReported(const Statement& statement, const Execution& execution) {
  const std::size_t kind = statement.node.index();
  instance_.Update(spid(), [kind](SessionRecord& record) { record.command = kCommands.at(kind); });
  workspace_.statement_time = CurrentTime();
  int error = 0;
  try {
    Run(statement, execution);
    // Asking for the last error must not change it before it is answered.
    workspace_.last_error = 0;
    return true;
  } catch (const SqlError& failure) {
    ReportError(failure.message(), execution.sink);
    error = failure.message().number;
  }
  workspace_.last_row_count = 0;
  if (TellsTermination(statement, error)) {
    execution.sink.OnMessage(MakeMessage(3621, {}, statement.line));
  }
  if (EndsTransaction(error) && workspace_.transaction_count() > 0) {
    workspace_.RollbackTransaction();
  }
  if (workspace_.LostTransaction()) execution.sink.OnMessage(MakeMessage(3998));
  execution.sink.OnStatementEnd({.failed = true});
  return !EndsBatch(error);
}

bool EngineSession::Skips(const Statement& statement) {
  if (std::holds_alternative<SetStatement>(statement.node)) return false;
  if (workspace_.options().no_execute) return true;
  const auto* select = std::get_if<SelectStatement>(&statement.node);
  return workspace_.options().format_only && (select == nullptr || MakesTable(*select));
}

void EngineSession::Run(const Statement& statement, const Execution& execution) {
  StatementEnd end;
  try {
    workspace_.StopIfInterrupted();
    if (!Skips(statement)) end = RunStatement(*this, statement, execution);
  } catch (const SqlError& error) {
    // A message made away from the text has the line of its statement.
    ServerMessage message = error.message();
    if (message.line <= 1) message.line = statement.line;
    throw SqlError(message);
  }
  if (end.rows >= 0) workspace_.last_row_count = end.rows;
  if (workspace_.options().no_count && !end.is_select) end = {};
  execution.sink.OnStatementEnd(end);
}

void EngineSession::RunInside(std::string_view text, const Parameters& parameters,
                              ResultSink& sink) {
  for (const Statement& statement : ParseBatch(text)) {
    Run(statement, {sink, parameters, statement.line});
  }
}

void EngineSession::Describe(std::string_view text, const Parameters& parameters,
                             ResultSink& sink) {
  const bool before = std::exchange(workspace_.options().format_only, true);
  RunParameterized(text, parameters, sink);
  workspace_.options().format_only = before;
}

void EngineSession::RunProcedure(std::string_view name, const Parameters& parameters,
                                 ResultSink& sink) {
  const Activity activity(*this, "EXECUTE");
  const bool done = Reported(sink, [&] {
    for (const Parameter& parameter : parameters) {
      if (parameter.is_output) throw Unsupported("the output parameter " + parameter.name);
    }
    Execute(ParseObjectName(name), parameters, sink);
  });
  sink.OnReturnStatus(done ? 0 : 1);
  sink.OnStatementEnd({.failed = !done});
}

void EngineSession::Execute(const ObjectName& name, const Parameters& arguments, ResultSink& sink) {
  const DatabaseInfo before{workspace_.dbid(), workspace_.database(), 0};
  const DatabaseInfo inside =
      workspace_.FindDatabase(name.database.empty() ? workspace_.database() : name.database);
  workspace_.Open(inside);
  workspace_.SetCurrent(inside);
  try {
    if (!instance_.run_procedure()(name.name, *this, arguments, sink)) {
      const std::optional<FoundObject> kept = resolver_.Find(name);
      if (!kept || kept->object.xtype != "P") Fail(2812, {name.Text()});
      NeedPermission(workspace_, *kept, "EXECUTE");
      Fail(50012, {name.Text()});
    }
  } catch (...) {
    workspace_.SetCurrent(before);
    throw;
  }
  workspace_.SetCurrent(before);
}

std::unique_ptr<Cursor> EngineSession::OpenCursor(std::string_view text, ResultSink& sink) {
  const Activity activity(*this, "SELECT");
  std::unique_ptr<Cursor> cursor;
  const bool done = Reported(sink, [&] { cursor = OpenEngineCursor(*this, text); });
  if (!done) sink.OnStatementEnd({.failed = true});
  return cursor;
}

}  // namespace dbkeeper::server
