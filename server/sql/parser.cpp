#include "server/sql/parser.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

constexpr int kMaximumDepth = 120;

// What the server has and this one refuses, so that the operator reads which word it was.
constexpr std::string_view kRefusedStatements[] = {
    "BREAK",  "BULK",  "CLOSE",   "CONTINUE",   "DEALLOCATE", "DECLARE",  "DISK",     "DUMP",
    "ELSE",   "FETCH", "GOTO",    "IF",         "LOAD",       "OPEN",     "READTEXT", "RECONFIGURE",
    "RETURN", "SAVE",  "SETUSER", "UPDATETEXT", "WHILE",      "WRITETEXT"};

}  // namespace

const Parser::StatementRow Parser::kStatements[] = {
    {"SELECT", &Parser::ParseSelect},
    {"INSERT", &Parser::ParseInsert},
    {"UPDATE", &Parser::ParseUpdate},
    {"DELETE", &Parser::ParseDelete},
    {"TRUNCATE", &Parser::ParseTruncate},
    {"CREATE", &Parser::ParseCreate},
    {"ALTER", &Parser::ParseAlter},
    {"DROP", &Parser::ParseDrop},
    {"USE", &Parser::ParseUse},
    {"SET", &Parser::ParseSet},
    {"BEGIN", &Parser::ParseBegin},
    {"COMMIT", &Parser::ParseCommit},
    {"ROLLBACK", &Parser::ParseRollback},
    {"PRINT", &Parser::ParsePrint},
    {"RAISERROR", &Parser::ParseRaiseError},
    {"EXECUTE", &Parser::ParseExecute},
    {"EXEC", &Parser::ParseExecute},
    {"BACKUP", &Parser::ParseBackup},
    {"RESTORE", &Parser::ParseRestore},
    {"DBCC", &Parser::ParseDbcc},
    {"KILL", &Parser::ParseKill},
    {"SHUTDOWN", &Parser::ParseShutdown},
    {"CHECKPOINT", &Parser::ParseCheckpoint},
    {"WAITFOR", &Parser::ParseWaitFor},
    {"GRANT", &Parser::ParseGrant},
    {"REVOKE", &Parser::ParseRevoke},
    {"DENY", &Parser::ParseDeny},
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
    : text_(text), quoted_(quoted), tokens_(Tokenize(text, quoted)) {}

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

void Parser::ExpectKeyword(std::string_view upper) {
  if (!AcceptKeyword(upper)) Fail();
}

void Parser::ExpectKeywords(std::initializer_list<std::string_view> words) {
  for (const std::string_view word : words) ExpectKeyword(word);
}

void Parser::ExpectSymbol(std::string_view symbol) {
  if (!AcceptSymbol(symbol)) Fail();
}

std::string Parser::ExpectName() {
  if (!IsName()) Fail();
  if (Current().text.empty()) throw MakeError(1038, {}, Current().line);
  std::string name = Current().text;
  Advance();
  return name;
}

std::string Parser::ExpectWord() {
  if (Current().kind != TokenKind::kWord) Fail();
  std::string word = ToUpperAscii(Current().text);
  Advance();
  return word;
}

std::string Parser::ExpectString() {
  if (Current().kind != TokenKind::kString && Current().kind != TokenKind::kNationalString) Fail();
  std::string text = Current().text;
  Advance();
  return text;
}

std::string Parser::ExpectInteger() {
  std::string digits = AcceptSymbol("-") ? "-" : "";
  if (Current().kind != TokenKind::kInteger) Fail();
  digits += Current().text;
  Advance();
  return digits;
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
  if (parts.size() > 4) {
    std::string written;
    for (const std::string& part : parts) written += (written.empty() ? "" : ".") + part;
    throw MakeError(117, {"object", written}, line);
  }
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

std::vector<std::string> Parser::ParseNameList() {
  std::vector<std::string> names;
  ExpectSymbol("(");
  do {
    names.push_back(ExpectName());
  } while (AcceptSymbol(","));
  ExpectSymbol(")");
  return names;
}

std::string Parser::ParseMeasure() {
  const TokenKind kind = Current().kind;
  if (kind == TokenKind::kEnd || kind == TokenKind::kSymbol) Fail();
  std::string text = Current().text;
  const bool number = kind == TokenKind::kInteger || kind == TokenKind::kDecimal;
  Advance();
  if (number && IsSymbol("%")) {
    text += '%';
    Advance();
  } else if (number && Current().kind == TokenKind::kWord && Current().begin == LastEnd()) {
    text += Current().text;
    Advance();
  }
  return text;
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
  if (IsKeyword("END") && block_depth_ > 0) {
    if (tokens_[position_ - 1].kind == TokenKind::kWord &&
        EqualsKeyword(tokens_[position_ - 1].text, "BEGIN")) {
      Fail();
    }
    Advance();
    --block_depth_;
    return true;
  }
  return false;
}

Parser::Node Parser::ParseStatementNode(bool first) {
  if (Current().kind == TokenKind::kWord) {
    for (const StatementRow& row : kStatements) {
      if (!IsKeyword(row.keyword)) continue;
      if (row.keyword != "SELECT") Advance();
      return (this->*row.parse)();
    }
    RefuseByName();
  }
  if (IsSymbol("(") && (IsKeywordAt(1, "SELECT") || IsSymbolAt(1, "("))) return ParseSelect();
  // A batch may begin with a procedure's bare name.
  if (first && (IsName() || IsSymbol("."))) return ParseProcedureCall();
  Fail();
}

void Parser::RefuseByName() const {
  for (const std::string_view word : kRefusedStatements) {
    if (IsKeyword(word)) Refuse(word);
  }
}

bool Parser::AtStatementStart() const {
  if (Current().kind != TokenKind::kWord) return false;
  const bool known = std::any_of(std::begin(kStatements), std::end(kStatements),
                                 [&](const StatementRow& row) { return IsKeyword(row.keyword); });
  return known || std::any_of(std::begin(kRefusedStatements), std::end(kRefusedStatements),
                              [&](std::string_view word) { return IsKeyword(word); });
}

// Statements need no ";" between them, but what follows one must begin another.
void Parser::ExpectStatementEnd() const {
  if (Current().kind == TokenKind::kEnd || IsSymbol(";") || AtStatementStart()) return;
  if (IsKeyword("END") && block_depth_ > 0) return;
  if (IsSymbol("(") && IsKeywordAt(1, "SELECT")) return;
  Fail();
}

// ---- the entry points --------------------------------------------------------------------------

ExpressionPtr Parser::WholeExpression() {
  ExpressionPtr expression = ParseAny();
  if (Current().kind != TokenKind::kEnd) Fail();
  return expression;
}

ObjectName Parser::WholeName() {
  ObjectName name = ExpectObjectName();
  if (Current().kind != TokenKind::kEnd) Fail();
  return name;
}

Parameters Parser::WholeParameterList() {
  Parameters declarations;
  if (Current().kind == TokenKind::kEnd) return declarations;
  do {
    if (Current().kind != TokenKind::kVariable) Fail();
    Parameter declaration;
    declaration.name = Current().text;
    Advance();
    AcceptKeyword("AS");
    declaration.type = ParseType(nullptr, false);
    declaration.is_output = AcceptKeyword("OUTPUT") || AcceptKeyword("OUT");
    declarations.push_back(std::move(declaration));
  } while (AcceptSymbol(","));
  if (Current().kind != TokenKind::kEnd) Fail();
  return declarations;
}

std::vector<Statement> ParseBatch(std::string_view text, QuotedIdentifiers quoted) {
  return Parser(text, quoted).Batch();
}

ExpressionPtr ParseExpression(std::string_view text) {
  return Parser(text, QuotedIdentifiers::kOn).WholeExpression();
}

ObjectName ParseObjectName(std::string_view text) {
  return Parser(text, QuotedIdentifiers::kOn).WholeName();
}

Parameters ParseParameterDeclarations(std::string_view text) {
  return Parser(text, QuotedIdentifiers::kOn).WholeParameterList();
}

}  // namespace dbkeeper::server
