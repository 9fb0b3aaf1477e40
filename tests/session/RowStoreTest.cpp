#include "app/session/RowStore.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "app/session/CursorRows.h"
#include "app/support/Errors.h"
#include "tests/support/FakeConnection.h"

namespace dbkeeper {
namespace {

using testing::FakeCursor;
using testing::FakeCursors;
using testing::FakeReader;
using testing::FakeResult;
using testing::FakeRow;
using testing::TextFields;

// Row n: its number, a null in every third, and a long text in every hundredth.
std::optional<std::string> CellOf(std::int64_t row, std::size_t field) {
  if (field == 0) return std::to_string(row);
  if (field == 1 && row % 3 == 0) return std::nullopt;
  return std::string(row % 100 == 7 ? 3000 : row % 5, static_cast<char>('a' + row % 26));
}

class CountingReader : public RowReader {
 public:
  explicit CountingReader(std::int64_t rows) : rows_(rows) {}
  const std::vector<Field>& Fields() const override { return fields_; }
  bool Next() override {
    ++row_;
    for (std::size_t i = 0; i < 3; ++i) cells_[i] = CellOf(row_, i);
    return row_ < rows_;
  }
  bool IsNull(std::size_t field) const override { return !cells_[field]; }
  std::string_view Text(std::size_t field) const override { return *cells_[field]; }
  bool NextResult() override { return false; }

