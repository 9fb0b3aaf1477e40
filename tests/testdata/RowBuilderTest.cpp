// How values are made up: which numbers are drawn, in which order, and what becomes of them.
#include "testdata/RowBuilder.h"

#include <gtest/gtest.h>

#include <fstream>

#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

using testing::FakeHost;
using testing::TemporaryFolder;

using Numbers = std::vector<std::int64_t>;

// A column, the numbers that are drawn for it, and what comes of them.
struct ValueCase {
  ColumnSettings column;
  Numbers numbers;
  std::string value;
  Numbers limits;  // that were drawn below; 0 is a seeding
};

class RowBuilderTest : public ::testing::Test {
 protected:
  std::string Row(std::vector<ColumnSettings> columns, const Numbers& numbers = {},
                  std::int64_t row = 1) {
    fake.random.numbers.assign(numbers.begin(), numbers.end());
    fake.random.limits.clear();
    ValueFiles files(fake.code_page);
    RowBuilder builder(std::move(columns), fake.host, files);
    std::string text;
    builder.Append(row, text);
    return text;
  }
  std::string File(const std::string& name, const std::string& bytes) {
    std::ofstream(folder / name, std::ios::binary) << bytes;
    return PathText(folder / name);
  }

  TemporaryFolder folder;
  FakeHost fake;
};

TEST_F(RowBuilderTest, EachPatternDrawsItsNumbersAndWritesItsValue) {
  const ValueCase cases[] = {
      {{"1:連続数値", "", "100", ""}, {}, "107", {}},
      {{"1:連続数値", "", "-10", ""}, {}, "-3", {}},
      {{"2:ランダム数値", "", "1", "3"}, {1}, "2", {2}},
      {{"2:ランダム数値", "", "5", "5"}, {0}, "5", {1}},
      {{"2:ランダム数値", "", "9", "3"}, {0}, "9", {1}},
      {{"3:ランダム日付", "", "2004/02/27", "2004/03/02"}, {2}, "2004-02-29 00:00:00", {4}},
      {{"3:ランダム日付", "", "2004/05/06", "2004/05/06"}, {0}, "2004-05-06 00:00:00", {1}},
      {{"4:ランダム日時", "", "2004/05/06", "2004/05/07"},
       {0, 13 * 3600 + 7 * 60 + 55},
       "2004-05-06 13:07:55",
       {1, 86400}},
      {{"5:固定値", "", "a b", ""}, {}, "a b", {}},
      {{"7:パターン文字列", "", "A###", ""}, {6, 1, 2}, "A612", {0, 10, 10, 10}},
      {{"7:パターン文字列", "", "@@", ""}, {0, 24}, "AY", {0, 25, 25}},
      {{"7:パターン文字列", "", "????", ""}, {0, 25, 26, 49}, "AZby", {0, 50, 50, 50, 50}},
      {{"7:パターン文字列", "", "****", ""}, {9, 10, 36, 59}, "9Aby", {0, 60, 60, 60, 60}},
      {{"7:パターン文字列", "", "", ""}, {}, "", {0}},
      {{"", "", "1", "2"}, {}, "", {}},
      {{"9:何か", "", "1", "2"}, {}, "", {}},
      {{"何か", "", "1", "2"}, {}, "", {}},
      {{"1", "", "1", ""}, {}, "8", {}},  // by its digit, whatever stands behind it
  };
  for (const ValueCase& each : cases) {
    EXPECT_EQ(Row({each.column}, each.numbers, 7), each.value)
        << each.column.pattern << " " << each.column.a;
    EXPECT_EQ(fake.random.limits, each.limits) << each.column.pattern << " " << each.column.a;
  }
}

