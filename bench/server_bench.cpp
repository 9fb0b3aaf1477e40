// The local server: its share of reading a million rows beside SQLite alone over the same file,
// point queries, and bulk copies.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "platform/odbc/OdbcConnection.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

constexpr std::int64_t kMany = 1'000'000;
constexpr std::int64_t kCopied = 100'000;
constexpr int kColumns = 5;

// A local server with a database "work": table big of 1,000,000 rows of five short columns, table
// part with the first 100,000 of them, and table copied like it without rows.
class Server {
 public:
  Server() {
    connection.Open(server_.ConnectionString());
    connection.Execute("create database work");
    connection.Execute("use [work]");
    connection.Execute(
        "create table big (id int identity(1,1) not null primary key, name varchar(30) not null, "
        "amount money not null, changed datetime not null, note nvarchar(30) null)");
    connection.Execute(
        "insert into big (name, amount, changed, note) "
        "values ('customer', 12.5, '20040229 12:30:00', N'備考')");
    for (std::int64_t rows = 1; rows < kMany; rows *= 2) {
      connection.Execute("insert into big (name, amount, changed, note) select top " +
                         std::to_string(std::min(rows, kMany - rows)) +
                         " name, amount, changed, note from big");
    }
    for (const char* table : {"part", "copied"}) {
      connection.Execute("create table " + std::string(table) +
                         " (id int not null primary key, name varchar(30) not null, "
                         "amount money not null, changed datetime not null, "
                         "note nvarchar(30) null)");
    }
    connection.Execute("insert into part select * from big where id <= " + std::to_string(kCopied));
  }

  // The processor time of the server so far, in seconds, of a clock of 10 ms.
  double CpuSeconds() {
    std::ifstream file("/proc/" + Process() + "/stat");
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int field = 3; field < 14; ++field) fields >> skipped;
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
  }

  // A line of the server's memory, such as "VmRSS", in MiB.
  double MemoryMiB(const std::string& name) {
    std::ifstream file("/proc/" + Process() + "/status");
    std::string line;
    while (std::getline(file, line)) {
      if (line.starts_with(name + ":")) return std::stod(line.substr(name.size() + 1)) / 1024;
    }
    return 0;
  }

  const std::filesystem::path& Folder() const { return server_.DataFolder(); }
  int Port() { return server_.Port(); }
  // Where the server keeps the rows of "work".
  std::filesystem::path File() const { return Folder() / "data/data/work.mdf"; }

 private:
  std::string Process() { return std::to_string(server_.Endpoint().ProcessId()); }

  LocalServer server_;

 public:
  OdbcConnection connection{OdbcOptions{}, server_.Endpoint()};
};

Server& TheServer() {
  static Server server;
  return server;
}

// SQLite with nothing above it.
class BareFile {
 public:
  explicit BareFile(const std::filesystem::path& path) {
    Require(sqlite3_open_v2(path.c_str(), &database_, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK);
  }
  ~BareFile() { sqlite3_close(database_); }
  BareFile(const BareFile&) = delete;
  BareFile& operator=(const BareFile&) = delete;

  // Steps through a select and touches every value as it is stored; gives the rows.
  std::int64_t Step(const std::string& sql) {
    sqlite3_stmt* prepared = nullptr;
    Require(sqlite3_prepare_v2(database_, sql.c_str(), -1, &prepared, nullptr) == SQLITE_OK);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                          sqlite3_finalize);
    std::int64_t rows = 0;
    while (sqlite3_step(prepared) == SQLITE_ROW) {
      for (int column = 0; column < kColumns; ++column) Touch(prepared, column);
      ++rows;
    }
    return rows;
  }

 private:
  void Require(bool done) {
    if (!done) throw std::runtime_error(sqlite3_errmsg(database_));
  }
  static void Touch(sqlite3_stmt* statement, int column) {
    if (sqlite3_column_type(statement, column) == SQLITE_INTEGER) {
      benchmark::DoNotOptimize(sqlite3_column_int64(statement, column));
      return;
    }
    benchmark::DoNotOptimize(sqlite3_column_text(statement, column));
    benchmark::DoNotOptimize(sqlite3_column_bytes(statement, column));
  }

  sqlite3* database_ = nullptr;
};

