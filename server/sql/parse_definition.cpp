// Create, alter and drop of everything but tables and indexes.
#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

struct ClassRow {
  std::string_view word;
  ObjectClass object_class;
};
constexpr ClassRow kClasses[] = {
    {"TABLE", ObjectClass::kTable},         {"VIEW", ObjectClass::kView},
    {"PROCEDURE", ObjectClass::kProcedure}, {"PROC", ObjectClass::kProcedure},
    {"TRIGGER", ObjectClass::kTrigger},     {"FUNCTION", ObjectClass::kFunction},
    {"DATABASE", ObjectClass::kDatabase},
};

struct FileItem {
  std::string_view word;
  std::string DatabaseFile::*value;
};
constexpr FileItem kFileItems[] = {
    {"NAME", &DatabaseFile::logical_name}, {"FILENAME", &DatabaseFile::file_name},
    {"SIZE", &DatabaseFile::size},         {"MAXSIZE", &DatabaseFile::maximum_size},
    {"FILEGROWTH", &DatabaseFile::growth},
};

// Options of alter database set that take a second word.
constexpr std::string_view kValuedOptions[] = {"RECOVERY",
                                               "CURSOR_DEFAULT",
                                               "AUTO_CLOSE",
                                               "AUTO_CREATE_STATISTICS",
                                               "AUTO_SHRINK",
                                               "AUTO_UPDATE_STATISTICS",
                                               "ANSI_NULL_DEFAULT",
                                               "ANSI_NULLS",
                                               "ANSI_PADDING",
                                               "ANSI_WARNINGS",
                                               "ARITHABORT",
                                               "CONCAT_NULL_YIELDS_NULL",
                                               "NUMERIC_ROUNDABORT",
                                               "QUOTED_IDENTIFIER",
                                               "RECURSIVE_TRIGGERS",
                                               "TORN_PAGE_DETECTION",
                                               "CURSOR_CLOSE_ON_COMMIT"};

bool TakesValue(std::string_view option) {
  return std::ranges::find(kValuedOptions, option) != std::end(kValuedOptions);
}

}  // namespace

Parser::Node Parser::ParseCreate() {
  if (AcceptKeyword("TABLE")) return ParseCreateTable();
  if (AcceptKeyword("VIEW")) return ParseView(false);
  if (AcceptKeyword("DATABASE")) return ParseCreateDatabase();
  if (IsKeyword("UNIQUE") || IsKeyword("CLUSTERED") || IsKeyword("NONCLUSTERED") ||
      IsKeyword("INDEX")) {
    return ParseCreateIndex();
  }
  return ParseModule(false);
}

Parser::Node Parser::ParseAlter() {
  if (AcceptKeyword("TABLE")) return ParseAlterTable();
  if (AcceptKeyword("VIEW")) return ParseView(true);
  if (AcceptKeyword("DATABASE")) return ParseAlterDatabase();
  return ParseModule(true);
}

Parser::Node Parser::ParseDrop() {
  if (AcceptKeyword("INDEX")) return ParseDropIndex();
  for (const ClassRow& row : kClasses) {
    if (!AcceptKeyword(row.word)) continue;
    DropStatement drop{row.object_class, {}};
    do {
      drop.names.push_back(ExpectObjectName());
    } while (AcceptSymbol(","));
    return drop;
  }
  for (const std::string_view word : {"DEFAULT", "RULE", "STATISTICS"}) {
    if (IsKeyword(word)) Refuse("DROP " + std::string(word));
  }
  Fail();
}

Parser::Node Parser::ParseDropIndex() {
  DropIndexStatement drop;
  do {
    const int line = Current().line;
    std::vector<std::string> parts = ParseDottedName();
    if (parts.size() < 2) Fail();
    DropIndexStatement::Item item;
    item.index = std::move(parts.back());
    parts.pop_back();
    item.table = ObjectNameOf(std::move(parts), line);
    drop.items.push_back(std::move(item));
  } while (AcceptSymbol(","));
  return drop;
}

// ---- views, procedures, triggers, functions ----------------------------------------------------

Parser::Node Parser::ParseView(bool alter) {
  CreateViewStatement view;
  view.alter = alter;
  if (statement_count_ > 1) throw MakeError(111, {alter ? "ALTER VIEW" : "CREATE VIEW"});
  view.name = ExpectObjectName();
  if (IsSymbol("(")) view.columns = ParseNameList();
  if (AcceptKeyword("WITH")) {
    do {
      ExpectWord();
    } while (AcceptSymbol(","));
  }
  ExpectKeyword("AS");
  view.query = ParseQuery();
  // Rows are never changed through a view, so there is nothing to check.
  AcceptKeywords({"WITH", "CHECK", "OPTION"});
  view.text = TextBetween(0, text_.size());
  return view;
}