// The dates are drawn before the null test, the other values behind it.
TEST_F(RowBuilderTest, TheNullTestHasItsPlaceAmongTheDraws) {
  const ValueCase cases[] = {
      {{"5:固定値", "0", "x", ""}, {}, "x", {}},
      {{"5:固定値", "10", "x", ""}, {100}, "", {1000}},
      {{"5:固定値", "10", "x", ""}, {101}, "x", {1000}},
      {{"5:固定値", "2.5", "x", ""}, {25}, "", {1000}},
      {{"5:固定値", "100", "x", ""}, {999}, "", {1000}},
      {{"5:固定値", "150", "x", ""}, {999}, "", {1000}},
      {{"2:ランダム数値", "50", "0", "9"}, {500}, "", {1000}},
      {{"2:ランダム数値", "50", "0", "9"}, {501, 4}, "4", {1000, 9}},
      {{"3:ランダム日付", "50", "2004/01/01", "2004/01/09"}, {1, 0}, "", {8, 1000}},
      {{"4:ランダム日時", "50", "2004/01/01", "2004/01/09"}, {1, 2, 0}, "", {8, 86400, 1000}},
      {{"7:パターン文字列", "50", "#", ""}, {0}, "", {1000}},
      // What is always null is never looked at.
      {{"1:連続数値", "100", "none", ""}, {0}, "", {1000}},
      {{"2:ランダム数値", "100", "none", "none"}, {0}, "", {1000}},
  };
  for (const ValueCase& each : cases) {
    EXPECT_EQ(Row({each.column}, each.numbers), each.value) << each.column.pattern;
    EXPECT_EQ(fake.random.limits, each.limits) << each.column.pattern;
  }
}

TEST_F(RowBuilderTest, OneTabStandsBetweenNeighboursAlsoAroundEmptyFields) {
  EXPECT_EQ(Row({{}, {"5:固定値", "", "a", ""}, {}, {"1:連続数値", "", "0", ""}}), "\ta\t\t1");
  EXPECT_EQ(Row({}), "");
}

TEST_F(RowBuilderTest, AFileGivesOneOfItsLines) {
  const std::string pattern = "6:既定ファイル指定";
  const std::string file = File("values.txt", "one\r\ntwo\nthree");
  EXPECT_EQ(Row({{pattern, "", file, "", "3"}}, {0}), "one");
  EXPECT_EQ(Row({{pattern, "", file, "", "3"}}, {2}), "three");
  EXPECT_EQ(fake.random.limits, Numbers{3});
  EXPECT_EQ(Row({{pattern, "", file, "", "9"}}, {8}), "three");  // a count of another time
  EXPECT_EQ(Row({{pattern, "", file, "", ""}}), "");
  EXPECT_EQ(fake.random.limits, Numbers{});
  EXPECT_EQ(Row({{pattern, "50", file, "", "3"}}, {1, 0}), "");
  EXPECT_EQ(fake.random.limits, (Numbers{3, 1000}));
  EXPECT_EQ(Row({{pattern, "", File("empty.txt", ""), "", "0"}}), "");
}

TEST_F(RowBuilderTest, SettingsThatAreNoNumbersDatesOrFilesEndTheRun) {
  const ColumnSettings conversions[] = {
      {"1:連続数値", "", "1.5", ""},
      {"1:連続数値", "", "", ""},
      {"2:ランダム数値", "", "1", "x"},
      {"3:ランダム日付", "", "2004-05-06", "2004/05/06"},
      {"4:ランダム日時", "", "", ""},
      {"5:固定値", "x", "", ""},
      {"", "x", "", ""},
      {"6:既定ファイル指定", "", "f", "", "x"},
      {"3:ランダム日付", "100", "x", ""},
  };
  for (const ColumnSettings& column : conversions) {
    EXPECT_THROW(Row({column}), ConvertError) << column.pattern << " " << column.a;
  }
  EXPECT_THROW(Row({{"6:既定ファイル指定", "", PathText(folder / "none.txt"), "", "3"}}),
               FileError);
  EXPECT_THROW(Row({{"5:固定値", "", "\U0001F600", ""}}), FileError);
}

}  // namespace
}  // namespace dbkeeper
