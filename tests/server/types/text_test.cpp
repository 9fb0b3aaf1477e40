#include "server/types/text.h"

#include <gtest/gtest.h>

#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

struct PatternCase {
  std::string_view text;
  std::string_view pattern;
  bool matches;
};

TEST(Text, ComparesWithoutCaseAndTrailingBlanks) {
  EXPECT_EQ(CompareText("abc", "ABC  "), 0);
  EXPECT_EQ(CompareText("", "   "), 0);
  EXPECT_EQ(CompareText("Ａｂ", "ａＢ"), 0);
  EXPECT_EQ(CompareText("ÀÞ", "àþ"), 0);
  EXPECT_NE(CompareText("ｱ", "ア"), 0);
  EXPECT_NE(CompareText(" a", "a"), 0);
  EXPECT_LT(CompareText("a", "b"), 0);
  EXPECT_GT(CompareText("b", "A"), 0);
  EXPECT_LT(CompareText("a", "ab"), 0);
  EXPECT_LT(CompareText("z", "あ"), 0);
  EXPECT_NE(CompareText("\xFF", "\xFE"), 0);
}

TEST(Text, PatternsMatchAsWildcardsAndClassesSay) {
  constexpr PatternCase kCases[] = {
      {"abc", "ABC", true},     {"abc", "a%", true},        {"abc", "%c", true},
      {"abc", "%b%", true},     {"abc", "a_c", true},       {"abc", "a_", false},
      {"", "%", true},          {"", "_", false},           {"abc", "[a-c][^c]c", true},
      {"abc", "[x-z]%", false}, {"a]c", "a]c", true},       {"a[c", "a[[]c", true},
      {"a-c", "a[-]c", true},   {"日本", "日_", true},      {"日本", "[あ-本]%", true},
      {"abc  ", "abc", true},   {"abc", "abc  ", false},    {"a%c", "a[%]c", true},
      {"abc", "[abc", false},   {"aaaaab", "%a%a%b", true}, {"ab", "[", false},
  };
  for (const PatternCase& test : kCases) {
    EXPECT_EQ(MatchesPattern(test.text, test.pattern, 0), test.matches)
        << test.text << " like " << test.pattern;
  }
  EXPECT_TRUE(MatchesPattern("50%", "50!%", U'!'));
  EXPECT_FALSE(MatchesPattern("50x", "50!%", U'!'));
}

TEST(Text, LengthsAreThoseOfTheColumnsForm) {
  EXPECT_EQ(CodePageLength("aｱ日"), 4);
  EXPECT_EQ(Utf16Length("a日\xF0\xA0\xAE\x9F"), 4);
  EXPECT_EQ(CutText("日本語", 5, TextUnit::kCodePageByte), "日本");
  EXPECT_EQ(CutText("a\xF0\xA0\xAE\x9F", 2, TextUnit::kUtf16Unit), "a");
  EXPECT_EQ(EncodeUtf8(DecodeUtf8("a\xFF日\xE3\x81")), "a\xFF日\xE3\x81");
}

TEST(TypeRules, DeclarationsGoToTypesAndBack) {
  struct Case {
    std::string_view name;
    std::vector<int> measures;
    std::string_view declaration;
  };
  const Case cases[] = {
      {"INT", {}, "int"},
      {"integer", {}, "int"},
      {"dec", {5}, "decimal(5,0)"},
      {"numeric", {38, 38}, "numeric(38,38)"},
      {"varchar", {}, "varchar(1)"},
      {"character varying", {8000}, "varchar(8000)"},
      {"sysname", {}, "nvarchar(128)"},
      {"float", {24}, "real"},
      {"float", {25}, "float"},
      {"rowversion", {}, "timestamp"},
  };
  for (const Case& test : cases) {
    const std::optional<SqlType> type = TypeByName(test.name, test.measures);
    ASSERT_TRUE(type) << test.name;
    EXPECT_EQ(DeclarationOf(*type), test.declaration);
    EXPECT_EQ(DeclarationOf(DecodeType(EncodeType(*type))), test.declaration);
  }
  EXPECT_FALSE(TypeByName("xml", {}));
}

}  // namespace
}  // namespace dbkeeper::server
