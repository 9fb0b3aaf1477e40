// The patterns after which values are made up, in the order in which they are offered.
#pragma once

#include <array>
#include <string_view>

namespace dbkeeper {

// A pattern's number is the digit that its text begins with.
enum class Pattern {
  kNone = 0,
  kSequence = 1,
  kRandomNumber = 2,
  kRandomDate = 3,
  kRandomMoment = 4,
  kFixed = 5,
  kFromFile = 6,
  kPatternString = 7,
};

// How a pattern's parameters are put in.
enum class ParameterEditors { kStart, kStartAndEnd, kDates, kText, kFile, kPatternString };

struct PatternRow {
  Pattern pattern;
  std::string_view text;     // what is shown and stored
  std::string_view caption;  // before the first parameter
  ParameterEditors editors;
};

inline constexpr std::array<PatternRow, 7> kPatterns = {{
    {Pattern::kSequence, "1:連続数値", "開始位置 : ", ParameterEditors::kStart},
    {Pattern::kRandomNumber, "2:ランダム数値", "開始位置 : ", ParameterEditors::kStartAndEnd},
    {Pattern::kRandomDate, "3:ランダム日付", "開始 : ", ParameterEditors::kDates},
    {Pattern::kRandomMoment, "4:ランダム日時", "開始 : ", ParameterEditors::kDates},
    {Pattern::kFixed, "5:固定値", "固定値 : ", ParameterEditors::kText},
    {Pattern::kFromFile, "6:既定ファイル指定", "既定ファイル : ", ParameterEditors::kFile},
    {Pattern::kPatternString, "7:パターン文字列",
     "パターン文字列 : ", ParameterEditors::kPatternString},
}};

// The pattern of a stored text: by its digit alone.
constexpr Pattern PatternOf(std::string_view text) {
  if (text.empty() || text.front() < '1' || text.front() > '7') return Pattern::kNone;
  return static_cast<Pattern>(text.front() - '0');
}

}  // namespace dbkeeper
