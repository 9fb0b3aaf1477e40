// Use, set, transactions, messages, procedure calls, backups, permissions and the like.
#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

// Restore's words that are no database's name.
struct RestoreRow {
  std::string_view word;
  RestoreKind kind;
};
constexpr RestoreRow kRestoreKinds[] = {
    {"HEADERONLY", RestoreKind::kHeaderOnly}, {"FILELISTONLY", RestoreKind::kFileListOnly},
    {"LABELONLY", RestoreKind::kLabelOnly},   {"VERIFYONLY", RestoreKind::kVerifyOnly},
    {"DATABASE", RestoreKind::kDatabase},     {"LOG", RestoreKind::kLog},
};

}  // namespace

Parser::Node Parser::ParseUse() { return UseStatement{ExpectName()}; }

// set nocount on; set ansi_nulls, ansi_padding on; set rowcount 10; set transaction isolation level
// read committed; set identity_insert t on; set statistics io on; set language us_english.
Parser::Node Parser::ParseSet() {
  if (Current().kind == TokenKind::kVariable) Refuse("variables");
  SetStatement set;
  std::string option = ExpectWord();
  if (option == "TRANSACTION") {
    while (IsKeyword("ISOLATION") || IsKeyword("LEVEL")) option += ' ' + ExpectWord();
    set.options.push_back(option);
    set.value = ExpectWord();
    if (!AtStatementStart() || IsKeyword("READ")) {
      if (Current().kind == TokenKind::kWord) set.value += ' ' + ExpectWord();
    }
    return set;
  }
  if (option == "IDENTITY_INSERT") {
    set.table = ExpectObjectName();
  } else if (option == "STATISTICS") {
    option += ' ' + ExpectWord();
  }
  set.options.push_back(option);
  while (AcceptSymbol(",")) set.options.push_back(ExpectWord());
  const bool is_switch = IsKeyword("ON") || IsKeyword("OFF");
  if (AcceptSymbol("-")) set.value = '-';
  set.value += ParseMeasure();
  if (is_switch) set.value = ToUpperAscii(set.value);
  return set;
}

// ---- transactions ------------------------------------------------------------------------------

Parser::Node Parser::ParseBegin() {
  if (AcceptKeyword("DISTRIBUTED")) Refuse("distributed transactions");
  Advance();
  TransactionStatement begin{TransactionAction::kBegin, ""};
  if (IsName()) begin.name = ExpectName();
  if (IsKeyword("WITH") && IsKeywordAt(1, "MARK")) Refuse("WITH MARK");
  return begin;
}

Parser::Node Parser::ParseTransactionEnd(TransactionAction action) {
  TransactionStatement end{action, ""};
  if (AcceptKeyword("WORK")) return end;
  if ((AcceptKeyword("TRAN") || AcceptKeyword("TRANSACTION")) && IsName()) end.name = ExpectName();
  return end;
}

// ---- messages and calls ------------------------------------------------------------------------

Parser::Node Parser::ParsePrint() { return PrintStatement{ParseValue()}; }

Parser::Node Parser::ParseRaiseError() {
  RaiseErrorStatement raise;
  // The old form: raiserror 50001 'text'.
  if (!AcceptSymbol("(")) Refuse("RAISERROR without parentheses");
  raise.message = ParseValue();
  ExpectSymbol(",");
  raise.severity = ParseValue();
  ExpectSymbol(",");
  raise.state = ParseValue();
  while (AcceptSymbol(",")) raise.arguments.push_back(ParseValue());
  ExpectSymbol(")");
  if (AcceptKeyword("WITH")) {
    do {
      ExpectWord();
    } while (AcceptSymbol(","));
  }
  return raise;
}

Parser::Node Parser::ParseExecute() {
  if (AcceptSymbol("(")) {
    ExecuteTextStatement execute{ParseValue()};
    ExpectSymbol(")");
    return execute;
  }
  if (Current().kind == TokenKind::kVariable) Refuse("variables");
  return ParseProcedureCall();
}

