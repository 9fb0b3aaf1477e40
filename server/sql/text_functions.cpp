// Texts and bytes.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "server/sql/function_table.h"
#include "server/types/collation.h"
#include "server/types/conversion.h"
#include "server/types/datetime.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using enum ResultRule;

constexpr int kLongestText = 8000;                    // in bytes of the code page
constexpr std::size_t kMostBytes = 3 * kLongestText;  // of such a text
constexpr std::size_t kLongestName = 384;             // in bytes

std::size_t ClampedLength(Integer length) {
  return static_cast<std::size_t>(std::clamp<Integer>(length, 0, 1 << 30));
}

std::string_view BytesOf(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* blob = std::get_if<Blob>(&cell)) return blob->bytes;
  return "";
}

Cell Len(std::string_view text) { return static_cast<Integer>(DecodeUtf8(TrimRight(text)).size()); }

// Bytes as the server would keep them.
Cell DataLength(const Cell& value, const SqlType& type) {
  const std::string_view bytes = BytesOf(value);
  switch (FamilyOf(type.id)) {
    case TypeFamily::kText:
      return Integer{IsNationalText(type.id) ? 2 * Utf16Length(bytes) : CodePageLength(bytes)};
    case TypeFamily::kBinary:
      return static_cast<Integer>(bytes.size());
    case TypeFamily::kVariant:
      return Integer{std::holds_alternative<Blob>(value) ? static_cast<int>(bytes.size())
                                                         : 2 * Utf16Length(bytes)};
    case TypeFamily::kDecimal:
      return Integer{DecimalBytes(type.precision)};
    default:
      return Integer{type.length};
  }
}

std::string Piece(std::string_view text, Integer start, Integer length) {
  const std::u32string characters = DecodeUtf8(text);
  // A start before the first character takes from the length.
  if (start < 1) {
    length += start - 1;
    start = 1;
  }
  const auto begin = static_cast<std::size_t>(start - 1);
  if (length <= 0 || begin >= characters.size()) return "";
  return EncodeUtf8(std::u32string_view(characters).substr(begin, ClampedLength(length)));
}

Cell Left(std::string_view text, Integer length) {
  if (length < 0) throw MakeError(536, {});
  return Piece(text, 1, length);
}

Cell Right(std::string_view text, Integer length) {
  if (length < 0) throw MakeError(536, {});
  const auto characters = static_cast<Integer>(DecodeUtf8(text).size());
  return Piece(text, std::max<Integer>(1, characters - length + 1), length);
}

Cell Substring(const Cell& value, Integer start, Integer length) {
  if (length < 0) throw MakeError(536, {});
  const std::string_view bytes = BytesOf(value);
  if (!std::holds_alternative<Blob>(value)) return Piece(bytes, start, length);
  const Integer begin = std::max<Integer>(start, 1);
  const Integer count = std::max<Integer>(0, length - (begin - start));
  if (static_cast<std::size_t>(begin) > bytes.size()) return Blob{};
  return Blob{std::string(
      bytes.substr(static_cast<std::size_t>(begin - 1), static_cast<std::size_t>(count)))};
}

// The number of the character that begins at `place`, from 1 on.
Integer Ordinal(std::string_view text, std::size_t place) {
  return static_cast<Integer>(DecodeUtf8(text.substr(0, place)).size()) + 1;
}

// Blanks at the end of the wanted text count here.
Cell CharIndex(std::string_view wanted, std::string_view text, std::optional<Integer> start) {
  if (wanted.empty()) return Integer{0};
  const std::u32string skipped = DecodeUtf8(text).substr(0, ClampedLength(start.value_or(1) - 1));
  const FoldedText folded(text);
  const auto from = std::ranges::lower_bound(folded.places, EncodeUtf8(skipped).size());
  const std::size_t found = folded.characters.find(
      FoldedText(wanted).characters, static_cast<std::size_t>(from - folded.places.begin()));
  return found == std::u32string::npos ? Integer{0} : Ordinal(text, folded.places[found]);
}

// The first place where the pattern between its % matches.
Cell PatIndex(std::string_view pattern, std::string_view text) {
  if (!pattern.starts_with('%')) return Integer{MatchesPattern(text, pattern, 0) ? 1 : 0};
  const std::size_t found = FindPattern(text, pattern);
  return found == std::string_view::npos ? Integer{0} : Ordinal(text, found);
}

