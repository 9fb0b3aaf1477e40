#include "server/sql/parser.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

constexpr int kMaximumDepth = 120;

// What the server has and this one refuses, so that the operator reads which word it was.
constexpr std::string_view kRefused =
    " BREAK BULK CLOSE CONTINUE DEALLOCATE DECLARE DISK DUMP ELSE FETCH GOTO IF LOAD OPEN READTEXT "
    "RECONFIGURE RETURN SAVE SETUSER UPDATETEXT WHILE WRITETEXT ";

}  // namespace

const Parser::StatementRow Parser::kStatements[] = {
    {"SELECT", [](Parser& p) -> Node { return SelectStatement{p.ParseQuery()}; }},
    {"INSERT", Call<&Parser::ParseInsert>},
    {"UPDATE", Call<&Parser::ParseUpdate>},
    {"DELETE", Call<&Parser::ParseDelete>},
    {"TRUNCATE",
     [](Parser& p) -> Node {
       p.ExpectKeyword("TABLE");
       return TruncateStatement{p.ExpectObjectName()};
     }},
    {"CREATE", Call<&Parser::ParseCreate>},
    {"ALTER", Call<&Parser::ParseAlter>},
    {"DROP", Call<&Parser::ParseDrop>},
    {"USE", [](Parser& p) -> Node { return UseStatement{p.ExpectName()}; }},
    {"SET", Call<&Parser::ParseSet>},
    {"BEGIN", [](Parser& p) { return p.ParseTransaction(TransactionAction::kBegin); }},
    {"COMMIT", [](Parser& p) { return p.ParseTransaction(TransactionAction::kCommit); }},
    {"ROLLBACK", [](Parser& p) { return p.ParseTransaction(TransactionAction::kRollback); }},
    {"PRINT", [](Parser& p) -> Node { return PrintStatement{p.ParseValue()}; }},
    {"RAISERROR", Call<&Parser::ParseRaiseError>},
    {"EXECUTE", Call<&Parser::ParseExecute>},
    {"EXEC", Call<&Parser::ParseExecute>},
    {"BACKUP", Call<&Parser::ParseBackup>},
    {"RESTORE", Call<&Parser::ParseRestore>},
    {"DBCC", Call<&Parser::ParseDbcc>},
    {"KILL",
     [](Parser& p) -> Node {
       KillStatement kill{p.ParseMeasure()};  // the id stands bare or in brackets
       if (p.AcceptKeyword("WITH")) p.ExpectWord();
       return kill;
     }},
    {"SHUTDOWN",
     [](Parser& p) -> Node {
       p.AcceptKeywords({"WITH", "NOWAIT"});
       return ShutdownStatement{};
     }},
    {"CHECKPOINT", [](Parser&) -> Node { return CheckpointStatement{}; }},
    {"WAITFOR", Call<&Parser::ParseWaitFor>},
    {"GRANT", [](Parser& p) { return p.ParsePermission(PermissionVerb::kGrant); }},
    {"REVOKE", [](Parser& p) { return p.ParsePermission(PermissionVerb::kRevoke); }},
    {"DENY", [](Parser& p) { return p.ParsePermission(PermissionVerb::kDeny); }},
};

std::string ObjectName::Text() const {
  std::string text;
  for (const std::string* part : {&server, &database, &owner}) {
    if (!part->empty() || !text.empty()) text += *part + '.';
  }
  return text + name;
}

Parser::Depth::Depth(Parser& parser) : parser_(parser) {
  if (++parser_.depth_ <= kMaximumDepth) return;
  --parser_.depth_;
  throw MakeError(191, {}, parser_.Current().line);
}

Parser::Parser(std::string_view text, QuotedIdentifiers quoted)
    : text_(text), tokens_(Tokenize(text, quoted)) {}

// ---- tokens ------------------------------------------------------------------------------------

const Token& Parser::Ahead(std::size_t count) const {
  return tokens_[std::min(position_ + count, tokens_.size() - 1)];
}

void Parser::Advance() {
  if (position_ + 1 < tokens_.size()) ++position_;
}

bool Parser::IsKeywordAt(std::size_t ahead, std::string_view upper) const {
  const Token& token = Ahead(ahead);
  return token.kind == TokenKind::kWord && EqualsKeyword(token.text, upper);
}

bool Parser::IsSymbolAt(std::size_t ahead, std::string_view symbol) const {
  const Token& token = Ahead(ahead);
  return token.kind == TokenKind::kSymbol && token.text == symbol;
}