Parser::Node Parser::ParseProcedureCall() {
  ExecuteStatement execute;
  execute.procedure = ExpectObjectName();
  // p;2 names one of a group of procedures.
  if (IsSymbol(";") && Ahead().kind == TokenKind::kInteger) {
    Advance();
    Advance();
  }
  if (Current().kind == TokenKind::kEnd || IsSymbol(";") || AtStatementStart() ||
      (IsKeyword("END") && block_depth_ > 0)) {
    return execute;
  }
  bool named = false;
  if (!IsKeyword("WITH")) {
    do {
      const int line = Current().line;
      execute.arguments.push_back(ParseProcedureArgument());
      const bool has_name = !execute.arguments.back().name.empty();
      if (named && !has_name) {
        throw MakeError(119, {std::to_string(execute.arguments.size())}, line);
      }
      named = named || has_name;
    } while (AcceptSymbol(","));
  }
  if (AcceptKeyword("WITH")) ExpectKeyword("RECOMPILE");
  return execute;
}

ProcedureArgument Parser::ParseProcedureArgument() {
  ProcedureArgument argument;
  if (Current().kind == TokenKind::kVariable && IsSymbolAt(1, "=")) {
    argument.name = Current().text;
    Advance();
    Advance();
  }
  const std::size_t first = position_;
  if (AcceptKeyword("DEFAULT")) {
    argument.value = Make(DefaultValue{}, first);
  } else if (IsName()) {
    // A bare or bracketed word is a string.
    Literal literal{LiteralKind::kNationalString, Current().text};
    Advance();
    argument.value = Make(std::move(literal), first);
  } else if (IsSymbol("-") || IsSymbol("+")) {
    argument.value = ParseUnary();
  } else if (Current().kind == TokenKind::kSymbol) {
    Fail();
  } else {
    argument.value = ParsePrimary();
  }
  argument.output = AcceptKeyword("OUTPUT") || AcceptKeyword("OUT");
  return argument;
}

// ---- backups -----------------------------------------------------------------------------------

Parser::Node Parser::ParseBackup() {
  BackupStatement backup;
  backup.log = AcceptKeyword("LOG") || AcceptKeyword("TRAN") || AcceptKeyword("TRANSACTION");
  if (!backup.log) ExpectKeyword("DATABASE");
  backup.database = ExpectName();
  if (IsKeyword("FILE") || IsKeyword("FILEGROUP")) Refuse("BACKUP of files");
  if (AcceptKeyword("TO")) backup.devices = ParseBackupDevices();
  backup.options = ParseBackupOptions();
  return backup;
}

Parser::Node Parser::ParseRestore() {
  RestoreStatement restore;
  const auto* row = std::ranges::find_if(
      kRestoreKinds, [&](const RestoreRow& candidate) { return AcceptKeyword(candidate.word); });
  if (row == std::end(kRestoreKinds)) Fail();
  restore.kind = row->kind;
  if (restore.kind == RestoreKind::kDatabase || restore.kind == RestoreKind::kLog) {
    restore.database = ExpectName();
  }
  if (AcceptKeyword("FROM")) restore.devices = ParseBackupDevices();
  restore.options = ParseBackupOptions();
  return restore;
}

std::vector<BackupDevice> Parser::ParseBackupDevices() {
  std::vector<BackupDevice> devices;
  do {
    BackupDevice device;
    if ((IsKeyword("DISK") || IsKeyword("TAPE") || IsKeyword("PIPE")) && IsSymbolAt(1, "=")) {
      device.kind = ExpectWord();
      Advance();
      device.name = ExpectString();
    } else {
      device.name = ExpectName();
    }
    devices.push_back(std::move(device));
  } while (AcceptSymbol(","));
  return devices;
}

