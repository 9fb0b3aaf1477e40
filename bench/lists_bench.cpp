// List routines beside only reading what they read, through the session from a local server.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/session/Query.h"
#include "catalog/DatabaseList.h"
#include "catalog/ObjectLists.h"
#include "platform/odbc/OdbcConnection.h"
#include "tests/support/LocalServer.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

constexpr int kTables = 1'000;
constexpr std::int64_t kDatabases = 100'000;
constexpr const char* kDatabasesSql = "select * from master.dbo.sysdatabases";

// A server that tells of 100,000 databases: the statement for them is sent as one over a table.
class ManyDatabases : public Connection {
 public:
  ManyDatabases(Connection& connection, std::string table)
      : connection_(connection), sql_("select * from " + std::move(table)) {}

  void Open(const std::string& connection_string) override { connection_.Open(connection_string); }
  void Close() override { connection_.Close(); }
  bool IsOpen() const override { return connection_.IsOpen(); }
  std::unique_ptr<RowReader> Query(const std::string& sql) override {
    return connection_.Query(sql == kDatabasesSql ? sql_ : sql);
  }
  std::int64_t Execute(const std::string& sql) override { return connection_.Execute(sql); }
  ScrolledRows OpenCursor(const std::string& sql) override { return connection_.OpenCursor(sql); }
  std::vector<ServerMessage> TakeMessages() override { return connection_.TakeMessages(); }

 private:
  Connection& connection_;
  const std::string sql_;
};

// A local server with a database "many" of 1,000 tables and a table of 100,000 rows like
// sysdatabases in tempdb.
class Server {
 public:
  Server() {
    connection.Open(server_.ConnectionString());
    connection.Execute("create database many");
    connection.Execute("use [many]");
    for (int table = 0; table < kTables; ++table) {
      connection.Execute("create table t" + std::to_string(table) +
                         " (id int not null primary key, name varchar(30) null)");
    }
    connection.Execute("use [tempdb]");
    connection.Execute("select * into tempdb.dbo.databases from master.dbo.sysdatabases");
    std::int64_t rows = Count();
    for (; rows < kDatabases; rows = Count()) {
      connection.Execute("insert into tempdb.dbo.databases select top " +
                         std::to_string(std::min(rows, kDatabases - rows)) +
                         " * from tempdb.dbo.databases");
    }
  }

 private:
  std::int64_t Count() {
    const auto reader = connection.Query("select count(*) from tempdb.dbo.databases");
    reader->Next();
    return std::stoll(std::string(reader->Text(0)));
  }

  LocalServer server_;

 public:
  OdbcConnection connection{OdbcOptions{}, server_.Endpoint()};
};

Server& TheServer() {
  static Server server;
  return server;
}

template <class Action>
double Seconds(const Action& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A routine beside what it cannot do without. The best of several rounds stands for each, as other
// programs disturb some of them.
class Comparison {
 public:
  void Add(double routine, double bare) {
    routine_ = std::min(routine_, routine);
    bare_ = std::min(bare_, bare);
  }
  void Report(benchmark::State& state) const {
    state.counters["routine_ms"] = routine_ * 1000;
    state.counters["bare_ms"] = bare_ * 1000;
    state.counters["ratio"] = routine_ / bare_;
  }

 private:
  double routine_ = std::numeric_limits<double>::max();
  double bare_ = std::numeric_limits<double>::max();
};

// Opens a statement and reads every value of every row; gives the rows.
std::int64_t ReadOnly(Query& query, const std::string& sql) {
  query.Open(sql);
  std::int64_t rows = 0;
  for (; !query.Eof(); query.Next(), ++rows) {
    for (std::size_t field = 0; field < query.Fields().size(); ++field) {
      benchmark::DoNotOptimize(query.FieldAt(field).Raw());
    }
  }
  query.Close();
  return rows;
}

void Capacity(benchmark::State& state) {
  Comparison comparison;
  std::size_t tables = 0;
  for ([[maybe_unused]] auto step : state) {
    testing::WorkbenchOn bench(TheServer().connection);
    const ListView& list = bench.list;
    const double routine = Seconds([&] { ListCapacity(bench.workbench, "many"); });
    const double bare = Seconds([&] {
      for (const ListItem& item : list.Items()) {
        ReadOnly(bench.session.ADOQuerySystem,
                 "EXEC [many].dbo.sp_spaceused  [" + std::string(item.SubItem(0)) + "]");
      }
    });
    tables = list.Items().size();
    state.SetIterationTime(routine);
    comparison.Add(routine, bare);
  }
  if (tables < kTables) throw std::runtime_error("tables are missing");
  state.counters["round_trips"] = static_cast<double>(tables);
  comparison.Report(state);
}
BENCHMARK(Capacity)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

// With 1, the tree grows a node for every database and its six children, as at the first listing.
void Databases(benchmark::State& state) {
  ManyDatabases connection(TheServer().connection, "tempdb.dbo.databases");
  Comparison comparison;
  for ([[maybe_unused]] auto step : state) {
    testing::WorkbenchOn bench(connection);
    if (state.range(0) == 1) bench.tree.Select(&bench.tree.AddRoot("server"));
    const double routine = Seconds([&] { ListDatabases(bench.workbench, {}); });
    if (bench.list.Items().size() != kDatabases) throw std::runtime_error("rows are missing");
    const double bare = Seconds([&] { ReadOnly(bench.session.ADOQuerySystem, kDatabasesSql); });
    state.SetIterationTime(routine);
    comparison.Add(routine, bare);
  }
  comparison.Report(state);
}
BENCHMARK(Databases)
    ->Arg(0)
    ->Arg(1)
    ->ArgName("tree")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(5);

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
