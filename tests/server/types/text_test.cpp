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
  EXPECT_NE(CompareText(" a", "a"), 0);
  EXPECT_LT(CompareText("a", "b"), 0);
  EXPECT_GT(CompareText("b", "A"), 0);
  EXPECT_LT(CompareText("a", "ab"), 0);
  EXPECT_LT(CompareText("z", "あ"), 0);
  EXPECT_NE(CompareText("\xFF", "\xFE"), 0);
}

TEST(Text, KanaTypeAndWidthDoNotCount) {
  struct Case {
    std::string_view left;
    std::string_view right;
    bool same;
  };
  constexpr Case kCases[] = {
      {"Ａ１！", "a1!", true}, {"ｱ", "あ", true},
      {"ｱ", "ア", true},       {"ﾃｰﾌﾞﾙ", "てーぶる", true},
      {"ｶﾞ", "が", true},      {"ﾊﾟﾝ", "ぱん", true},
      {"ｳﾞ", "ヴ", true},      {"が", "ガ", true},
      {"ゝゞ", "ヽヾ", true},  {"｢ｱ｣", "「ア」", true},
      {"￥100", "¥100", true}, {"a　", "a", true},
      {"a　b", "a b", true},   {"Ω", "ω", true},
      {"Ｄ Я", "d я", true},   {"Ⅳ", "ⅳ", true},
      {"か", "が", false},     {"ﾊ", "ﾊﾟ", false},
      {"つ", "っ", false},     {"ﾔ", "ｬ", false},
      {"ア", "ァ", false},     {"ﾝﾞ", "ン", false},
      {"ー", "-", false},      {"一", "ー", false},
      {"À", "A", false},       {"ﾞ", "゛", true},
      {"ｶﾞ", "カ゛", false},
  };
  for (const Case& test : kCases) {
    EXPECT_EQ(CompareText(test.left, test.right) == 0, test.same)
        << test.left << " and " << test.right;
    EXPECT_EQ(CompareText(test.right, test.left) == 0, test.same)
        << test.right << " and " << test.left;
    EXPECT_EQ(MatchesPattern(test.left, test.right, 0), test.same)
        << test.left << " like " << test.right;
  }
  EXPECT_LT(CompareText("カ", "が"), 0);
  EXPECT_LT(CompareText("が", "キ"), 0);
  EXPECT_LT(CompareText("ｂ", "C"), 0);
}

TEST(Text, PatternsMatchAsWildcardsAndClassesSay) {
  constexpr PatternCase kCases[] = {
      {"abc", "ABC", true},     {"abc", "a%", true},        {"abc", "%c", true},
      {"abc", "%b%", true},     {"abc", "a_c", true},       {"abc", "a_", false},
      {"", "%", true},          {"", "_", false},           {"abc", "[a-c][^c]c", true},
      {"abc", "[x-z]%", false}, {"a]c", "a]c", true},       {"a[c", "a[[]c", true},
      {"a-c", "a[-]c", true},   {"日本", "日_", true},      {"日本", "[あ-本]%", true},
      {"abc  ", "abc", true},   {"abc", "abc  ", false},    {"a%c", "a[%]c", true},
      {"ガス", "ｶﾞ_", true},    {"ｶﾞｽ", "__", true},        {"い", "[ｱ-ｳ]", true},
      {"50%", "５０％", true},  {"50x", "50％", false},     {"a_", "a＿", true},
      {"ab", "a＿", false},     {"[a]", "［Ａ］", true},    {"ｱﾊﾟﾄ", "%ぱ%", true},
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