// The body goes to the end of the batch, unread.
Parser::Node Parser::ParseModule(bool alter) {
  const int line = Current().line;
  CreateModuleStatement module;
  module.alter = alter;
  if (AcceptKeyword("PROCEDURE") || AcceptKeyword("PROC")) {
    module.object_class = ObjectClass::kProcedure;
  } else if (AcceptKeyword("TRIGGER")) {
    module.object_class = ObjectClass::kTrigger;
  } else if (AcceptKeyword("FUNCTION")) {
    module.object_class = ObjectClass::kFunction;
  } else {
    for (const std::string_view word : {"DEFAULT", "RULE", "STATISTICS", "SCHEMA"}) {
      if (IsKeyword(word)) Refuse("CREATE " + std::string(word));
    }
    Fail();
  }
  if (statement_count_ > 1) throw MakeError(111, {"CREATE PROCEDURE"}, line);
  module.name = ExpectObjectName();
  if (module.object_class == ObjectClass::kTrigger) ParseTriggerHead(module);
  bool body = false;
  while (Current().kind != TokenKind::kEnd) {
    body = body || IsKeyword("AS") || IsKeyword("RETURNS");
    Advance();
  }
  if (!body) Fail();
  module.text = TextBetween(0, text_.size());
  return module;
}

void Parser::ParseTriggerHead(CreateModuleStatement& module) {
  ExpectKeyword("ON");
  module.table = ExpectObjectName();
  if (AcceptKeyword("WITH")) ExpectWord();
  if (!AcceptKeywords({"INSTEAD", "OF"}) && !AcceptKeyword("FOR")) ExpectKeyword("AFTER");
  do {
    if (!IsKeyword("INSERT") && !IsKeyword("UPDATE") && !IsKeyword("DELETE")) Fail();
    module.trigger_events.push_back(ToLowerAscii(ExpectWord()));
  } while (AcceptSymbol(","));
}

// ---- databases ---------------------------------------------------------------------------------

DatabaseFile Parser::ParseDatabaseFile() {
  DatabaseFile file;
  AcceptKeyword("PRIMARY");
  ExpectSymbol("(");
  do {
    const Token& item = Current();
    const auto* row = std::ranges::find(kFileItems, ExpectWord(), &FileItem::word);
    if (row == std::end(kFileItems)) FailAt(item);
    ExpectSymbol("=");
    file.*row->value = ParseMeasure();
  } while (AcceptSymbol(","));
  ExpectSymbol(")");
  return file;
}

std::vector<DatabaseFile> Parser::ParseDatabaseFiles() {
  std::vector<DatabaseFile> files;
  do {
    if (IsKeyword("FILEGROUP")) Refuse("FILEGROUP");
    files.push_back(ParseDatabaseFile());
  } while (AcceptSymbol(","));
  return files;
}

Parser::Node Parser::ParseCreateDatabase() {
  CreateDatabaseStatement create;
  create.name = ExpectName();
  if (AcceptKeyword("ON")) create.data_files = ParseDatabaseFiles();
  if (AcceptKeyword("LOG")) {
    ExpectKeyword("ON");
    create.log_files = ParseDatabaseFiles();
  }
  if (AcceptKeyword("COLLATE")) {
    create.collation = Current().text;
    ExpectWord();
  }
  if (AcceptKeyword("FOR")) {
    if (ExpectWord() != "ATTACH") Fail();
    create.for_attach = true;
  }
  return create;
}

std::vector<std::string> Parser::ParseDatabaseOptions() {
  std::vector<std::string> options;
  do {
    std::string option = ExpectWord();
    if (TakesValue(option)) option += ' ' + ExpectWord();
    options.push_back(std::move(option));
  } while (AcceptSymbol(","));
  if (AcceptKeyword("WITH")) {
    if (ExpectWord() == "ROLLBACK" && !AcceptKeyword("IMMEDIATE")) {
      AcceptKeyword("AFTER");
      ExpectInteger();
      AcceptKeyword("SECONDS");
    }
  }
  return options;
}

Parser::Node Parser::ParseAlterDatabase() {
  AlterDatabaseStatement alter;
  alter.name = ExpectName();
  if (AcceptKeyword("SET")) {
    alter.action = DatabaseOptions{ParseDatabaseOptions()};
  } else if (AcceptKeyword("COLLATE")) {
    alter.action = ModifyDatabaseCollation{ExpectWord()};
  } else if (AcceptKeyword("ADD")) {
    const bool log = AcceptKeyword("LOG");
    ExpectKeyword("FILE");
    alter.action = AddDatabaseFiles{ParseDatabaseFiles(), log};
  } else if (AcceptKeyword("REMOVE")) {
    ExpectKeyword("FILE");
    alter.action = RemoveDatabaseFile{ExpectName()};
  } else if (AcceptKeyword("MODIFY")) {
    if (AcceptKeyword("NAME")) {
      ExpectSymbol("=");
      alter.action = ModifyDatabaseName{ExpectName()};
    } else {
      ExpectKeyword("FILE");
      alter.action = ModifyDatabaseFile{ParseDatabaseFile()};
    }
  } else {
    Fail();
  }
  return alter;
}

}  // namespace dbkeeper::server