 private:
  std::vector<Field> fields_ = TextFields({"n", "a", "b"});
  std::vector<std::optional<std::string>> cells_{3};
  std::int64_t rows_;
  std::int64_t row_ = -1;
};

void ExpectRow(RowSource& rows, std::int64_t row) {
  for (std::size_t field = 0; field < 3; ++field) {
    const auto expected = CellOf(row, field);
    const auto value = rows.Value(row, field);
    ASSERT_EQ(value.has_value(), expected.has_value()) << row << ", " << field;
    if (expected) {
      ASSERT_EQ(*value, *expected) << row << ", " << field;
    }
  }
}

TEST(RowStore, GivesEveryRowBackFromMemoryAndFromTheFile) {
  constexpr std::int64_t kRows = 20000;
  for (const std::size_t budget :
       {RowStore::kDefaultBudget, std::size_t{300} << 10, std::size_t{0}}) {
    CountingReader reader(kRows);
    RowStore store(reader.Fields(), budget);
    store.ReadAll(reader);
    ASSERT_EQ(store.KnownRows(), kRows);
    EXPECT_EQ(store.FileUsed() > 0, budget < RowStore::kDefaultBudget) << budget;
    EXPECT_LE(store.MemoryUsed(), budget);
    for (std::int64_t row = 0; row < kRows; row += 7) ExpectRow(store, row);
    for (std::int64_t row = kRows - 1; row >= 0; row -= 1111) ExpectRow(store, row);
    EXPECT_FALSE(store.Value(kRows, 0).has_value());
  }
}

TEST(RowStore, TellsANullFromAnEmptyText) {
  FakeReader reader({TextFields({"a", "b"}), {{std::nullopt, ""}}, {}});
  RowStore store(reader.Fields());
  store.ReadAll(reader);
  EXPECT_EQ(store.Value(0, 0), std::nullopt);
  EXPECT_EQ(store.Value(0, 1), std::optional<std::string_view>(""));
}

TEST(RowBlock, RefusesBytesThatAreNoBlock) {
  RowBlock block;
  block.AddCell("x");
  block.EndRow();
  const std::string written = block.Write();
  EXPECT_EQ(RowBlock::Read(written).Cell(0, 0), std::optional<std::string_view>("x"));
  EXPECT_THROW(RowBlock::Read(written.substr(0, 7)), FileError);
  EXPECT_THROW(RowBlock::Read(std::string(8, '\x7f')), FileError);
}

FakeResult ManyRows(std::size_t count) {
  FakeResult result{.fields = TextFields({"n"}), .rows = {}, .error = {}};
  for (std::size_t i = 0; i < count; ++i) result.rows.push_back({std::to_string(i)});
  return result;
}

TEST(CursorRows, FetchesOnlyThePagesThatAreLookedAt) {
  bool is_open = true;
  FakeCursors cursors;
  CursorRows rows(std::make_unique<FakeCursor>(ManyRows(1050), cursors, is_open));
  EXPECT_EQ(cursors.fetches.size(), 1U);
  EXPECT_EQ(rows.KnownRows(), 100);
  EXPECT_FALSE(rows.CountIsExact());
  rows.FetchLast();
  EXPECT_EQ(rows.KnownRows(), 1050);
  EXPECT_TRUE(rows.CountIsExact());
  EXPECT_EQ(rows.Value(1049, 0), std::optional<std::string_view>("1049"));
  EXPECT_EQ(rows.Value(1001, 0), std::optional<std::string_view>("1001"));
  EXPECT_EQ(rows.Value(5, 0), std::optional<std::string_view>("5"));
  EXPECT_EQ(cursors.fetches.size(), 2U);
  EXPECT_EQ(cursors.counts, 1);
}

TEST(CursorRows, KnowsTheEndOnceAShortPageCame) {
  for (const std::size_t count : {0U, 1U, 99U, 100U, 101U, 250U}) {
    bool is_open = true;
    FakeCursors cursors;
    CursorRows rows(std::make_unique<FakeCursor>(ManyRows(count), cursors, is_open));
    for (int i = 0; i < 4; ++i) rows.FetchTo(rows.KnownRows());
    EXPECT_EQ(rows.KnownRows(), static_cast<std::int64_t>(count));
    EXPECT_TRUE(rows.CountIsExact());
  }
}

TEST(CursorRows, GoToARowWithoutThePagesBeforeIt) {
  const struct {
    std::int64_t row;
    std::int64_t known;
    bool exact;
  } cases[] = {{50, 100, false},
               {700, 800, false},
               {1049, 1050, true},
               {1050, 1050, true},
               {5000, 1050, true}};
  for (const auto& c : cases) {
    bool is_open = true;
    FakeCursors cursors;
    CursorRows rows(std::make_unique<FakeCursor>(ManyRows(1050), cursors, is_open));
    rows.FetchTo(c.row);
    EXPECT_EQ(rows.KnownRows(), c.known) << c.row;
    EXPECT_EQ(rows.CountIsExact(), c.exact) << c.row;
    EXPECT_LE(cursors.fetches.size(), 3U);
    EXPECT_EQ(rows.Value(c.known - 1, 0), std::to_string(c.known - 1));
  }
}

TEST(CursorRows, KeepsABoundedNumberOfPagesAndReadsDroppedOnesAgain) {
  bool is_open = true;
  FakeCursors cursors;
  CursorRows rows(std::make_unique<FakeCursor>(ManyRows(2000), cursors, is_open), 5000);
  for (std::int64_t row = 0; row < 2000; ++row) {
    rows.FetchTo(row);
    rows.Value(row, 0);
  }
  EXPECT_EQ(cursors.fetches.size(), 20U);
  EXPECT_EQ(rows.Value(1999, 0), std::optional<std::string_view>("1999"));
  EXPECT_EQ(cursors.fetches.size(), 20U);
  EXPECT_EQ(rows.Value(0, 0), std::optional<std::string_view>("0"));
  EXPECT_EQ(cursors.fetches.size(), 21U);
}

TEST(CursorRows, KeepsItsPagesWhenItIsDetached) {
  bool is_open = true;
  FakeCursors cursors;
  CursorRows rows(std::make_unique<FakeCursor>(ManyRows(500), cursors, is_open));
  rows.FetchTo(250);
  rows.Detach();
  EXPECT_EQ(rows.Value(50, 0), std::optional<std::string_view>("50"));
  EXPECT_EQ(rows.Value(299, 0), std::optional<std::string_view>("299"));
  EXPECT_EQ(rows.Value(150, 0), std::nullopt);
}

}  // namespace
}  // namespace dbkeeper
