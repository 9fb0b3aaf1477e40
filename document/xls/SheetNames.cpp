#include "document/xls/SheetNames.h"

#include <algorithm>
#include <array>
#include <string>

#include "document/xls/Format.h"
#include "document/xls/Text.h"

namespace dbkeeper::xls {

namespace {

constexpr char16_t kReplacement = u'_';

// Characters that count as others, from `first` to `last` in steps of `step`.
struct Fold {
  char16_t first;
  char16_t last;
  char16_t step;
  int distance;
};
constexpr std::array<Fold, 9> kFolds = {{
    {u'A', u'Z', 1, 0x20},
    {u'À', u'Þ', 1, 0x20},
    {0x0100, 0x017E, 2, 1},
    {u'Α', u'Ω', 1, 0x20},
    {u'Ѐ', u'Џ', 1, 0x50},
    {u'А', u'Я', 1, 0x20},
    {u'ぁ', u'ゖ', 1, 0x60},
    {u'Ａ', u'Ｚ', 1, u'a' - u'Ａ'},
    {u'！', u'～', 1, u'!' - u'！'},
}};

// Half-width Katakana from U+FF66 on, as full-width ones.
constexpr std::u16string_view kHalfWidth =
    u"ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモ"
    u"ヤユヨラリルレロワン゛゜";
constexpr char16_t kFirstHalfWidth = 0xFF66;
// Full-width Katakana with a mark, which stands after the letter where they are half-width.
struct MarkedLetters {
  std::u16string_view marked;
  std::u16string_view plain;
  char16_t mark;
};
constexpr std::array<MarkedLetters, 2> kMarkedLetters = {{
    {u"ガギグゲゴザジズゼゾダヂヅデドバビブベボヴ", u"カキクケコサシスセソタチツテトハヒフヘホウ",
     u'゛'},
    {u"パピプペポ", u"ハヒフヘホ", u'゜'},
}};

char16_t FoldedUnit(char16_t unit) {
  if (unit >= kFirstHalfWidth && unit < kFirstHalfWidth + kHalfWidth.size()) {
    return kHalfWidth[unit - kFirstHalfWidth];
  }
  for (const Fold& fold : kFolds) {
    if (unit >= fold.first && unit <= fold.last && (unit - fold.first) % fold.step == 0) {
      return static_cast<char16_t>(unit + fold.distance);
    }
  }
  return unit;
}

void AppendFolded(std::u16string& folded, char16_t unit) {
  const char16_t plain = FoldedUnit(unit);
  for (const MarkedLetters& letters : kMarkedLetters) {
    const std::size_t place = letters.marked.find(plain);
    if (place == std::u16string_view::npos) continue;
    folded += letters.plain[place];
    folded += letters.mark;
    return;
  }
  folded += plain;
}

std::u16string Folded(std::u16string_view name) {
  std::u16string folded;
  for (const char16_t unit : name) AppendFolded(folded, unit);
  return folded;
}

// The first so many units, without half a pair at the end.
std::u16string Shortened(std::u16string_view name, std::size_t length) {
  std::u16string shortened(name.substr(0, length));
  if (!shortened.empty() && (shortened.back() & 0xFC00) == 0xD800) shortened.pop_back();
  return shortened;
}

std::u16string Legal(std::string_view wanted) {
  constexpr std::u16string_view kForbidden = u":\\/?*[]\n\t";
  // Long enough to tell that something was cut.
  std::u16string name = Shortened(ToUnits(wanted, 2 * kMaxSheetName), kMaxSheetName);
  const auto forbidden = [kForbidden](char16_t unit) {
    return kForbidden.find(unit) != std::u16string_view::npos;
  };
  std::replace_if(name.begin(), name.end(), forbidden, kReplacement);
  if (name.empty()) name += kReplacement;
  if (name.front() == u'\'') name.front() = kReplacement;
  if (name.back() == u'\'') name.back() = kReplacement;
  // Programs keep this name for themselves.
  if (Folded(name) == u"history") name += kReplacement;
  return name;
}

std::u16string Numbered(const std::u16string& name, unsigned number) {
  std::u16string suffix = u" (";
  for (const char digit : std::to_string(number)) suffix += static_cast<char16_t>(digit);
  suffix += u')';
  return Shortened(name, kMaxSheetName - suffix.size()) + suffix;
}

}  // namespace

std::string SheetNames::Add(std::string_view wanted) {
  const std::u16string legal = Legal(wanted);
  std::u16string name = legal;
  unsigned& number = numbers_[Folded(legal)];
  while (!taken_.insert(Folded(name)).second) name = Numbered(legal, ++number + 1);
  return ToUtf8(name);
}

}  // namespace dbkeeper::xls
