// Set, transactions, messages, procedure calls, backups, permissions and the like.
#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"
#include "server/types/text.h"

namespace dbkeeper::server {

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
    const bool goes_on = IsKeyword("READ") || !AtStatementStart();
    if (goes_on && Current().kind == TokenKind::kWord) set.value += ' ' + ExpectWord();
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
  set.value = ParseSignedMeasure();
  if (is_switch) set.value = ToUpperAscii(set.value);
  return set;
}

// ---- transactions ------------------------------------------------------------------------------

// `begin` without one of its words opened a block.
Parser::Node Parser::ParseTransaction(TransactionAction action) {
  const bool begins = action == TransactionAction::kBegin;
  if (begins && AcceptKeyword("DISTRIBUTED")) Refuse("distributed transactions");
  TransactionStatement transaction{action, ""};
  const std::string_view word = AcceptAny({"WORK", "TRAN", "TRANSACTION"});
  if (word.starts_with("TRAN") && IsName()) transaction.name = ExpectName();
  if (begins && IsKeyword("WITH") && IsKeywordAt(1, "MARK")) Refuse("WITH MARK");
  return transaction;
}

// ---- messages and calls ------------------------------------------------------------------------

Parser::Node Parser::ParseRaiseError() {
  RaiseErrorStatement raise;
  // The old form: raiserror 50001 'text'.
  if (!IsSymbol("(")) Refuse("RAISERROR without parentheses");
  Enclosed([&] {
    raise.message = ParseValue();
    ExpectSymbol(",");
    raise.severity = ParseValue();
    ExpectSymbol(",");
    raise.state = ParseValue();
    while (AcceptSymbol(",")) raise.arguments.push_back(ParseValue());
  });
  if (AcceptKeyword("WITH")) ListOf(&Parser::ExpectWord);
  return raise;
}

Parser::Node Parser::ParseExecute() {
  if (IsSymbol("(")) {
    return ExecuteTextStatement{Enclosed([&] { return ParseValue(); })};
  }
  if (Current().kind == TokenKind::kVariable) Refuse("variables");
  return ParseProcedureCall();
}

Parser::Node Parser::ParseProcedureCall() {
  ExecuteStatement execute;
  execute.procedure = ExpectObjectName();
  // p;2 names one of a group of procedures.
  if (IsSymbol(";") && Ahead().kind == TokenKind::kInteger) position_ += 2;
  if (AtStatementEnd() || AtBlockEnd()) return execute;
  bool named = false;
  const auto parse_argument = [&] {
    const int line = Current().line;
    execute.arguments.push_back(ParseProcedureArgument());
    const bool has_name = !execute.arguments.back().name.empty();
    if (named && !has_name) throw MakeError(119, {std::to_string(execute.arguments.size())}, line);
    named = named || has_name;
  };
  if (!IsKeyword("WITH")) List(parse_argument);
  if (AcceptKeyword("WITH")) ExpectKeyword("RECOMPILE");
  return execute;
}

ProcedureArgument Parser::ParseProcedureArgument() {
  ProcedureArgument argument;
  if (Current().kind == TokenKind::kVariable && IsSymbolAt(1, "=")) {
    argument.name = TakeText();
    Advance();
  }
  if (IsKeyword("DEFAULT")) {
    argument.value = TakeToken(ExpressionKind::kDefault);
  } else if (IsName()) {
    // A bare or bracketed word is a string.
    argument.value = TakeToken(ExpressionKind::kLiteral);
    argument.value->literal = TokenKind::kNationalString;
  } else if (IsSymbol("-") || IsSymbol("+")) {
    argument.value = ParseUnary();
  } else if (Current().kind == TokenKind::kSymbol) {
    Fail();
  } else {
    argument.value = ParsePrimary();
  }
  argument.output = !AcceptAny({"OUTPUT", "OUT"}).empty();
  return argument;
}

// ---- backups -----------------------------------------------------------------------------------