bool Parser::IsName() const {
  const Token& token = Current();
  return token.kind == TokenKind::kQuotedName ||
         (token.kind == TokenKind::kWord && !IsReservedWord(token.text));
}

bool Parser::IsString() const {
  return Current().kind == TokenKind::kString || Current().kind == TokenKind::kNationalString;
}

bool Parser::AcceptKeyword(std::string_view upper) {
  if (!IsKeyword(upper)) return false;
  Advance();
  return true;
}

bool Parser::AcceptSymbol(std::string_view symbol) {
  if (!IsSymbol(symbol)) return false;
  Advance();
  return true;
}

bool Parser::AcceptKeywords(std::initializer_list<std::string_view> words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (!IsKeywordAt(i, *(words.begin() + i))) return false;
  }
  position_ += words.size();
  return true;
}

std::string_view Parser::AcceptAny(std::initializer_list<std::string_view> words) {
  const auto* word = std::ranges::find_if(words, [&](auto w) { return AcceptKeyword(w); });
  return word == words.end() ? "" : *word;
}

void Parser::ExpectKeyword(std::string_view upper) {
  if (!AcceptKeyword(upper)) Fail();
}

void Parser::ExpectSymbol(std::string_view symbol) {
  if (!AcceptSymbol(symbol)) Fail();
}

std::string Parser::TakeText() {
  std::string text = Current().text;
  Advance();
  return text;
}

std::string Parser::ExpectName() {
  if (!IsName()) Fail();
  if (Current().text.empty()) throw MakeError(1038, {}, Current().line);
  return TakeText();
}

std::string Parser::ExpectWord() {
  if (Current().kind != TokenKind::kWord) Fail();
  return ToUpperAscii(TakeText());
}

std::string Parser::ExpectString() {
  if (!IsString()) Fail();
  return TakeText();
}

void Parser::ExpectOwnCollation() {
  const std::string& name = Current().text;
  if (!SameName(name, kDefaultCollation) && !SameName(name, "database_default")) {
    Refuse("the collation " + name);
  }
  Advance();
}

std::string Parser::ExpectInteger() {
  const std::string sign = AcceptSymbol("-") ? "-" : "";
  if (Current().kind != TokenKind::kInteger) Fail();
  return sign + TakeText();
}

// One to four parts; a part between two points may be left out ("db..t").
std::vector<std::string> Parser::ParseDottedName() {
  std::vector<std::string> parts;
  parts.push_back(IsSymbol(".") ? "" : ExpectName());
  while (AcceptSymbol(".")) parts.push_back(IsSymbol(".") ? "" : ExpectName());
  return parts;
}

ObjectName Parser::ObjectNameOf(std::vector<std::string> parts, int line) const {
  ObjectName name;
  if (parts.size() > 4) throw MakeError(117, {"object", Joined(parts, ".")}, line);
  parts.insert(parts.begin(), 4 - parts.size(), "");
  name.server = std::move(parts[0]);
  name.database = std::move(parts[1]);
  name.owner = std::move(parts[2]);
  name.name = std::move(parts[3]);
  return name;
}

ObjectName Parser::ExpectObjectName() {
  const int line = Current().line;
  return ObjectNameOf(ParseDottedName(), line);
}

std::string Parser::ParseMeasure() {
  const TokenKind kind = Current().kind;
  if (kind == TokenKind::kEnd || kind == TokenKind::kSymbol) Fail();
  std::string text = TakeText();
  if (kind != TokenKind::kInteger && kind != TokenKind::kDecimal) return text;
  const bool unit = Current().kind == TokenKind::kWord && Current().begin == LastEnd();
  if (unit || IsSymbol("%")) text += TakeText();
  return text;
}

std::string Parser::ParseSignedMeasure() {
  const std::string sign = AcceptSymbol("-") ? "-" : "";
  return sign + ParseMeasure();
}

void Parser::SkipOptions() {
  ExpectSymbol("(");
  while (!AcceptSymbol(")")) {
    if (Current().kind == TokenKind::kEnd) Fail();
    Advance();
  }
}

std::string Parser::TextBetween(std::size_t begin, std::size_t end) const {
  return std::string(text_.substr(begin, end - begin));
}

void Parser::Fail() const {
  // At the end of the batch the server names the last word it read.
  const bool at_end = Current().kind == TokenKind::kEnd;
  FailAt(at_end && position_ > 0 ? tokens_[position_ - 1] : Current());
}

