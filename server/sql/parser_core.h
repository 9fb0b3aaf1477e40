// The recursive-descent parser behind parser.h. Its methods stand in one source per family:
// parser.cpp (batches, tokens, names), parse_expression.cpp, parse_query.cpp, parse_table.cpp,
// parse_definition.cpp and parse_administration.cpp. Used only by these.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "server/sql/ast.h"
#include "server/sql/lexer.h"
#include "server/types/parameter.h"

namespace dbkeeper::server {

class Parser {
 public:
  Parser(std::string_view text, QuotedIdentifiers quoted);

  std::vector<Statement> Batch();
  ExpressionPtr ParseAny();
  ObjectName ExpectObjectName();
  Parameters ParseParameterList();
  // What is parsed has to be all of the text.
  template <typename Parse>
  auto Whole(const Parse& parse) {
    auto whole = (this->*parse)();
    if (Current().kind != TokenKind::kEnd) Fail();
    return whole;
  }

 private:
  using Node = decltype(Statement::node);
  // What begins with the word is parsed from behind it.
  struct StatementRow {
    std::string_view keyword;
    Node (*parse)(Parser&);
  };
  static const StatementRow kStatements[];

  // ---- tokens and names: parser.cpp
  const Token& Current() const { return tokens_[position_]; }
  const Token& Ahead(std::size_t count = 1) const;
  void Advance();
  bool IsKeyword(std::string_view upper) const { return IsKeywordAt(0, upper); }
  bool IsKeywordAt(std::size_t ahead, std::string_view upper) const;
  bool IsSymbol(std::string_view symbol) const { return IsSymbolAt(0, symbol); }
  bool IsSymbolAt(std::size_t ahead, std::string_view symbol) const;
  bool IsName() const;  // a quoted name or a word that is not reserved
  bool IsString() const;
  bool AcceptKeyword(std::string_view upper);
  // All of them in a row, or nothing.
  bool AcceptKeywords(std::initializer_list<std::string_view> words);
  // The first of them that stands here; empty: none.
  std::string_view AcceptAny(std::initializer_list<std::string_view> words);
  bool AcceptSymbol(std::string_view symbol);
  void ExpectKeyword(std::string_view upper);
  void ExpectSymbol(std::string_view symbol);
  std::string ExpectName();
  std::string ExpectWord();  // any word, in capitals
  std::string ExpectString();
  std::string ExpectInteger();
  // Takes the name of this server's collation, and refuses others.
  void ExpectOwnCollation();
  ObjectName ObjectNameOf(std::vector<std::string> parts, int line) const;
  std::vector<std::string> ParseDottedName();
  // Numbers with unit, words, strings: "10", "10MB", "10%", "unlimited".
  std::string ParseMeasure();
  std::string ParseSignedMeasure();
  std::string TakeText();  // of the token that stands here
  std::string TextBetween(std::size_t begin, std::size_t end) const;
  std::size_t LastEnd() const { return position_ == 0 ? 0 : tokens_[position_ - 1].end; }
  void SkipOptions();  // the rest up to the closing parenthesis
  [[noreturn]] void Fail() const;
  [[noreturn]] void FailAt(const Token& token) const;
  [[noreturn]] void Refuse(std::string_view construct) const;
  // Refuses the word of the list that stands here, if one does.
  void RefuseAny(std::initializer_list<std::string_view> words, std::string_view before = "") const;

  // One or more, with commas between them.
  template <typename Parse>
  void List(const Parse& parse) {
    do {
      parse();
    } while (AcceptSymbol(","));
  }
  template <typename Parse>
  auto ListOf(const Parse& parse) {
    std::vector<decltype(parse())> items;
    List([&] { items.push_back(parse()); });
    return items;
  }
  template <typename Item>
  std::vector<Item> ListOf(Item (Parser::*parse)()) {
    return ListOf([&] { return (this->*parse)(); });
  }
  // What stands in parentheses.
  template <typename Parse>
  auto Enclosed(const Parse& parse) {
    ExpectSymbol("(");
    if constexpr (std::is_void_v<decltype(parse())>) {
      parse();
      ExpectSymbol(")");
    } else {
      auto inner = parse();
      ExpectSymbol(")");
      return inner;
    }
  }
  // "(a, b)"
  template <typename Item>
  std::vector<Item> EnclosedListOf(Item (Parser::*parse)()) {
    return Enclosed([&] { return ListOf(parse); });
  }

  // ---- batches: parser.cpp
  void ParseOneStatement(std::vector<Statement>& statements);
  bool OpenOrCloseBlock();
  bool AtBlockEnd() const { return block_depth_ > 0 && IsKeyword("END"); }
  bool AtStatementEnd() const {
    return Current().kind == TokenKind::kEnd || IsSymbol(";") || AtStatementStart();
  }
  Node ParseStatementNode(bool first);
  void ExpectStatementEnd() const;
  const StatementRow* StatementHere() const;
  bool AtRefused() const;
  bool AtStatementStart() const;
  template <auto Method>
  static Node Call(Parser& parser) {
    return (parser.*Method)();
  }