std::int64_t ReadRows(Connection& connection, const std::string& sql) {
  const auto reader = connection.Query(sql);
  if (reader == nullptr) throw std::runtime_error("no rows");
  std::int64_t rows = 0;
  for (; reader->Next(); ++rows) {
    for (std::size_t field = 0; field < kColumns; ++field) {
      benchmark::DoNotOptimize(reader->Text(field));
    }
  }
  return rows;
}

// The times are those of the best round, as other programs' rounds disturb them.
void SelectAll(benchmark::State& state) {
  Server& server = TheServer();
  BareFile file(server.File());
  double server_cpu = std::numeric_limits<double>::max();
  double sqlite_cpu = server_cpu;
  std::int64_t rows = 0;
  for ([[maybe_unused]] auto step : state) {
    const double before = server.CpuSeconds();
    rows += ReadRows(server.connection, "select * from work.dbo.big");
    server_cpu = std::min(server_cpu, server.CpuSeconds() - before);
    state.PauseTiming();
    const std::clock_t start = std::clock();
    if (file.Step("select * from \"big\"") != kMany) throw std::runtime_error("rows are missing");
    sqlite_cpu = std::min(sqlite_cpu, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(rows);
  state.counters["server_cpu_s"] = server_cpu;
  state.counters["sqlite_cpu_s"] = sqlite_cpu;
  state.counters["ratio"] = server_cpu / sqlite_cpu;
  state.counters["VmHWM_MiB"] = server.MemoryMiB("VmHWM");
  state.counters["VmRSS_MiB"] = server.MemoryMiB("VmRSS");
}
BENCHMARK(SelectAll)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void PointQuery(benchmark::State& state) {
  Server& server = TheServer();
  std::int64_t key = 1;
  std::int64_t rows = 0;
  for ([[maybe_unused]] auto step : state) {
    key = key * 7919 % 999'983 + 1;
    rows +=
        ReadRows(server.connection, "select * from work.dbo.big where id = " + std::to_string(key));
  }
  if (rows != state.iterations()) throw std::runtime_error("rows are missing");
  state.SetItemsProcessed(rows);
}
BENCHMARK(PointQuery)->Unit(benchmark::kMicrosecond)->UseRealTime()->MinTime(3);

// Runs the bulk copy tool of others; false when it fails.
bool BulkCopy(Server& server, const std::string& table, const std::string& direction) {
  // The tool reads the client's character set from this file only.
  const std::filesystem::path settings = server.Folder() / "freetds.conf";
  std::ofstream(settings) << "[local]\nhost = 127.0.0.1\nport = " << server.Port()
                          << "\ntds version = 7.1\nclient charset = UTF-8\n";
  const std::string command = "FREETDSCONF='" + settings.string() + "' freebcp work.dbo." + table +
                              " " + direction + " '" + (server.Folder() / "rows.txt").string() +
                              "' -c -S local -U '" + LocalServer::kLogin + "' -P '" +
                              LocalServer::kPassword + "' >/dev/null 2>&1";
  return std::system(command.c_str()) == 0;
}

bool HasBulkCopy(benchmark::State& state) {
  if (std::system("command -v freebcp >/dev/null") == 0) return true;
  state.SkipWithError("freebcp is not installed");
  return false;
}

void BulkCopyOut(benchmark::State& state) {
  if (!HasBulkCopy(state)) return;
  Server& server = TheServer();
  for ([[maybe_unused]] auto step : state) {
    if (!BulkCopy(server, "part", "out")) throw std::runtime_error("the copy out failed");
  }
  state.SetItemsProcessed(kCopied * state.iterations());
}
BENCHMARK(BulkCopyOut)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void BulkCopyIn(benchmark::State& state) {
  if (!HasBulkCopy(state)) return;
  Server& server = TheServer();
  if (!BulkCopy(server, "part", "out")) throw std::runtime_error("the copy out failed");
  for ([[maybe_unused]] auto step : state) {
    if (!BulkCopy(server, "copied", "in")) throw std::runtime_error("the copy in failed");
    state.PauseTiming();
    if (server.connection.Execute("delete from work.dbo.copied") != kCopied) {
      throw std::runtime_error("rows are missing");
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(kCopied * state.iterations());
}
BENCHMARK(BulkCopyIn)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
