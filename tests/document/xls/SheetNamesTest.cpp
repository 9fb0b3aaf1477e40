#include "document/xls/SheetNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dbkeeper::xls {
namespace {

TEST(SheetNames, AreLegalAndNeverEqual) {
  struct Case {
    std::vector<const char*> wanted;
    std::vector<const char*> given;
  };
  const Case cases[] = {
      {{"Orders", "Order Details"}, {"Orders", "Order Details"}},
      {{"a:b\\c/d?e*f[g]h"}, {"a_b_c_d_e_f_g_h"}},
      {{"a:b", "a/b", "a_b", "a?b"}, {"a_b", "a_b (2)", "a_b (3)", "a_b (4)"}},
      {{"Orders", "ORDERS", "ｏｒｄｅｒｓ"}, {"Orders", "ORDERS (2)", "ｏｒｄｅｒｓ (3)"}},
      {{"がぎぱ", "ガギパ", "ｶﾞｷﾞﾊﾟ"}, {"がぎぱ", "ガギパ (2)", "ｶﾞｷﾞﾊﾟ (3)"}},
      {{"ハ", "バ", "パ"}, {"ハ", "バ", "パ"}},
      {{"Ära", "ära", "Яблоко", "яблоко"}, {"Ära", "ära (2)", "Яблоко", "яблоко (2)"}},
      {{"'quoted'", "it's"}, {"_quoted_", "it's"}},
      {{"", "_"}, {"_", "_ (2)"}},
      {{"History", "history"}, {"History_", "history_ (2)"}},
      {{"a\nb"}, {"a_b"}},
      {{"1234567890123456789012345678901", "12345678901234567890123456789012"},
       {"1234567890123456789012345678901", "123456789012345678901234567 (2)"}},
      {{"一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十一二三"},
       {"一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十一"}},
      // A pair of units is not cut in its middle.
      {{"123456789012345678901234567890𠮷"}, {"123456789012345678901234567890"}},
      {{"A", "A (2)", "A"}, {"A", "A (2)", "A (3)"}},
  };
  for (const Case& c : cases) {
    SheetNames names;
    for (std::size_t i = 0; i < c.wanted.size(); ++i) {
      EXPECT_EQ(names.Add(c.wanted[i]), c.given[i]) << c.wanted[i];
    }
  }
}

}  // namespace
}  // namespace dbkeeper::xls
