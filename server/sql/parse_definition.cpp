// Create, alter and drop of everything but tables and indexes.
#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/parser_core.h"
#include "server/types/messages.h"
#include "server/types/text.h"

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

ObjectClass ClassOf(std::string_view word) {
  return std::ranges::find(kClasses, word, &ClassRow::word)->object_class;
}

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
constexpr std::string_view kValuedOptions =
    " RECOVERY CURSOR_DEFAULT AUTO_CLOSE AUTO_CREATE_STATISTICS AUTO_SHRINK AUTO_UPDATE_STATISTICS "
    "ANSI_NULL_DEFAULT ANSI_NULLS ANSI_PADDING ANSI_WARNINGS ARITHABORT CONCAT_NULL_YIELDS_NULL "
    "NUMERIC_ROUNDABORT QUOTED_IDENTIFIER RECURSIVE_TRIGGERS TORN_PAGE_DETECTION "
    "CURSOR_CLOSE_ON_COMMIT ";

}  // namespace

Parser::Node Parser::ParseCreate() {
  if (AcceptKeyword("TABLE")) return ParseCreateTable();
  if (AcceptKeyword("VIEW")) return ParseView(false);
  if (AcceptKeyword("DATABASE")) return ParseCreateDatabase();
  for (const std::string_view word : {"UNIQUE", "CLUSTERED", "NONCLUSTERED", "INDEX"}) {
    if (IsKeyword(word)) return ParseCreateIndex();
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
  if (AcceptKeyword("INDEX")) {
    return DropIndexStatement{ListOf([&]() -> DropIndexStatement::Item {
      const int line = Current().line;
      std::vector<std::string> parts = ParseDottedName();
      if (parts.size() < 2) Fail();
      std::string index = std::move(parts.back());
      parts.pop_back();
      return {ObjectNameOf(std::move(parts), line), std::move(index)};
    })};
  }
  for (const ClassRow& row : kClasses) {
    if (!AcceptKeyword(row.word)) continue;
    return DropStatement{row.object_class, ListOf(&Parser::ExpectObjectName)};
  }
  RefuseAny({"DEFAULT", "RULE", "STATISTICS"}, "DROP ");
  Fail();
}

// ---- views, procedures, triggers, functions ----------------------------------------------------

Parser::Node Parser::ParseView(bool alter) {
  CreateViewStatement view;
  view.alter = alter;
  if (statement_count_ > 1) throw MakeError(111, {alter ? "ALTER VIEW" : "CREATE VIEW"});
  view.name = ExpectObjectName();
  if (IsSymbol("(")) view.columns = EnclosedListOf(&Parser::ExpectName);
  if (AcceptKeyword("WITH")) ListOf(&Parser::ExpectWord);
  ExpectKeyword("AS");
  view.query = ParseQuery();
  // Rows are never changed through a view, so there is nothing to check.
  AcceptKeywords({"WITH", "CHECK", "OPTION"});
  view.text = text_;
  return view;
}

// The body goes to the end of the batch, unread.
Parser::Node Parser::ParseModule(bool alter) {
  const int line = Current().line;
  CreateModuleStatement module;
  module.alter = alter;
  const std::string_view word = AcceptAny({"PROCEDURE", "PROC", "TRIGGER", "FUNCTION"});
  if (word.empty()) {
    RefuseAny({"DEFAULT", "RULE", "STATISTICS", "SCHEMA"}, "CREATE ");
    Fail();
  }
  module.object_class = ClassOf(word);
  if (statement_count_ > 1) throw MakeError(111, {"CREATE PROCEDURE"}, line);
  module.name = ExpectObjectName();
  if (module.object_class == ObjectClass::kTrigger) ParseTriggerHead(module);
  bool body = false;
  while (Current().kind != TokenKind::kEnd) {
    const bool head = IsKeyword("AS") || IsKeyword("RETURNS");
    Advance();
    body = body || (head && Current().kind != TokenKind::kEnd);
  }
  if (!body) Fail();
  module.text = text_;
  return module;
}

void Parser::ParseTriggerHead(CreateModuleStatement& module) {
  ExpectKeyword("ON");
  module.table = ExpectObjectName();
  if (AcceptKeyword("WITH")) ExpectWord();
  if (!AcceptKeywords({"INSTEAD", "OF"}) && !AcceptKeyword("FOR")) ExpectKeyword("AFTER");
  List([&] {
    const std::string_view event = AcceptAny({"INSERT", "UPDATE", "DELETE"});
    if (event.empty()) Fail();
    module.trigger_events.push_back(ToLowerAscii(event));
  });
}

// ---- databases ---------------------------------------------------------------------------------

DatabaseFile Parser::ParseDatabaseFile() {
  DatabaseFile file;
  if (IsKeyword("FILEGROUP")) Refuse("FILEGROUP");
  AcceptKeyword("PRIMARY");
  Enclosed([&] {
    List([&] {
      const Token& item = Current();
      const auto* row = std::ranges::find(kFileItems, ExpectWord(), &FileItem::word);
      if (row == std::end(kFileItems)) FailAt(item);
      ExpectSymbol("=");
      file.*row->value = ParseMeasure();
    });
  });
  return file;
}

Parser::Node Parser::ParseCreateDatabase() {
  CreateDatabaseStatement create;
  create.name = ExpectName();
  if (AcceptKeyword("ON")) create.data_files = ListOf(&Parser::ParseDatabaseFile);
  if (AcceptKeyword("LOG")) {
    ExpectKeyword("ON");
    create.log_files = ListOf(&Parser::ParseDatabaseFile);
  }
  if (AcceptKeyword("COLLATE")) ExpectOwnCollation();
  if (AcceptKeyword("FOR")) {
    if (ExpectWord() != "ATTACH") Fail();
    create.for_attach = true;
  }
  return create;
}

Parser::Node Parser::ParseAlterDatabase() {
  AlterDatabaseStatement alter;
  alter.name = ExpectName();
  if (AcceptKeyword("SET")) {
    alter.options = ListOf([&] {
      std::string option = ExpectWord();
      return HasWord(kValuedOptions, option) ? option + ' ' + ExpectWord() : option;
    });
    if (AcceptKeyword("WITH") && ExpectWord() == "ROLLBACK" && !AcceptKeyword("IMMEDIATE")) {
      AcceptKeyword("AFTER");
      ExpectInteger();
      AcceptKeyword("SECONDS");
    }
  } else if (AcceptKeyword("COLLATE")) {
    ExpectWord();
  } else if (AcceptKeyword("ADD")) {
    AcceptKeyword("LOG");
    ExpectKeyword("FILE");
    ListOf(&Parser::ParseDatabaseFile);
  } else if (AcceptKeyword("REMOVE")) {
    ExpectKeyword("FILE");
    alter.file = ExpectName();
  } else if (AcceptKeywords({"MODIFY", "NAME"})) {
    ExpectSymbol("=");
    alter.new_name = ExpectName();
  } else {
    ExpectKeyword("MODIFY");
    ExpectKeyword("FILE");
    if (IsKeyword("FILEGROUP")) Fail();
    alter.file = ParseDatabaseFile().logical_name;
  }
  return alter;
}

}  // namespace dbkeeper::server
