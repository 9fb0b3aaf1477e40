#include "app/support/Utf16.h"

#include <gtest/gtest.h>

#include <string>

#include "app/support/Errors.h"

namespace dbkeeper {
namespace {

TEST(Utf16, TextComesBackAsItWas) {
  const std::string zero_inside("a\0b", 3);
  for (const std::string& text : {std::string(), zero_inside, std::string("\x7F\u0080\u07FF"),
                                  std::string("日本語ｶﾅ①髙\uFFFD"), std::string("𠮷\U0010FFFF")}) {
    EXPECT_EQ(Utf16ToUtf8(Utf8ToUtf16(text)), text) << text;
  }
  EXPECT_EQ(Utf8ToUtf16("𠮷"), u"𠮷");
}

TEST(Utf16, WhatIsNoUtf8IsNeverSent) {
  for (const char* bytes :
       {"\x80", "\xC0\x80", "\xC3", "\xE3\x81", "\xED\xA0\x80", "\xF0\x80\x80\x80",
        "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "a\xE3z"}) {
    EXPECT_THROW(Utf8ToUtf16(bytes), ConvertError) << testing::PrintToString(std::string(bytes));
  }
}

TEST(Utf16, AnUnpairedSurrogateBecomesTheReplacementCharacter) {
  EXPECT_EQ(Utf16ToUtf8({u"a\xD800", 2}), "a\uFFFD");
  EXPECT_EQ(Utf16ToUtf8({u"\xDC00z", 2}), "\uFFFDz");
  EXPECT_EQ(Utf16ToUtf8({u"\xD800\xD842\xDFB7", 3}), "\uFFFD𠮷");
  EXPECT_TRUE(HasHalfCharacter({u"a\xD800", 2}));
  EXPECT_TRUE(HasHalfCharacter({u"\xDC00z", 2}));
  EXPECT_FALSE(HasHalfCharacter(u"a𠮷"));
}

}  // namespace
}  // namespace dbkeeper