std::string CutToLongest(std::string_view text) {
  return std::string(CutText(text, kLongestText, TextUnit::kCodePageByte));
}

// What is longer than the longest text is cut off, before and behind.
Cell Replace(std::string_view whole, std::string_view wanted, std::string_view given) {
  const std::string text = CutToLongest(whole);
  const std::string by = CutToLongest(given);
  const FoldedText folded(text);
  const std::u32string old = FoldedText(wanted).characters;
  std::string result;
  std::size_t position = 0;
  while (!old.empty() && result.size() <= kMostBytes) {
    const std::size_t found = folded.characters.find(old, position);
    if (found == std::u32string::npos) break;
    const std::size_t begin = folded.places[position];
    result.append(text, begin, folded.places[found] - begin).append(by);
    position = found + old.size();
  }
  return CutToLongest(result.append(text, folded.places[position]));
}

Cell Replicate(std::string_view text, Integer count) {
  if (count < 0) return {};
  std::string result;
  const std::string one = CutToLongest(text);
  for (Integer i = 0; i < count && !one.empty() && result.size() <= kMostBytes; ++i) result += one;
  return CutToLongest(result);
}

Cell Reverse(std::u32string characters) {
  std::ranges::reverse(characters);
  return EncodeUtf8(characters);
}

Cell Upper(std::u32string characters) {
  for (char32_t& c : characters) c = Raised(c);
  return EncodeUtf8(characters);
}

Cell Lower(std::u32string characters) {
  for (char32_t& c : characters) c = Lowered(c);
  return EncodeUtf8(characters);
}

Cell Space(Integer count) {
  if (count < 0) return {};
  return std::string(std::min<std::size_t>(ClampedLength(count), kLongestText), ' ');
}

Cell Stuff(const std::u32string& text, Integer start, Integer length, const std::u32string& by) {
  if (start < 1 || length < 0 || static_cast<std::size_t>(start) > text.size()) return {};
  const auto begin = static_cast<std::size_t>(start - 1);
  const std::size_t end = std::min(text.size(), begin + ClampedLength(length));
  return EncodeUtf8(text.substr(0, begin) + by + text.substr(end));
}