std::vector<BackupOption> Parser::ParseBackupOptions() {
  std::vector<BackupOption> options;
  if (!AcceptKeyword("WITH")) return options;
  do {
    BackupOption option;
    option.name = ExpectWord();
    if (option.name == "MOVE") {
      option.value = ExpectString();
      ExpectKeyword("TO");
      option.target = ExpectString();
    } else if (AcceptSymbol("=")) {
      option.value = ParseMeasure();
    }
    options.push_back(std::move(option));
  } while (AcceptSymbol(","));
  return options;
}

// ---- the server --------------------------------------------------------------------------------

Parser::Node Parser::ParseDbcc() {
  DbccStatement dbcc;
  dbcc.command = ExpectWord();
  if (AcceptSymbol("(")) {
    while (!AcceptSymbol(")")) {
      if (!dbcc.arguments.empty()) ExpectSymbol(",");
      std::string argument(AcceptSymbol("-") ? 1 : 0, '-');
      argument += ParseMeasure();
      dbcc.arguments.push_back(std::move(argument));
    }
  }
  if (AcceptKeyword("WITH")) {
    do {
      dbcc.options.push_back(ExpectWord());
    } while (AcceptSymbol(","));
  }
  return dbcc;
}

// The id stands bare or in brackets.
Parser::Node Parser::ParseKill() {
  KillStatement kill{ParseMeasure()};
  if (AcceptKeyword("WITH")) ExpectWord();
  return kill;
}

Parser::Node Parser::ParseShutdown() {
  AcceptKeywords({"WITH", "NOWAIT"});
  return ShutdownStatement{};
}

Parser::Node Parser::ParseWaitFor() {
  WaitForStatement wait;
  wait.time = AcceptKeyword("TIME");
  if (!wait.time && ExpectWord() != "DELAY") Fail();
  wait.text = ExpectString();
  return wait;
}

// ---- permissions -------------------------------------------------------------------------------

Parser::Node Parser::ParsePermission(PermissionVerb verb) {
  PermissionStatement statement{};
  statement.verb = verb;
  const bool revoke = verb == PermissionVerb::kRevoke;
  if (revoke && IsKeyword("GRANT")) Refuse("REVOKE GRANT OPTION FOR");
  ParsePermissionList(statement);
  if (!revoke || !AcceptKeyword("FROM")) ExpectKeyword("TO");
  ParseGrantees(statement);
  if (verb == PermissionVerb::kGrant) {
    statement.with_grant_option = AcceptKeywords({"WITH", "GRANT", "OPTION"});
  } else {
    AcceptKeyword("CASCADE");
  }
  if (AcceptKeyword("AS")) ExpectName();
  return statement;
}

void Parser::ParsePermissionList(PermissionStatement& statement) {
  if (AcceptKeyword("ALL")) {
    statement.all = true;
    AcceptKeyword("PRIVILEGES");
    if (IsSymbol("(")) statement.columns = ParseNameList();
  } else {
    do {
      std::string permission = ExpectWord();
      if (permission == "EXEC") permission = "EXECUTE";
      if (permission == "REFERENCES" || permission == "SELECT" || permission == "UPDATE") {
        if (IsSymbol("(")) statement.columns = ParseNameList();
      } else if (permission == "CREATE" || permission == "BACKUP") {
        permission += ' ' + ExpectWord();
      }
      statement.permissions.push_back(std::move(permission));
    } while (AcceptSymbol(","));
  }
  if (!AcceptKeyword("ON")) return;
  statement.object = ExpectObjectName();
  if (IsSymbol("(")) statement.columns = ParseNameList();
}

void Parser::ParseGrantees(PermissionStatement& statement) {
  do {
    if (AcceptKeyword("PUBLIC")) {
      statement.grantees.emplace_back("public");
    } else {
      statement.grantees.push_back(ExpectName());
    }
  } while (AcceptSymbol(","));
}

}  // namespace dbkeeper::server
