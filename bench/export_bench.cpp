// The export of a result to a text file: rows per second, and the memory that it takes.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/RowStore.h"
#include "app/session/RowView.h"
#include "platform/host/IconvCodePage.h"
#include "query/ResultExport.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

constexpr std::int64_t kRows = 1'000'000;

// The resident memory of this program in MiB.
double Memory() {
  std::ifstream status("/proc/self/statm");
  double total = 0;
  double resident = 0;
  status >> total >> resident;
  return resident * 4096 / (1 << 20);
}

// Rows of five short columns, made while they are read.
class MadeRows : public RowReader {
 public:
  const std::vector<Field>& Fields() const override { return fields_; }
  bool Next() override {
    cells_[0] = std::to_string(number_);
    return number_++ < kRows;
  }
  bool IsNull(std::size_t) const override { return false; }
  std::string_view Text(std::size_t field) const override { return cells_[field]; }
  bool NextResult() override { return false; }

 private:
  const std::vector<Field> fields_ = {{.name = "id", .kind = FieldKind::kInteger},
                                      {.name = "name", .type_name = "varchar"},
                                      {.name = "amount", .kind = FieldKind::kDecimal},
                                      {.name = "changed", .kind = FieldKind::kDateTime},
                                      {.name = "note", .type_name = "nvarchar"}};
  std::array<std::string, 5> cells_ = {"", "customer", "12.5000", "2004-02-29 12:30:00.000",
                                       "備考"};
  std::int64_t number_ = 0;
};

void ExportRows(benchmark::State& state) {
  const testing::TemporaryFolder folder;
  testing::FakeLocale locale;
  host::IconvCodePage code_page;
  MadeRows made;
  auto store = std::make_unique<RowStore>(made.Fields());
  store->ReadAll(made);
  RowView rows(locale);
  rows.Open(std::move(store));
  const double before = Memory();
  for ([[maybe_unused]] auto step : state) {
    benchmark::DoNotOptimize(ExportResult(rows, folder / "out.csv", code_page));
  }
  state.counters["memory_MiB"] = Memory() - before;
  state.counters["file_MiB"] =
      static_cast<double>(std::filesystem::file_size(folder / "out.csv")) / (1 << 20);
  state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(ExportRows)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
