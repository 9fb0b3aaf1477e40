// The table browser and the row store: time to the first page and to the last row, and memory.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "app/session/BrowseQuery.h"
#include "app/session/RowStore.h"
#include "platform/odbc/OdbcConnection.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

constexpr std::int64_t kMany = 1'000'000;

// The resident memory of this program in bytes.
double Memory() {
  std::ifstream status("/proc/self/statm");
  double total = 0;
  double resident = 0;
  status >> total >> resident;
  return resident * 4096;
}

// A local server with tables rows1000 and rows1000000 of five short columns.
class Tables {
 public:
  Tables() {
    connection.Open(server_.ConnectionString());
    connection.Execute("use [tempdb]");
    connection.Execute("create table digits (n int not null)");
    for (int n = 0; n < 10; ++n) {
      connection.Execute("insert into digits values (" + std::to_string(n) + ")");
    }
    Make("rows1000", "a.n + 10 * b.n + 100 * c.n", "digits a, digits b, digits c");
    Make("rows1000000", "a.n + 10 * b.n + 100 * c.n + 1000 * d.n + 10000 * e.n + 100000 * f.n",
         "digits a, digits b, digits c, digits d, digits e, digits f");
  }

 private:
  void Make(const std::string& name, const std::string& number, const std::string& from) {
    connection.Execute("create table " + name +
                       " (id int not null primary key, name varchar(30) not null, "
                       "amount money not null, changed datetime not null, note nvarchar(30) null)");
    connection.Execute("insert into " + name + " select " + number +
                       ", 'customer', 12.5, '20040229 12:30:00', N'備考' from " + from);
  }

  LocalServer server_;

 public:
  OdbcConnection connection{OdbcOptions{}, server_.Endpoint()};
};

Tables& TheTables() {
  static Tables tables;
  return tables;
}

// As the grid does it: the rows that stand in the window, all their cells.
void ReadWindow(RowView& rows, std::int64_t first) {
  for (std::int64_t row = first; row < first + 30; ++row) {
    for (std::size_t column = 0; column < rows.Columns().size(); ++column) {
      benchmark::DoNotOptimize(rows.Cell(row, column));
    }
  }
  rows.Check();
}

void OpenTable(BrowseQuery& query, std::int64_t count) {
  query.Clear();
  query.Add("select * from [rows" + std::to_string(count) + "]");
  query.Open();
}

void OpenToFirstPage(benchmark::State& state) {
  TheTables();
  testing::FakeLocale locale;
  BrowseQuery query(TheTables().connection, locale, nullptr);
  const double before = Memory();
  for ([[maybe_unused]] auto step : state) {
    OpenTable(query, state.range(0));
    ReadWindow(query.Rows, 0);
  }
  state.counters["memory_MiB"] = (Memory() - before) / (1 << 20);
}
BENCHMARK(OpenToFirstPage)
    ->Arg(1000)
    ->Arg(kMany)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(200);

void LastRow(benchmark::State& state) {
  testing::FakeLocale locale;
  BrowseQuery query(TheTables().connection, locale, nullptr);
  OpenTable(query, kMany);
  for ([[maybe_unused]] auto step : state) {
    query.Rows.Last();
    ReadWindow(query.Rows, kMany - 30);
    state.PauseTiming();
    OpenTable(query, kMany);
    state.ResumeTiming();
  }
}
BENCHMARK(LastRow)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

// Every page of the table once: what the browser keeps is bounded.
void ScrollThrough(benchmark::State& state) {
  testing::FakeLocale locale;
  BrowseQuery query(TheTables().connection, locale, nullptr);
  const double before = Memory();
  for ([[maybe_unused]] auto step : state) {
    OpenTable(query, kMany);
    for (std::int64_t row = 0; row < kMany; row += 100) {
      while (query.Rows.RowCount().Rows <= row) query.Rows.FetchMore();
      ReadWindow(query.Rows, row);
    }
  }
  state.counters["memory_MiB"] = (Memory() - before) / (1 << 20);
}
BENCHMARK(ScrollThrough)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

void ReadIntoStore(benchmark::State& state) {
  std::unique_ptr<RowStore> store;
  const double before = Memory();
  for ([[maybe_unused]] auto step : state) {
    const auto reader = TheTables().connection.Query("select * from tempdb.dbo.rows1000000");
    if (reader == nullptr) throw std::runtime_error("no rows");
    store = std::make_unique<RowStore>(reader->Fields());
    store->ReadAll(*reader);
  }
  state.counters["memory_MiB"] = (Memory() - before) / (1 << 20);
  state.counters["file_MiB"] = static_cast<double>(store->FileUsed()) / (1 << 20);
  state.SetItemsProcessed(kMany);
}
BENCHMARK(ReadIntoStore)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
