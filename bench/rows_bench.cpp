// Rows by the million from a local server: reading and exporting beside a bare loop, the table
// browser's first and last page, and the memory that all this takes.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "app/session/BrowseQuery.h"
#include "app/session/RowStore.h"
#include "app/session/RowView.h"
#include "bench/bare_loop.h"
#include "platform/host/IconvCodePage.h"
#include "platform/host/PosixDisk.h"
#include "platform/odbc/OdbcConnection.h"
#include "query/ResultExport.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

constexpr std::int64_t kFew = 1'000;
constexpr std::int64_t kMany = 1'000'000;
constexpr const char* kReadAll =
    "select id, name, amount, changed, note from tempdb.dbo.rows1000000";

// The resident memory of this program in MiB.
double Memory() {
  std::ifstream status("/proc/self/statm");
  double total = 0;
  double resident = 0;
  status >> total >> resident;
  return resident * 4096 / (1 << 20);
}

template <class Work>
double Seconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
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

  std::unique_ptr<RowReader> Read() {
    auto reader = connection.Query(kReadAll);
    if (reader == nullptr) throw std::runtime_error("no rows");
    return reader;
  }
  double BareSeconds() {
    if (bare_ == nullptr) bare_ = std::make_unique<BareLoop>(server_.Port());
    return Seconds([this] {
      if (bare_->Run(kReadAll) != kMany) throw std::runtime_error("rows are missing");
    });
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
  std::unique_ptr<BareLoop> bare_;

 public:
  OdbcConnection connection{OdbcOptions{}, server_.Endpoint()};
};

Tables& TheTables() {
  static Tables tables;
  return tables;
}

// Measures work on the million rows, each time beside a bare loop over them, and tells the share of
// the loop's rate that it reaches.
template <class Work>
void MeasureBesideBareLoop(benchmark::State& state, Work work) {
  double bare = 0;
  double own = 0;
  for ([[maybe_unused]] auto step : state) {
    bare += TheTables().BareSeconds();
    const double seconds = Seconds(work);
    own += seconds;
    state.SetIterationTime(seconds);
  }
  state.counters["of_bare_loop"] = bare / own;
  state.SetItemsProcessed(state.iterations() * kMany);
}

void ReadThroughSession(benchmark::State& state) {
  MeasureBesideBareLoop(state, [] {
    const auto reader = TheTables().Read();
    const std::size_t fields = reader->Fields().size();
    while (reader->Next()) {
      for (std::size_t field = 0; field < fields; ++field) {
        benchmark::DoNotOptimize(reader->Text(field));
      }
    }
  });
}
BENCHMARK(ReadThroughSession)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

// As the query window does it before its grid shows anything.
void ReadIntoStore(benchmark::State& state) {
  std::unique_ptr<RowStore> store;
  const double before = Memory();
  MeasureBesideBareLoop(state, [&store] {
    const auto reader = TheTables().Read();
    store = std::make_unique<RowStore>(reader->Fields());
    store->ReadAll(*reader);
  });
  state.counters["memory_MiB"] = Memory() - before;
  state.counters["file_MiB"] = static_cast<double>(store->FileUsed()) / (1 << 20);
}
BENCHMARK(ReadIntoStore)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

void Export(benchmark::State& state) {
  const testing::TemporaryFolder folder;
  testing::FakeLocale locale;
  host::IconvCodePage code_page;
  host::PosixDisk disk;
  testing::FakeHost fake;
  const Host outside{fake.shell,  fake.dialogs, fake.clock, fake.random,  code_page,
                     fake.locale, fake.windows, disk,       fake.progress};
  const auto reader = TheTables().Read();
  auto store = std::make_unique<RowStore>(reader->Fields());
  store->ReadAll(*reader);
  RowView rows(locale);
  rows.Open(std::move(store));
  const double before = Memory();
  MeasureBesideBareLoop(
      state, [&] { benchmark::DoNotOptimize(ExportResult(rows, folder / "out.csv", outside)); });
  state.counters["memory_MiB"] = Memory() - before;
}
BENCHMARK(Export)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

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

// The long table, each time beside the short one.
void OpenToFirstPage(benchmark::State& state) {
  testing::FakeLocale locale;
  BrowseQuery query(TheTables().connection, locale, nullptr);
  const auto open = [&query](std::int64_t count) {
    return Seconds([&] {
      OpenTable(query, count);
      ReadWindow(query.Rows, 0);
    });
  };
  const double before = Memory();
  double few = 0;
  double many = 0;
  for ([[maybe_unused]] auto step : state) {
    few += open(kFew);
    const double seconds = open(kMany);
    many += seconds;
    state.SetIterationTime(seconds);
  }
  state.counters["times_of_1000_rows"] = many / few;
  state.counters["memory_MiB"] = Memory() - before;
}
BENCHMARK(OpenToFirstPage)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(200);

void LastRow(benchmark::State& state) {
  testing::FakeLocale locale;
  BrowseQuery query(TheTables().connection, locale, nullptr);
  for ([[maybe_unused]] auto step : state) {
    OpenTable(query, kMany);
    state.SetIterationTime(Seconds([&query] {
      query.Rows.Last();
      ReadWindow(query.Rows, kMany - 30);
    }));
  }
}
BENCHMARK(LastRow)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

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
  state.counters["memory_MiB"] = Memory() - before;
}
BENCHMARK(ScrollThrough)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