Cell Str(double number, std::optional<Integer> given_length, std::optional<Integer> decimals) {
  const Integer length = given_length.value_or(10);
  const Integer asked = decimals.value_or(0);
  if (length < 1 || asked < 0) return {};
  const auto width = static_cast<std::size_t>(std::min<Integer>(length, 128));
  std::array<char, 400> digits{};
  std::snprintf(digits.data(), digits.size(), "%.0f", number);
  const std::size_t whole = std::string_view(digits.data()).size();
  if (whole > width) return std::string(width, '*');
  // Decimals that find no room are rounded away.
  const Integer room = static_cast<Integer>(width - whole) - 1;
  const int shown = static_cast<int>(std::clamp<Integer>(std::min<Integer>(asked, room), 0, 16));
  std::snprintf(digits.data(), digits.size(), "%.*f", shown, number);
  std::string text = digits.data();
  if (text.size() > width) return std::string(width, '*');
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

// One byte of the code page: ASCII or half-width kana.
Cell Char(Integer code) {
  if (code >= 0xA1 && code <= 0xDF) {
    return EncodeUtf8(std::u32string(1, static_cast<char32_t>(0xFF61 + code - 0xA1)));
  }
  if (code < 0 || code >= 0x80) return {};
  return std::string(1, static_cast<char>(code));
}

Cell NChar(Integer code) {
  if (code < 0 || code > 0xFFFF) return {};
  return EncodeUtf8(std::u32string(1, static_cast<char32_t>(code)));
}

Cell Ascii(const std::u32string& text) {
  if (text.empty()) return {};
  if (text[0] >= 0xFF61 && text[0] <= 0xFF9F) return static_cast<Integer>(text[0] - 0xFF61 + 0xA1);
  if (text[0] >= 0x80) throw Unsupported("ascii() of Japanese characters");
  return static_cast<Integer>(text[0]);
}

Cell Unicode(const std::u32string& text) {
  if (text.empty()) return {};
  return static_cast<Integer>(text[0] < kBroken ? text[0] : kReplacement);
}

Cell QuoteName(std::string_view name, std::optional<std::string_view> given_mark) {
  const std::string_view mark = given_mark.value_or("[");
  if (mark.empty() || name.size() > kLongestName) return {};
  constexpr std::string_view kOpen = "['\"(<{";
  constexpr std::string_view kClose = "]'\")>}";
  std::size_t kind = kOpen.find(mark[0]);
  if (kind == std::string_view::npos) kind = kClose.find(mark[0]);
  if (kind == std::string_view::npos) return {};
  std::string quoted(1, kOpen[kind]);
  for (const char c : name) {
    quoted += c;
    if (c == kClose[kind]) quoted += c;
  }
  return quoted + kClose[kind];
}

template <EndBlanks Blanks>
Cell Like(std::string_view text, std::string_view pattern, std::optional<std::string_view> escape) {
  const std::u32string mark = DecodeUtf8(escape.value_or(""));
  if (escape && mark.size() != 1) throw MakeError(506, {*escape});
  return Integer{MatchesPattern(text, pattern, escape ? mark[0] : 0, Blanks) ? 1 : 0};
}

bool Converts(std::string_view text, const SqlType& type) {
  try {
    ConvertCell(std::string(text), VarChar(8000), type, 0, ConversionKind::kExplicit);
    return true;
  } catch (const SqlError&) {
    return false;
  }
}

Cell IsNumeric(std::optional<std::string_view> text) {
  const bool number =
      text && !Trim(*text).empty() && (Converts(*text, kFloatType) || Converts(*text, kMoneyType));
  return Integer{number ? 1 : 0};
}

Cell IsDate(std::optional<std::string_view> given) {
  const std::string_view text = Trim(given.value_or(""));
  const bool date = !text.empty() && !ParseDateTime(text, DateOrder::kMonthDayYear).fault;
  return Integer{date ? 1 : 0};
}

// Bytes behind bytes.
Cell JoinBytes(std::string_view left, std::string_view right) {
  return Blob{std::string(left).append(right)};
}

// Without the zero bytes at the end, which do not count in comparisons.
Cell ComparableBytes(std::string_view bytes) {
  while (!bytes.empty() && bytes.back() == '\0') bytes.remove_suffix(1);
  return Blob{std::string(bytes)};
}

constexpr FunctionRow kRows[] = {
    {"len", "t", kIntType, kAdapted<Len>},
    {"left", "ti", kText, kAdapted<Left>},
    {"right", "ti", kText, kAdapted<Right>},
    {"substring", "bii", kText, kAdapted<Substring>},
    {"charindex", "tt[i", kIntType, kAdapted<CharIndex>},
    {"patindex", "tt", kIntType, kAdapted<PatIndex>},
    {"replace", "ttt", kWideText, kAdapted<Replace>},
    {"replicate", "ti", kWideText, kAdapted<Replicate>},
    {"reverse", "t", kText, kAdapted<Reverse>},
    {"rtrim", "t", kText, "rtrim($*, ' ')"},
    {"ltrim", "t", kText, "ltrim($*, ' ')"},
    {"upper", "t", kText, kAdapted<Upper>},
    {"lower", "t", kText, kAdapted<Lower>},
    {"space", "i", VarChar(8000), kAdapted<Space>},
    {"stuff", "tiit", kWideText, kAdapted<Stuff>},
    {"str", "f[ii", VarChar(128), kAdapted<Str>},
    {"char", "i", VarChar(1), kAdapted<Char>},
    {"nchar", "i", NVarChar(1), kAdapted<NChar>},
    {"ascii", "t", kIntType, kAdapted<Ascii>},
    {"unicode", "t", kIntType, kAdapted<Unicode>},
    {"quotename", "t[t", NVarChar(258), kAdapted<QuoteName>},
    {"isnumeric", "t", kIntType, kAdapted<IsNumeric, FunctionKind::kSeesNulls>},
    {"isdate", "t", kIntType, kAdapted<IsDate, FunctionKind::kSeesNulls>},
    {"datalength", kAdapted<DataLength>},
    {"like", kAdapted<Like<EndBlanks::kIgnored>>},
    {"like_national", kAdapted<Like<EndBlanks::kCount>>},
    {"join", kAdapted<JoinBytes>},
    {"binary", kAdapted<ComparableBytes>},
};

}  // namespace

std::span<const FunctionRow> TextFunctions() { return kRows; }

}  // namespace dbkeeper::server
