// A small instance in memory, for tests of the language: one database of a few tables, a resolver
// over it, and statements run through parser, translator and SQLite.
#pragma once

#include <sqlite3.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/sql/parser.h"
#include "server/sql/server_functions.h"
#include "server/sql/translator.h"

namespace dbkeeper::server {

// What a batch came to: rows with "|" between their cells and ";" between rows, or "error N".
struct Outcome {
  std::string rows;
  std::string columns;  // "name type, name type" of the last select
  ServerMessage error;  // number 0: none
};

class TestInstance : public NameResolver, public ServerState {
 public:
  TestInstance();
  ~TestInstance() override;
  TestInstance(const TestInstance&) = delete;
  TestInstance& operator=(const TestInstance&) = delete;

  Outcome Run(std::string_view batch, const Parameters& parameters = {},
              const std::vector<std::string>& values = {});

  std::optional<ObjectInfo> ResolveObject(const ObjectName& name) override;
  std::optional<ObjectInfo> ResolveTableFunction(
      const ObjectName& name, const std::vector<std::string>& arguments) override;
  std::string CurrentSchema() override { return "main"; }
  std::int64_t StatementTime() override;
  Cell Evaluate(std::string_view function, const std::vector<Cell>& arguments) override;

  sqlite3* connection() const { return connection_; }

 private:
  void AddTable(const CreateTableStatement& create);
  void Translate(const Statement& statement, Translator& translator, Outcome& outcome);
  void Step(const Translation& translation, const std::vector<std::string>& values,
            Outcome& outcome);

  sqlite3* connection_ = nullptr;
  std::map<std::string, ObjectInfo> objects_;
  std::map<std::string, std::int64_t> identities_;
  std::vector<std::string> values_;
};

}  // namespace dbkeeper::server