Parser::Node Parser::ParseBackup() {
  BackupStatement backup;
  backup.log = !AcceptAny({"LOG", "TRAN", "TRANSACTION"}).empty();
  if (!backup.log) ExpectKeyword("DATABASE");
  backup.database = ExpectName();
  if (IsKeyword("FILE") || IsKeyword("FILEGROUP")) Refuse("BACKUP of files");
  ParseDevicesAndOptions("TO", backup);
  return backup;
}

Parser::Node Parser::ParseRestore() {
  // In the order of RestoreKind.
  constexpr std::string_view kWords[] = {"DATABASE",     "LOG",       "HEADERONLY",
                                         "FILELISTONLY", "LABELONLY", "VERIFYONLY"};
  RestoreStatement restore;
  const auto* word =
      std::ranges::find_if(kWords, [&](std::string_view kind) { return AcceptKeyword(kind); });
  if (word == std::end(kWords)) Fail();
  restore.kind = static_cast<RestoreKind>(word - std::begin(kWords));
  if (restore.kind <= RestoreKind::kLog) restore.database = ExpectName();
  ParseDevicesAndOptions("FROM", restore);
  return restore;
}

void Parser::ParseDevicesAndOptions(std::string_view before, BackupBody& body) {
  if (AcceptKeyword(before)) body.devices = ListOf(&Parser::ParseBackupDevice);
  if (!AcceptKeyword("WITH")) return;
  body.options = ListOf([&] {
    BackupOption option{ExpectWord(), "", ""};
    if (option.name == "MOVE") {
      option.value = ExpectString();
      ExpectKeyword("TO");
      option.target = ExpectString();
    } else if (AcceptSymbol("=")) {
      option.value = ParseMeasure();
    }
    return option;
  });
}

BackupDevice Parser::ParseBackupDevice() {
  const std::string_view kind =
      IsSymbolAt(1, "=") ? AcceptAny({"DISK", "TAPE", "PIPE"}) : std::string_view();
  if (kind.empty()) return {"", ExpectName()};
  Advance();
  return {std::string(kind), ExpectString()};
}

// ---- the server --------------------------------------------------------------------------------

Parser::Node Parser::ParseDbcc() {
  DbccStatement dbcc;
  dbcc.command = ExpectWord();
  if (AcceptSymbol("(")) {
    while (!AcceptSymbol(")")) {
      if (!dbcc.arguments.empty()) ExpectSymbol(",");
      dbcc.arguments.push_back(ParseSignedMeasure());
    }
  }
  if (AcceptKeyword("WITH")) ListOf(&Parser::ExpectWord);
  return dbcc;
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
  statement.grantees = ListOf([&] { return AcceptKeyword("PUBLIC") ? "public" : ExpectName(); });
  if (verb == PermissionVerb::kGrant) {
    statement.with_grant_option = AcceptKeywords({"WITH", "GRANT", "OPTION"});
  } else {
    AcceptKeyword("CASCADE");
  }
  if (AcceptKeyword("AS")) ExpectName();
  return statement;
}

void Parser::ParsePermissionList(PermissionStatement& statement) {
  const auto accept_columns = [&] {
    if (IsSymbol("(")) statement.columns = EnclosedListOf(&Parser::ExpectName);
  };
  statement.all = AcceptKeyword("ALL");
  if (statement.all) {
    AcceptKeyword("PRIVILEGES");
    accept_columns();
  } else {
    List([&] {
      std::string permission = ExpectWord();
      if (permission == "EXEC") permission = "EXECUTE";
      if (permission == "REFERENCES" || permission == "SELECT" || permission == "UPDATE") {
        accept_columns();
      } else if (permission == "CREATE" || permission == "BACKUP") {
        permission += ' ' + ExpectWord();
      }
      statement.permissions.push_back(std::move(permission));
    });
  }
  if (!AcceptKeyword("ON")) return;
  statement.object = ExpectObjectName();
  accept_columns();
}

}  // namespace dbkeeper::server
