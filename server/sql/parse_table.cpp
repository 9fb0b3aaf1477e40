// Create table, alter table, create index, and the constraints and columns that they share.
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

// Whether the first parenthesis closes with the last character.
bool IsEnclosed(const std::vector<Token>& tokens, std::size_t first, std::size_t last) {
  int depth = 0;
  for (std::size_t i = first; i < last; ++i) {
    if (tokens[i].kind != TokenKind::kSymbol) {
      if (depth == 0) return false;
      continue;
    }
    if (tokens[i].text == "(") ++depth;
    if (tokens[i].text == ")") --depth;
    if (depth == 0 && i + 1 < last) return false;
  }
  return true;
}

}  // namespace

Parser::Node Parser::ParseCreateTable() {
  CreateTableStatement create;
  create.table = ExpectObjectName();
  ExpectSymbol("(");
  do {
    if (IsSymbol(")") && !create.columns.empty()) break;
    if (AtConstraint()) {
      create.constraints.push_back(ParseConstraint());
    } else {
      create.columns.push_back(ParseColumnDefinition());
    }
  } while (AcceptSymbol(","));
  ExpectSymbol(")");
  while (AcceptKeyword("ON") || AcceptKeyword("TEXTIMAGE_ON")) ExpectName();
  return create;
}

ColumnDefinition Parser::ParseColumnDefinition() {
  ColumnDefinition column;
  column.line = Current().line;
  // "timestamp" alone is a column of that name and type.
  column.name = ExpectName();
  if (IsKeyword("AS")) Refuse("computed columns");
  if (EqualsKeyword(column.name, "TIMESTAMP") && (IsSymbol(",") || IsSymbol(")"))) {
    column.type = SqlType{TypeId::kTimestamp, 8, 0, 0, true};
    column.type_name = "timestamp";
    return column;
  }
  column.type = ParseType(&column.type_name, false);
  while (ParseColumnOption(column)) {
  }
  return column;
}

bool Parser::ParseColumnOption(ColumnDefinition& column) {
  if (AcceptKeywords({"NOT", "FOR", "REPLICATION"})) return true;
  if (IsKeyword("NOT") || IsKeyword("NULL")) {
    column.type.nullable = !AcceptKeyword("NOT");
    ExpectKeyword("NULL");
    column.null_said = true;
    return true;
  }
  if (AcceptKeyword("IDENTITY")) {
    column.identity.emplace();
    if (AcceptSymbol("(")) {
      column.identity->seed = ExpectInteger();
      ExpectSymbol(",");
      column.identity->increment = ExpectInteger();
      ExpectSymbol(")");
    }
    return true;
  }
  if (AcceptKeyword("COLLATE")) {
    column.collation = Current().text;
    ExpectWord();
    return true;
  }
  if (AcceptKeyword("ROWGUIDCOL")) {
    column.row_guid = true;
    return true;
  }
  if (!AtConstraint() && !IsKeyword("REFERENCES")) return false;
  if (IsKeyword("CONSTRAINT") && (IsKeywordAt(2, "NULL") || IsKeywordAt(2, "NOT"))) {
    Advance();
    ExpectName();
    return true;
  }
  Constraint constraint = ParseConstraint();
  if (constraint.kind != ConstraintKind::kCheck && constraint.columns.empty()) {
    constraint.columns.push_back({column.name, false});
  }
  if (constraint.kind == ConstraintKind::kDefault) constraint.default_column = column.name;
  column.constraints.push_back(std::move(constraint));
  return true;
}

bool Parser::AtConstraint() const {
  return IsKeyword("CONSTRAINT") || IsKeyword("PRIMARY") || IsKeyword("UNIQUE") ||
         IsKeyword("FOREIGN") || IsKeyword("CHECK") || IsKeyword("DEFAULT");
}

