// The recursive-descent parser behind parser.h. Its methods stand in one source per family:
// parser.cpp (batches, tokens, names), parse_expression.cpp, parse_query.cpp, parse_table.cpp,
// parse_definition.cpp and parse_administration.cpp. Used only by these.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "server/sql/ast.h"
#include "server/sql/lexer.h"

namespace dbkeeper::server {

class Parser {
 public:
  Parser(std::string_view text, QuotedIdentifiers quoted);

  std::vector<Statement> Batch();
  ExpressionPtr WholeExpression();
  ObjectName WholeName();
  Parameters WholeParameterList();

 private:
  using Node = decltype(Statement::node);
  struct StatementRow {
    std::string_view keyword;
    Node (Parser::*parse)();
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
  bool AcceptKeyword(std::string_view upper);
  // All of them in a row, or nothing.
  bool AcceptKeywords(std::initializer_list<std::string_view> words);
  bool AcceptSymbol(std::string_view symbol);
  void ExpectKeyword(std::string_view upper);
  void ExpectKeywords(std::initializer_list<std::string_view> words);
  void ExpectSymbol(std::string_view symbol);
  std::string ExpectName();
  std::string ExpectWord();  // any word, in capitals
  std::string ExpectString();
  std::string ExpectInteger();
  ObjectName ExpectObjectName();
  ObjectName ObjectNameOf(std::vector<std::string> parts, int line) const;
  std::vector<std::string> ParseDottedName();
  std::vector<std::string> ParseNameList();  // "(a, b)"
  // Numbers with unit, words, strings: "10", "10MB", "10%", "unlimited".
  std::string ParseMeasure();
  std::string TextBetween(std::size_t begin, std::size_t end) const;
  std::size_t LastEnd() const { return position_ == 0 ? 0 : tokens_[position_ - 1].end; }
  [[noreturn]] void Fail() const;
  [[noreturn]] void FailAt(const Token& token) const;
  [[noreturn]] void Refuse(std::string_view construct) const;

  // ---- batches: parser.cpp
  void ParseOneStatement(std::vector<Statement>& statements);
  bool OpenOrCloseBlock();
  Node ParseStatementNode(bool first);
  void RefuseByName() const;
  void ExpectStatementEnd() const;
  bool AtStatementStart() const;

  // ---- expressions: parse_expression.cpp
  ExpressionPtr ParseValue();      // no predicate
  ExpressionPtr ParseCondition();  // a predicate
  ExpressionPtr ParseAny();
  ExpressionPtr ParseAnd();
  ExpressionPtr ParseNot();
  ExpressionPtr ParsePredicate();
  ExpressionPtr ParseComparison(ExpressionPtr left, BinaryOperator op);
  ExpressionPtr ParseNegatable(ExpressionPtr value);
  ExpressionPtr ParseIn(ExpressionPtr value, bool negated);
  ExpressionPtr ParseAdditive();
  ExpressionPtr ParseMultiplicative();
  ExpressionPtr ParseUnary();
  ExpressionPtr ParsePrimary();
  ExpressionPtr ParseParenthesised();
  ExpressionPtr ParseNameOrCall();
  ExpressionPtr ParseCall(std::vector<std::string> name);
  ExpressionPtr ParseKeywordExpression();
  ExpressionPtr ParseCase();
  ExpressionPtr ParseCast();
  ExpressionPtr ParseConvert();
  ExpressionPtr ParseOdbcEscape();
  std::optional<BinaryOperator> ComparisonOperator() const;
  void RequireValue(const Expression& expression) const;
  ExpressionPtr Make(decltype(Expression::node) node, std::size_t first_token) const;
  ExpressionPtr Join(ExpressionPtr left, BinaryOperator op, ExpressionPtr right);
  // `for_cast`: char without a length has 30 characters there, elsewhere 1.
  SqlType ParseType(std::string* written_name, bool for_cast);

  // ---- queries and changes of rows: parse_query.cpp
  QueryPtr ParseQuery();
  Query::Term ParseQueryTerm();
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
  std::vector<TableSourcePtr> ParseFromList();
  std::vector<OrderItem> ParseOrderBy();
  void ParseQueryTail();
  Node ParseSelect();
  Node ParseInsert();
  Node ParseInsertBulk();
  Node ParseUpdate();
  Node ParseDelete();
  Node ParseTruncate();
  ExpressionPtr ParseValueOrDefault();
  ExpressionPtr ParseWhere();

  // ---- tables: parse_table.cpp
  Node ParseCreateTable();
  Node ParseAlterTable();
  AddColumns ParseAddColumns(bool check_existing);
  AlterColumn ParseAlterColumn();
  DropParts ParseDropParts();
  SwitchParts ParseSwitchParts(bool enable, bool triggers);
  ColumnDefinition ParseColumnDefinition();
  bool ParseColumnOption(ColumnDefinition& column);
  bool AtConstraint() const;
  Constraint ParseConstraint();
  void ParseKeyConstraint(Constraint& constraint);
  void ParseForeignKey(Constraint& constraint);
  void ParseReferences(Constraint& constraint);
  bool ParseReferenceAction();  // whether it cascades
  std::string ParseConstraintText();
  std::vector<KeyColumn> ParseKeyColumns();
  void ParseIndexOptions(CreateIndexStatement* index);
  Node ParseCreateIndex();

  // ---- other definitions: parse_definition.cpp
  Node ParseCreate();
  Node ParseAlter();
  Node ParseDrop();
  Node ParseDropIndex();
  Node ParseView(bool alter);
  Node ParseModule(bool alter);
  void ParseTriggerHead(CreateModuleStatement& module);
  Node ParseCreateDatabase();
  Node ParseAlterDatabase();
  DatabaseFile ParseDatabaseFile();
  std::vector<DatabaseFile> ParseDatabaseFiles();
  std::vector<std::string> ParseDatabaseOptions();

  // ---- administration: parse_administration.cpp
  Node ParseUse();
  Node ParseSet();
  Node ParseBegin();
  Node ParseCommit() { return ParseTransactionEnd(TransactionAction::kCommit); }
  Node ParseRollback() { return ParseTransactionEnd(TransactionAction::kRollback); }
  Node ParseTransactionEnd(TransactionAction action);
  Node ParsePrint();
  Node ParseRaiseError();
  Node ParseExecute();
  Node ParseProcedureCall();
  ProcedureArgument ParseProcedureArgument();
  Node ParseBackup();
  Node ParseRestore();
  std::vector<BackupDevice> ParseBackupDevices();
  std::vector<BackupOption> ParseBackupOptions();
  Node ParseDbcc();
  Node ParseKill();
  Node ParseShutdown();
  Node ParseCheckpoint() { return CheckpointStatement{}; }
  Node ParseWaitFor();
  Node ParseGrant() { return ParsePermission(PermissionVerb::kGrant); }
  Node ParseRevoke() { return ParsePermission(PermissionVerb::kRevoke); }
  Node ParseDeny() { return ParsePermission(PermissionVerb::kDeny); }
  Node ParsePermission(PermissionVerb verb);
  void ParsePermissionList(PermissionStatement& statement);
  void ParseGrantees(PermissionStatement& statement);

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
  QuotedIdentifiers quoted_;
  std::vector<Token> tokens_;
  std::size_t position_ = 0;
  std::size_t statement_count_ = 0;
  int block_depth_ = 0;
  int depth_ = 0;
  int chain_ = 0;  // operators of the statement that made its expressions deeper
};

}  // namespace dbkeeper::server
