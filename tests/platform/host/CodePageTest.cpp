#include <gtest/gtest.h>

#include <string>

#include "platform/host/IconvCodePage.h"

namespace dbkeeper::host {
namespace {

struct Pair {
  std::string utf8;
  std::string bytes;
};

TEST(CodePage, TextsThatTheCodePageHoldsGoBothWays) {
  const Pair pairs[] = {
      {"", ""},
      {"select 1\r\n", "select 1\r\n"},
      {"C:\\MSSQL", "C:\\MSSQL"},
      {"日本語", "\x93\xfa\x96\x7b\x8c\xea"},
      {"ﾃｰﾌﾞﾙ", "\xc3\xb0\xcc\xde\xd9"},
      {"～－", "\x81\x60\x81\x7c"},
      {"①髙", "\x87\x40\xfb\xfc"},
      {"表", "\x95\x5c"},  // the second byte is a backslash
  };
  IconvCodePage page;
  for (const Pair& pair : pairs) {
    EXPECT_EQ(page.FromUtf8(pair.utf8), pair.bytes) << pair.utf8;
    EXPECT_EQ(page.ToUtf8(pair.bytes), pair.utf8) << pair.utf8;
  }
}

TEST(CodePage, ALongTextIsConvertedWhole) {
  std::string utf8;
  for (int i = 0; i < 10'000; ++i) utf8 += "あx";
  IconvCodePage page;
  const auto bytes = page.FromUtf8(utf8);
  ASSERT_TRUE(bytes.has_value());
  EXPECT_EQ(bytes->size(), 30'000U);
  EXPECT_EQ(page.ToUtf8(*bytes), utf8);
}

TEST(CodePage, ACharacterWithoutAPlaceIsRefusedAndNeverReplaced) {
  IconvCodePage page;
  // The converter alone would make a backslash and a tilde of the first two.
  for (const char* utf8 : {"\u00A5100", "a\u203E", "한", "😀", "é", "broken \xff", "cut \xe3\x81"}) {
    EXPECT_EQ(page.FromUtf8(utf8), std::nullopt) << utf8;
  }
}

TEST(CodePage, BytesThatAreNoTextAreRefused) {
  IconvCodePage page;
  for (const char* bytes : {"\x81", "a\xfd", "\x85\x40 no such pair"}) {
    EXPECT_EQ(page.ToUtf8(bytes), std::nullopt) << bytes;
  }
}

}  // namespace
}  // namespace dbkeeper::host
