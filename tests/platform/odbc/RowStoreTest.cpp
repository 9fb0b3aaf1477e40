#include "platform/odbc/RowStore.h"

#include <gtest/gtest.h>

#include <string>

namespace dbkeeper::odbc {
namespace {

TEST(RowStore, GivesRowsInOrderWithNullApartFromEmpty) {
  RowStore rows(3);
  constexpr int kRows = 20'000;  // several pieces
  const std::string long_text(1 << 20, 'x');
  for (int i = 0; i < kRows; ++i) {
    rows.Add(std::to_string(i));
    if (i % 2 == 0) {
      rows.AddNull();
    } else {
      rows.Add("");
    }
    rows.Add(i % 5000 == 7 ? long_text : "short");
  }
  for (int i = 0; i < kRows; ++i) {
    ASSERT_TRUE(rows.Next());
    ASSERT_EQ(rows.Text(0), std::to_string(i));
    ASSERT_EQ(rows.IsNull(1), i % 2 == 0);
    ASSERT_EQ(rows.Text(1), "");
    ASSERT_EQ(rows.Text(2), i % 5000 == 7 ? long_text : "short");
  }
  EXPECT_FALSE(rows.Next());
  EXPECT_FALSE(rows.Next());
}

TEST(RowStore, WithoutRowsIsAtItsEnd) {
  RowStore rows(1);
  EXPECT_FALSE(rows.Next());
}

}  // namespace
}  // namespace dbkeeper::odbc