Constraint Parser::ParseConstraint() {
  Constraint constraint;
  if (AcceptKeyword("CONSTRAINT")) constraint.name = ExpectName();
  if (AcceptKeyword("PRIMARY")) {
    ExpectKeyword("KEY");
    constraint.kind = ConstraintKind::kPrimaryKey;
    ParseKeyConstraint(constraint);
  } else if (AcceptKeyword("UNIQUE")) {
    constraint.kind = ConstraintKind::kUnique;
    ParseKeyConstraint(constraint);
  } else if (IsKeyword("FOREIGN") || IsKeyword("REFERENCES")) {
    constraint.kind = ConstraintKind::kForeignKey;
    ParseForeignKey(constraint);
  } else if (AcceptKeyword("DEFAULT")) {
    constraint.kind = ConstraintKind::kDefault;
    constraint.text = ParseConstraintText();
    if (AcceptKeyword("FOR")) constraint.default_column = ExpectName();
    if (AcceptKeyword("WITH")) ExpectKeyword("VALUES");
  } else {
    ExpectKeyword("CHECK");
    constraint.kind = ConstraintKind::kCheck;
    AcceptKeywords({"NOT", "FOR", "REPLICATION"});
    ExpectSymbol("(");
    const std::size_t begin = Current().begin;
    ParseCondition();
    constraint.text = '(' + TextBetween(begin, LastEnd()) + ')';
    ExpectSymbol(")");
  }
  return constraint;
}

void Parser::ParseKeyConstraint(Constraint& constraint) {
  if (AcceptKeyword("CLUSTERED")) constraint.clustered = true;
  if (AcceptKeyword("NONCLUSTERED")) constraint.clustered = false;
  if (IsSymbol("(")) constraint.columns = ParseKeyColumns();
  ParseIndexOptions(nullptr);
}

void Parser::ParseForeignKey(Constraint& constraint) {
  if (AcceptKeyword("FOREIGN")) {
    ExpectKeyword("KEY");
    if (IsSymbol("(")) constraint.columns = ParseKeyColumns();
  }
  ParseReferences(constraint);
}

void Parser::ParseReferences(Constraint& constraint) {
  ExpectKeyword("REFERENCES");
  constraint.referenced_table = ExpectObjectName();
  if (IsSymbol("(")) constraint.referenced_columns = ParseNameList();
  for (;;) {
    if (AcceptKeywords({"ON", "DELETE"})) {
      constraint.delete_cascade = ParseReferenceAction();
    } else if (AcceptKeywords({"ON", "UPDATE"})) {
      constraint.update_cascade = ParseReferenceAction();
    } else if (!AcceptKeywords({"NOT", "FOR", "REPLICATION"})) {
      return;
    }
  }
}

bool Parser::ParseReferenceAction() {
  if (AcceptKeyword("CASCADE")) return true;
  ExpectKeywords({"NO", "ACTION"});
  return false;
}

// The text of a default, in parentheses.
std::string Parser::ParseConstraintText() {
  const std::size_t first = position_;
  const std::size_t begin = Current().begin;
  ParseValue();
  const std::string text = TextBetween(begin, LastEnd());
  return IsEnclosed(tokens_, first, position_) ? text : '(' + text + ')';
}

std::vector<KeyColumn> Parser::ParseKeyColumns() {
  std::vector<KeyColumn> columns;
  ExpectSymbol("(");
  do {
    KeyColumn column{ExpectName(), false};
    column.descending = AcceptKeyword("DESC");
    if (!column.descending) AcceptKeyword("ASC");
    columns.push_back(std::move(column));
  } while (AcceptSymbol(","));
  ExpectSymbol(")");
  return columns;
}