void Parser::FailAt(const Token& token) const {
  if (token.kind == TokenKind::kWord && IsReservedWord(token.text)) {
    throw MakeError(156, {token.text}, token.line);
  }
  throw MakeError(170, {token.text, std::to_string(token.line)}, token.line);
}

void Parser::Refuse(std::string_view construct) const {
  throw Unsupported(construct, Current().line);
}

void Parser::RefuseAny(std::initializer_list<std::string_view> words,
                       std::string_view before) const {
  for (const std::string_view word : words) {
    if (IsKeyword(word)) Refuse(std::string(before).append(word));
  }
}

// ---- batches -----------------------------------------------------------------------------------

std::vector<Statement> Parser::Batch() {
  std::vector<Statement> statements;
  while (Current().kind != TokenKind::kEnd) {
    if (!AcceptSymbol(";")) ParseOneStatement(statements);
  }
  if (block_depth_ > 0) Fail();
  return statements;
}

void Parser::ParseOneStatement(std::vector<Statement>& statements) {
  const bool first = statement_count_++ == 0;
  if (OpenOrCloseBlock()) return;
  Statement statement{UseStatement{}, Current().line};
  chain_ = 0;
  statement.node = ParseStatementNode(first);
  ExpectStatementEnd();
  statements.push_back(std::move(statement));
}

// "begin ... end" only groups statements, as nothing here runs them conditionally.
bool Parser::OpenOrCloseBlock() {
  const bool transaction =
      IsKeywordAt(1, "TRAN") || IsKeywordAt(1, "TRANSACTION") || IsKeywordAt(1, "DISTRIBUTED");
  if (IsKeyword("BEGIN") && !transaction) {
    Advance();
    ++block_depth_;
    return true;
  }
  if (AtBlockEnd()) {
    const Token& before = tokens_[position_ - 1];
    if (before.kind == TokenKind::kWord && EqualsKeyword(before.text, "BEGIN")) Fail();
    Advance();
    --block_depth_;
    return true;
  }
  return false;
}

const Parser::StatementRow* Parser::StatementHere() const {
  const auto* row = std::ranges::find_if(
      kStatements, [&](const StatementRow& candidate) { return IsKeyword(candidate.keyword); });
  return row == std::end(kStatements) ? nullptr : row;
}

bool Parser::AtRefused() const {
  return Current().kind == TokenKind::kWord && HasWord(kRefused, Current().text);
}

bool Parser::AtStatementStart() const { return StatementHere() != nullptr || AtRefused(); }

Parser::Node Parser::ParseStatementNode(bool first) {
  if (const StatementRow* row = StatementHere()) {
    if (row->keyword != "SELECT") Advance();
    return row->parse(*this);
  }
  if (AtRefused()) Refuse(ToUpperAscii(Current().text));
  if (IsSymbol("(") && (IsKeywordAt(1, "SELECT") || IsSymbolAt(1, "("))) {
    return SelectStatement{ParseQuery()};
  }
  // A batch may begin with a procedure's bare name.
  if (first && (IsName() || IsSymbol("."))) return ParseProcedureCall();
  Fail();
}

// Statements need no ";" between them, but what follows one must begin another.
void Parser::ExpectStatementEnd() const {
  const bool query = IsSymbol("(") && IsKeywordAt(1, "SELECT");
  if (AtStatementEnd() || AtBlockEnd() || query) return;
  Fail();
}

// ---- the entry points --------------------------------------------------------------------------

Parameters Parser::ParseParameterList() {
  Parameters declarations;
  if (Current().kind == TokenKind::kEnd) return declarations;
  List([&] {
    if (Current().kind != TokenKind::kVariable) Fail();
    Parameter& declaration = declarations.emplace_back();
    declaration.name = TakeText();
    AcceptKeyword("AS");
    declaration.type = ParseType(nullptr, false);
    declaration.is_output = !AcceptAny({"OUTPUT", "OUT"}).empty();
  });
  return declarations;
}

std::vector<Statement> ParseBatch(std::string_view text, QuotedIdentifiers quoted) {
  return Parser(text, quoted).Batch();
}

ExpressionPtr ParseExpression(std::string_view text) {
  return Parser(text, QuotedIdentifiers::kOn).Whole(&Parser::ParseAny);
}

ObjectName ParseObjectName(std::string_view text) {
  return Parser(text, QuotedIdentifiers::kOn).Whole(&Parser::ExpectObjectName);
}

Parameters ParseParameterDeclarations(std::string_view text) {
  return Parser(text, QuotedIdentifiers::kOn).Whole(&Parser::ParseParameterList);
}

}  // namespace dbkeeper::server
