// What a table is, read from the server's catalog, beside only reading the same rows.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Query.h"
#include "catalog/TableCatalog.h"
#include "platform/odbc/OdbcConnection.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

constexpr int kColumns = 1'000;
constexpr int kTables = 200;
constexpr int kColumnsOfEach = 30;

// Keeps the statements that go through it.
class Recording : public Connection {
 public:
  explicit Recording(Connection& server) : server_(server) {}
  std::vector<std::string> statements;

  void Open(const std::string& connection_string) override { server_.Open(connection_string); }
  void Close() override { server_.Close(); }
  bool IsOpen() const override { return server_.IsOpen(); }
  std::unique_ptr<RowReader> Query(const std::string& sql) override {
    statements.push_back(sql);
    return server_.Query(sql);
  }
  std::int64_t Execute(const std::string& sql) override { return server_.Execute(sql); }
  ScrolledRows OpenCursor(const std::string& sql) override { return server_.OpenCursor(sql); }
  std::vector<ServerMessage> TakeMessages() override { return server_.TakeMessages(); }

 private:
  Connection& server_;
};

std::string TableOf(const std::string& name, int columns) {
  std::string sql = "create table " + name + " (c0 int not null primary key";
  for (int i = 1; i < columns; ++i) {
    sql += ", c" + std::to_string(i) + " nvarchar(20) null default (N'値')";
  }
  return sql + ")";
}

struct Server {
  Server() {
    wire.Open(server.ConnectionString());
    for (const char* name : {"wide", "many"}) wire.Execute(std::string("create database ") + name);
    wire.Execute("use wide");
    wire.Execute(TableOf("t", kColumns));
    wire.Execute("use many");
    for (int i = 0; i < kTables; ++i) {
      wire.Execute(TableOf("t" + std::to_string(i), kColumnsOfEach));
    }
  }

  LocalServer server;
  testing::FakeLocale locale;
  OdbcConnection wire{OdbcOptions{}, server.Endpoint()};
  Recording connection{wire};
  Query query{connection, locale, {}};
};

Server& TheServer() {
  static Server server;
  return server;
}

void Read(Query& query, bool all) {
  if (all) {
    benchmark::DoNotOptimize(ReadTables(query, "many"));
  } else {
    benchmark::DoNotOptimize(ReadTable(query, "wide", "t"));
  }
}

void ReadCatalog(benchmark::State& state) {
  for (auto _ : state) Read(TheServer().query, state.range(0) != 0);
}

// The same statements, every value of every row looked at.
void OnlyReadRows(benchmark::State& state) {
  Server& server = TheServer();
  server.connection.statements.clear();
  Read(server.query, state.range(0) != 0);
  const std::vector<std::string> statements = server.connection.statements;
  for (auto _ : state) {
    for (const std::string& sql : statements) {
      const auto rows = server.wire.Query(sql);
      while (rows->Next()) {
        for (std::size_t i = 0; i < rows->Fields().size(); ++i) {
          benchmark::DoNotOptimize(rows->Text(i));
        }
      }
    }
  }
  state.counters["statements"] = static_cast<double>(statements.size());
}

// 0: one table of 1,000 columns; 1: all of 200 tables of 30 columns.
BENCHMARK(OnlyReadRows)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadCatalog)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