// with fillfactor = 90, pad_index ... on [PRIMARY]; `index` null: of a key constraint.
void Parser::ParseIndexOptions(CreateIndexStatement* index) {
  if (IsKeyword("WITH") && !IsKeywordAt(1, "NOCHECK") && !IsKeywordAt(1, "CHECK")) {
    Advance();
    do {
      const std::string option = ExpectWord();
      if (AcceptSymbol("=")) ExpectInteger();
      if (index == nullptr) continue;
      if (option == "IGNORE_DUP_KEY") index->ignore_duplicates = true;
      if (option == "DROP_EXISTING") index->drop_existing = true;
    } while (AcceptSymbol(","));
  }
  if (IsKeyword("ON") && !IsKeywordAt(1, "DELETE") && !IsKeywordAt(1, "UPDATE")) {
    Advance();
    ExpectName();
  }
}

Parser::Node Parser::ParseCreateIndex() {
  CreateIndexStatement index;
  index.unique = AcceptKeyword("UNIQUE");
  index.clustered = AcceptKeyword("CLUSTERED");
  if (!index.clustered) AcceptKeyword("NONCLUSTERED");
  // The server takes the two words in either order.
  if (!index.unique) index.unique = AcceptKeyword("UNIQUE");
  ExpectKeyword("INDEX");
  index.name = ExpectName();
  ExpectKeyword("ON");
  index.table = ExpectObjectName();
  index.columns = ParseKeyColumns();
  ParseIndexOptions(&index);
  return index;
}

// ---- alter table -------------------------------------------------------------------------------

Parser::Node Parser::ParseAlterTable() {
  AlterTableStatement alter;
  alter.table = ExpectObjectName();
  bool check_existing = true;
  if (AcceptKeyword("WITH")) {
    check_existing = !AcceptKeyword("NOCHECK");
    if (check_existing) ExpectKeyword("CHECK");
  }
  if (AcceptKeyword("ADD")) {
    alter.action = ParseAddColumns(check_existing);
  } else if (AcceptKeyword("ALTER")) {
    alter.action = ParseAlterColumn();
  } else if (AcceptKeyword("DROP")) {
    alter.action = ParseDropParts();
  } else if (IsKeyword("CHECK") || IsKeyword("NOCHECK")) {
    const bool enable = AcceptKeyword("CHECK");
    if (!enable) Advance();
    ExpectKeyword("CONSTRAINT");
    alter.action = ParseSwitchParts(enable, false);
  } else if (IsKeyword("ENABLE") || IsKeyword("DISABLE")) {
    const bool enable = AcceptKeyword("ENABLE");
    if (!enable) Advance();
    ExpectKeyword("TRIGGER");
    alter.action = ParseSwitchParts(enable, true);
  } else {
    Fail();
  }
  return alter;
}

AddColumns Parser::ParseAddColumns(bool check_existing) {
  AddColumns add;
  add.check_existing = check_existing;
  do {
    if (AtConstraint()) {
      add.constraints.push_back(ParseConstraint());
    } else {
      add.columns.push_back(ParseColumnDefinition());
      if (AcceptKeyword("WITH")) ExpectKeyword("VALUES");
    }
  } while (AcceptSymbol(","));
  return add;
}

AlterColumn Parser::ParseAlterColumn() {
  ExpectKeyword("COLUMN");
  if (IsKeywordAt(1, "ADD") || IsKeywordAt(1, "DROP")) Refuse("ALTER COLUMN ADD and DROP");
  return {ParseColumnDefinition()};
}

DropParts Parser::ParseDropParts() {
  DropParts drop;
  bool column = false;
  do {
    if (AcceptKeyword("COLUMN")) {
      column = true;
    } else if (AcceptKeyword("CONSTRAINT")) {
      column = false;
    }
    (column ? drop.columns : drop.constraints).push_back(ExpectName());
  } while (AcceptSymbol(","));
  return drop;
}

SwitchParts Parser::ParseSwitchParts(bool enable, bool triggers) {
  SwitchParts parts;
  parts.triggers = triggers;
  parts.enable = enable;
  if (AcceptKeyword("ALL")) return parts;
  do {
    parts.names.push_back(ExpectName());
  } while (AcceptSymbol(","));
  return parts;
}

}  // namespace dbkeeper::server
