// Measures of the core alone: list routines beside reading the same rows, sorting beside std::sort
// over the same keys, descriptions joined to a long table list.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/main/Application.h"
#include "catalog/DatabaseList.h"
#include "catalog/ObjectLists.h"
#include "tests/support/FakeHost.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::FakeHost;
using testing::FakeLocale;
using testing::WorkbenchOn;

using Row = std::vector<std::string>;

// Rows that stand in memory, so that the reading costs as little as it ever can.
class StandingReader : public RowReader {
 public:
  StandingReader(const std::vector<Field>& fields, const std::vector<Row>& rows)
      : fields_(fields), rows_(rows) {}
  const std::vector<Field>& Fields() const override { return fields_; }
  bool Next() override { return ++row_ < rows_.size(); }
  bool IsNull(std::size_t) const override { return false; }
  std::string_view Text(std::size_t field) const override { return rows_[row_][field]; }
  bool NextResult() override { return false; }

 private:
  const std::vector<Field>& fields_;
  const std::vector<Row>& rows_;
  std::size_t row_ = static_cast<std::size_t>(-1);
};

struct Table {
  std::vector<Field> fields;
  std::vector<Row> rows;
};

// Answers a statement by the first table whose key it holds.
class StandingConnection : public Connection {
 public:
  std::vector<std::pair<std::string, Table>> tables;

  void Open(const std::string&) override {}
  void Close() override {}
  bool IsOpen() const override { return true; }
  std::unique_ptr<RowReader> Query(const std::string& sql) override {
    for (const auto& [key, table] : tables) {
      if (sql.find(key) != std::string::npos) {
        return std::make_unique<StandingReader>(table.fields, table.rows);
      }
    }
    return nullptr;
  }
  std::int64_t Execute(const std::string&) override { return -1; }
  ScrolledRows OpenCursor(const std::string&) override { return {}; }
  std::vector<ServerMessage> TakeMessages() override { return {}; }
};

Field Named(std::string name, FieldKind kind = FieldKind::kText) {
  Field field;
  field.name = std::move(name);
  field.kind = kind;
  return field;
}

Table Databases(int count) {
  Table table;
  table.fields = {Named("dbid", FieldKind::kInteger),    Named("name"),
                  Named("status", FieldKind::kInteger),  Named("status2", FieldKind::kInteger),
                  Named("crdate", FieldKind::kDateTime), Named("filename")};
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i * 7919 % count);
    table.rows.push_back(
        {number, "database_" + number, "1073741840", "1090519040", "2005-03-08 09:05:07.123",
         "C:\\Program Files\\Microsoft SQL Server\\MSSQL\\Data\\d" + number + ".mdf"});
  }
  return table;
}

constexpr int kRows = 100000;

void BM_ReadDatabaseRows(benchmark::State& state) {
  StandingConnection connection;
  connection.tables = {{"sysdatabases", Databases(kRows)}};
  FakeLocale locale;
  Query query(connection, locale, {});
  for (auto _ : state) {
    query.Open("select * from master.dbo.sysdatabases");
    std::size_t length = 0;
    for (; !query.Eof(); query.Next()) {
      for (std::size_t field = 0; field < query.Fields().size(); ++field) {
        const std::string text = query.FieldAt(field).AsString();
        length += text.size();
      }
    }
    benchmark::DoNotOptimize(length);
  }
}
BENCHMARK(BM_ReadDatabaseRows)->Unit(benchmark::kMillisecond);

void BM_DatabaseList(benchmark::State& state) {
  StandingConnection connection;
  connection.tables = {{"sysdatabases", Databases(kRows)}};
  WorkbenchOn bench(connection);
  TreeNode& node = bench.tree.AddRoot("Database");
  node.AddChild("master");
  bench.tree.Select(&node);
  for (auto _ : state) ListDatabases(bench.workbench, {});
}
BENCHMARK(BM_DatabaseList)->Unit(benchmark::kMillisecond);

std::vector<std::string> Keys() {
  std::vector<std::string> keys;
  keys.reserve(kRows);
  for (const Row& row : Databases(kRows).rows) keys.push_back(row[1]);
  return keys;
}

void BM_SortPreparedKeys(benchmark::State& state) {
  const std::vector<std::string> keys = Keys();
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<std::string> copy = keys;
    state.ResumeTiming();
    std::sort(copy.begin(), copy.end());
    benchmark::DoNotOptimize(copy.data());
  }
}
BENCHMARK(BM_SortPreparedKeys)->Unit(benchmark::kMillisecond);

void BM_ColumnClickSort(benchmark::State& state) {
  StandingConnection connection;
  connection.tables = {{"sysdatabases", Databases(kRows)}};
  FakeHost fake;
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "dbkeeper-bench";
  fake.shell.executable = folder / "DBKEEPER.exe";
  Application app(connection, fake.host);
  app.FormMain.TreeView.Select(nullptr);
  for (auto _ : state) {
    state.PauseTiming();
    ListDatabases(app.FormMain.Workbench(), {});
    state.ResumeTiming();
    app.FormMain.ListViewMain.UserColumnClick(1);
  }
}
BENCHMARK(BM_ColumnClickSort)->Unit(benchmark::kMillisecond);

void BM_ObjectListWithDescriptions(benchmark::State& state) {
  const auto count = static_cast<int>(state.range(0));
  Table objects;
  objects.fields = {Named("name"), Named("xtype"), Named("crdate", FieldKind::kDateTime)};
  Table properties;
  properties.fields = {Named("objname"), Named("name"), Named("value")};
  for (int i = 0; i < count; ++i) {
    const std::string name = "table_" + std::to_string(i);
    objects.rows.push_back({name, "U ", "2005-03-08 09:05:07.123"});
    properties.rows.push_back({name, "MS_Description", "得意先マスタ"});
    properties.rows.push_back({name, "Note", "夜間に更新"});
  }
  StandingConnection connection;
  connection.tables = {{"fn_listextendedproperty", std::move(properties)},
                       {"sysobjects", std::move(objects)}};
  WorkbenchOn bench(connection);
  bench.options.Advanced = true;
  for (auto _ : state) ListTables(bench.workbench, "sales");
  state.SetComplexityN(count);
}
BENCHMARK(BM_ObjectListWithDescriptions)
    ->Arg(12500)
    ->Arg(25000)
    ->Arg(50000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