  // ---- expressions: parse_expression.cpp
  enum class Wanted { kValue, kPredicate };
  ExpressionPtr ParseValue();
  ExpressionPtr ParseCondition();
  ExpressionPtr ParseChain(OperatorLevel level);
  ExpressionPtr ParseOperand(OperatorLevel level);
  ExpressionPtr ParseNot();
  ExpressionPtr ParsePredicate();
  ExpressionPtr ParseComparison(ExpressionPtr left, const Operator& op);
  ExpressionPtr ParseNegatable(ExpressionPtr value);
  ExpressionPtr ParseUnary();
  ExpressionPtr ParsePrimary();
  ExpressionPtr ParseParenthesised();
  ExpressionPtr ParseNameOrCall();
  ExpressionPtr ParseCall(std::vector<std::string> name);
  ExpressionPtr ParseKeywordExpression();
  ExpressionPtr ParseCase();
  ExpressionPtr ParseCast();
  ExpressionPtr ParseOdbcEscape();
  const Operator* OperatorHere(OperatorLevel level) const;
  ExpressionPtr Required(ExpressionPtr expression, Wanted wanted) const;
  // An expression that begins here; the second makes the token that stands here one.
  ExpressionPtr Make(ExpressionKind kind) const;
  ExpressionPtr TakeToken(ExpressionKind kind);
  ExpressionPtr Join(ExpressionPtr left, const Operator& op, ExpressionPtr right);
  // `for_cast`: char without a length has 30 characters there, elsewhere 1.
  SqlType ParseType(std::string* written_name, bool for_cast);

  // ---- queries and changes of rows: parse_query.cpp
  QueryPtr ParseQuery();
  QueryPtr ParseEnclosedQuery();
  SelectCore ParseSelectCore();
  ExpressionPtr ParseTop();
  SelectItem ParseSelectItem();
  std::string ParseColumnAlias();
  TableSourcePtr ParseTableSource();
  TableSourcePtr ParseJoin(TableSourcePtr left, JoinKind kind);
  TableSourcePtr ParseTablePrimary();
  void ParseTableAlias(TableSource& source);
  void ParseTableHints();
  std::optional<JoinKind> AcceptJoin();
  std::vector<TableSourcePtr> ParseFrom();
  std::vector<OrderItem> ParseOrderBy();
  bool AcceptDescending();
  void ParseQueryTail();
  Node ParseInsert();
  Node ParseInsertBulk();
  Node ParseUpdate();
  Node ParseDelete();
  ExpressionPtr ParseValueOrDefault();
  ExpressionPtr ParseWhere();

  // ---- tables: parse_table.cpp
  Node ParseCreateTable();
  Node ParseAlterTable();
  bool ParseTablePart(TableParts& parts);  // true: a column
  DropParts ParseDropParts();
  ColumnDefinition ParseColumnDefinition();
  bool ParseColumnOption(ColumnDefinition& column);
  bool AtConstraint() const;
  Constraint ParseConstraint();
  void ParseKeyConstraint(Constraint& constraint);
  void ParseReferences(Constraint& constraint);
  std::string ParseConstraintText();
  KeyColumn ParseKeyColumn();
  void ParseIndexOptions(CreateIndexStatement& index);
  Node ParseCreateIndex();

  // ---- other definitions: parse_definition.cpp
  Node ParseCreate();
  Node ParseAlter();
  Node ParseDrop();
  Node ParseView(bool alter);
  Node ParseModule(bool alter);
  void ParseTriggerHead(CreateModuleStatement& module);
  Node ParseCreateDatabase();
  Node ParseAlterDatabase();
  DatabaseFile ParseDatabaseFile();

  // ---- administration: parse_administration.cpp
  Node ParseSet();
  Node ParseTransaction(TransactionAction action);
  Node ParseRaiseError();
  Node ParseExecute();
  Node ParseProcedureCall();
  ProcedureArgument ParseProcedureArgument();
  Node ParseBackup();
  Node ParseRestore();
  void ParseDevicesAndOptions(std::string_view before, BackupBody& body);
  BackupDevice ParseBackupDevice();
  Node ParseDbcc();
  Node ParseWaitFor();
  Node ParsePermission(PermissionVerb verb);
  void ParsePermissionList(PermissionStatement& statement);

  // Counts how deep the grammar stands, so that no input runs out of stack.
  class Depth {
   public:
    explicit Depth(Parser& parser);
    ~Depth() { --parser_.depth_; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;

   private:
    Parser& parser_;
  };

  std::string_view text_;
  std::vector<Token> tokens_;
  std::size_t position_ = 0;
  std::size_t statement_count_ = 0;
  int block_depth_ = 0;
  int depth_ = 0;
  int chain_ = 0;  // operators of the statement that made its expressions deeper
};

}  // namespace dbkeeper::server
