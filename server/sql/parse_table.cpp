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
  Enclosed([&] {
    List([&] {
      if (!IsSymbol(")") || create.columns.empty()) ParseTablePart(create);
    });
  });
  while (!AcceptAny({"ON", "TEXTIMAGE_ON"}).empty()) ExpectName();
  return create;
}

bool Parser::ParseTablePart(TableParts& parts) {
  const bool column = !AtConstraint();
  if (column) {
    parts.columns.push_back(ParseColumnDefinition());
  } else {
    parts.constraints.push_back(ParseConstraint());
  }
  return column;
}

ColumnDefinition Parser::ParseColumnDefinition() {
  ColumnDefinition column;
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
    if (!IsSymbol("(")) return true;
    Enclosed([&] {
      column.identity->seed = ExpectInteger();
      ExpectSymbol(",");
      column.identity->increment = ExpectInteger();
    });
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
    if (AcceptKeyword("FOREIGN")) {
      ExpectKeyword("KEY");
      if (IsSymbol("(")) constraint.columns = EnclosedListOf(&Parser::ParseKeyColumn);
    }
    ParseReferences(constraint);
  } else if (AcceptKeyword("DEFAULT")) {
    constraint.kind = ConstraintKind::kDefault;
    constraint.text = ParseConstraintText();
    if (AcceptKeyword("FOR")) constraint.default_column = ExpectName();
    if (AcceptKeyword("WITH")) ExpectKeyword("VALUES");
  } else {
    ExpectKeyword("CHECK");
    constraint.kind = ConstraintKind::kCheck;
    AcceptKeywords({"NOT", "FOR", "REPLICATION"});
    Enclosed([&] {
      const std::size_t begin = Current().begin;
      ParseCondition();
      constraint.text = '(' + TextBetween(begin, LastEnd()) + ')';
    });
  }
  return constraint;
}

void Parser::ParseKeyConstraint(Constraint& constraint) {
  if (AcceptKeyword("CLUSTERED")) constraint.clustered = true;
  if (AcceptKeyword("NONCLUSTERED")) constraint.clustered = false;
  if (IsSymbol("(")) constraint.columns = EnclosedListOf(&Parser::ParseKeyColumn);
  CreateIndexStatement ignored;
  ParseIndexOptions(ignored);
}

void Parser::ParseReferences(Constraint& constraint) {
  ExpectKeyword("REFERENCES");
  constraint.referenced_table = ExpectObjectName();
  if (IsSymbol("(")) constraint.referenced_columns = EnclosedListOf(&Parser::ExpectName);
  for (;;) {
    const bool of_delete = AcceptKeywords({"ON", "DELETE"});
    if (of_delete || AcceptKeywords({"ON", "UPDATE"})) {
      bool& cascade = of_delete ? constraint.delete_cascade : constraint.update_cascade;
      cascade = AcceptKeyword("CASCADE");
      if (cascade) continue;
      ExpectKeyword("NO");
      ExpectKeyword("ACTION");
    } else if (!AcceptKeywords({"NOT", "FOR", "REPLICATION"})) {
      return;
    }
  }
}

// The text of a default, in parentheses.
std::string Parser::ParseConstraintText() {
  const std::size_t first = position_;
  const std::size_t begin = Current().begin;
  ParseValue();
  const std::string text = TextBetween(begin, LastEnd());
  return IsEnclosed(tokens_, first, position_) ? text : '(' + text + ')';
}

KeyColumn Parser::ParseKeyColumn() {
  KeyColumn column{ExpectName()};
  column.descending = AcceptDescending();
  return column;
}

// with fillfactor = 90, pad_index ... on [PRIMARY]
void Parser::ParseIndexOptions(CreateIndexStatement& index) {
  if (IsKeyword("WITH") && !IsKeywordAt(1, "NOCHECK") && !IsKeywordAt(1, "CHECK")) {
    Advance();
    List([&] {
      const std::string option = ExpectWord();
      if (AcceptSymbol("=")) ExpectInteger();
      if (option == "IGNORE_DUP_KEY") index.ignore_duplicates = true;
      if (option == "DROP_EXISTING") index.drop_existing = true;
    });
  }
  if (IsKeyword("ON") && !IsKeywordAt(1, "DELETE") && !IsKeywordAt(1, "UPDATE")) {
    Advance();
    ExpectName();
  }
}

Parser::Node Parser::ParseCreateIndex() {
  CreateIndexStatement index;
  index.unique = AcceptKeyword("UNIQUE");
  index.clustered = AcceptAny({"CLUSTERED", "NONCLUSTERED"}) == "CLUSTERED";
  // The server takes the two words in either order.
  if (!index.unique) index.unique = AcceptKeyword("UNIQUE");
  ExpectKeyword("INDEX");
  index.name = ExpectName();
  ExpectKeyword("ON");
  index.table = ExpectObjectName();
  index.columns = EnclosedListOf(&Parser::ParseKeyColumn);
  ParseIndexOptions(index);
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
  const std::string_view verb =
      AcceptAny({"ADD", "ALTER", "DROP", "CHECK", "NOCHECK", "ENABLE", "DISABLE"});
  if (verb == "ADD") {
    AddColumns add;
    add.check_existing = check_existing;
    List([&] {
      const bool column = ParseTablePart(add);
      if (column && AcceptKeyword("WITH")) ExpectKeyword("VALUES");
    });
    alter.action = std::move(add);
  } else if (verb == "ALTER") {
    ExpectKeyword("COLUMN");
    if (IsKeywordAt(1, "ADD") || IsKeywordAt(1, "DROP")) Refuse("ALTER COLUMN ADD and DROP");
    alter.action = AlterColumn{ParseColumnDefinition()};
  } else if (verb == "DROP") {
    alter.action = ParseDropParts();
  } else if (!verb.empty()) {
    const bool triggers = verb.ends_with("ABLE");
    ExpectKeyword(triggers ? "TRIGGER" : "CONSTRAINT");
    SwitchParts parts{triggers, verb == "CHECK" || verb == "ENABLE", {}};
    if (!AcceptKeyword("ALL")) parts.names = ListOf(&Parser::ExpectName);
    alter.action = std::move(parts);
  } else {
    Fail();
  }
  return alter;
}

DropParts Parser::ParseDropParts() {
  DropParts drop;
  std::vector<std::string>* parts = &drop.constraints;
  List([&] {
    const std::string_view kind = AcceptAny({"COLUMN", "CONSTRAINT"});
    if (!kind.empty()) parts = kind == "COLUMN" ? &drop.columns : &drop.constraints;
    parts->push_back(ExpectName());
  });
  return drop;
}

}  // namespace dbkeeper::server
