#include "server/wire/code_page.h"

#include <gtest/gtest.h>

#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

TEST(CodePage932, GivesEachCharacterAsTheServerHasIt) {
  const CodePage932 code_page;
  const struct {
    const char* utf8;
    std::string bytes;
  } cases[] = {
      {"", ""},
      {"Abc~\\", "Abc~\\"},
      {"日本語", "\x93\xFA\x96\x7B\x8C\xEA"},
      {"ｱｶﾞ", "\xB1\xB6\xDE"},
      {"①", "\x87\x40"},
      {"髙", "\xFB\xFC"},
      {"～", "\x81\x60"},
      {"－", "\x81\x7C"},
      {"表", "\x95\x5C"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.utf8);
    std::string bytes;
    code_page.Append(each.utf8, bytes);
    EXPECT_EQ(bytes, each.bytes);
    EXPECT_EQ(code_page.ToUtf8(each.bytes), each.utf8);
  }
}

TEST(CodePage932, GivesAQuestionMarkForWhatItLacks) {
  const CodePage932 code_page;
  const struct {
    const char* utf8;
    const char* bytes;
  } cases[] = {
      {"é", "?"}, {"한", "?"},   {"😀", "??"},         {"¥", "?"},
      {"‾", "?"}, {"\xFF", "?"}, {"a\xE3\x81", "a?"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.utf8);
    std::string bytes;
    code_page.Append(each.utf8, bytes);
    EXPECT_EQ(bytes, each.bytes);
  }
}

TEST(CodePage932, ReadsBrokenBytesWithoutLosingTheRest) {
  const CodePage932 code_page;
  EXPECT_EQ(code_page.ToUtf8("a\x81"), "a\uFFFD");
  EXPECT_EQ(code_page.ToUtf8("\xFD"
                             "b"),
            "\uFFFD"
            "b");
}

TEST(Utf16, GoesThereAndBack) {
  for (const std::string text : {"", "a", "日本é", "😀x", "\uFFFD"}) {
    SCOPED_TRACE(text);
    std::string units;
    AppendUtf16(text, units);
    EXPECT_EQ(Utf16ToUtf8(units), text);
  }
}

TEST(Utf16, ReplacesHalfAPairAndBrokenBytes) {
  EXPECT_EQ(Utf16ToUtf8(std::string("\x3D\xD8"
                                    "a\0",
                                    4)),
            "\uFFFD"
            "a");
  EXPECT_EQ(Utf16ToUtf8(std::string("\x00\xDE", 2)), "\uFFFD");
  std::string units;
  AppendUtf16("\xC0\x80\xED\xA0\x80", units);
  EXPECT_EQ(Utf16ToUtf8(units).find_first_not_of("\xEF\xBF\xBD"), std::string::npos);
}

}  // namespace
}  // namespace dbkeeper::server
