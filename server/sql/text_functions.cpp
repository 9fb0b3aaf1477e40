// Texts and bytes.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "server/sql/function_list.h"
#include "server/types/conversion.h"
#include "server/types/datetime.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using Integer = std::int64_t;

constexpr std::size_t kLongestText = 8000;
constexpr std::size_t kLongestName = 384;  // in bytes

bool IsBlob(const Cell& cell) { return std::holds_alternative<Blob>(cell); }

std::size_t ClampedLength(Integer length) {
  return static_cast<std::size_t>(std::clamp<Integer>(length, 0, 1 << 30));
}

Cell Len(Cells arguments) {
  return static_cast<Integer>(DecodeUtf8(TrimRight(TextAt(arguments, 0))).size());
}

// ms_datalength(value, type): bytes as the server would keep them.
Cell DataLength(Cells arguments) {
  const SqlType type = DecodeType(IntegerAt(arguments, 1));
  const std::string_view bytes = TextAt(arguments, 0);
  switch (FamilyOf(type.id)) {
    case TypeFamily::kText:
      return Integer{IsNationalText(type.id) ? 2 * Utf16Length(bytes) : CodePageLength(bytes)};
    case TypeFamily::kBinary:
      return static_cast<Integer>(bytes.size());
    case TypeFamily::kVariant:
      return Integer{IsBlob(arguments[0]) ? static_cast<int>(bytes.size())
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

Cell Left(Cells arguments) {
  const Integer length = IntegerAt(arguments, 1);
  if (length < 0) throw MakeError(536, {});
  return Piece(TextAt(arguments, 0), 1, length);
}

Cell Right(Cells arguments) {
  const Integer length = IntegerAt(arguments, 1);
  if (length < 0) throw MakeError(536, {});
  const auto characters = static_cast<Integer>(DecodeUtf8(TextAt(arguments, 0)).size());
  return Piece(TextAt(arguments, 0), std::max<Integer>(1, characters - length + 1), length);
}

Cell Substring(Cells arguments) {
  const Integer start = IntegerAt(arguments, 1);
  const Integer length = IntegerAt(arguments, 2);
  if (length < 0) throw MakeError(536, {});
  if (!IsBlob(arguments[0])) return Piece(TextAt(arguments, 0), start, length);
  const std::string_view bytes = TextAt(arguments, 0);
  const Integer begin = std::max<Integer>(start, 1);
  const Integer count = std::max<Integer>(0, length - (begin - start));
  if (static_cast<std::size_t>(begin) > bytes.size()) return Blob{};
  return Blob{std::string(
      bytes.substr(static_cast<std::size_t>(begin - 1), static_cast<std::size_t>(count)))};
}

// Where `wanted` begins in `text` at or behind `from`, both counting characters; npos: nowhere.
std::size_t Find(const std::u32string& text, const std::u32string& wanted, std::size_t from) {
  for (std::size_t i = from; i + wanted.size() <= text.size(); ++i) {
    const std::u32string_view piece = std::u32string_view(text).substr(i, wanted.size());
    if (piece == wanted) return i;
    // Trailing blanks count here, so the texts are compared with a mark behind them.
    if (CompareText(EncodeUtf8(piece) + '|', EncodeUtf8(wanted) + '|') == 0) return i;
  }
  return std::u32string::npos;
}

Cell CharIndex(Cells arguments) {
  const std::u32string wanted = DecodeUtf8(TextAt(arguments, 0));
  const std::u32string text = DecodeUtf8(TextAt(arguments, 1));
  const Integer start = arguments.size() > 2 ? IntegerAt(arguments, 2) : 1;
  if (wanted.empty()) return Integer{0};
  const std::size_t found = Find(text, wanted, ClampedLength(start - 1));
  return found == std::u32string::npos ? Integer{0} : static_cast<Integer>(found + 1);
}

// The first place where the pattern between its % matches.
Cell PatIndex(Cells arguments) {
  const std::string_view pattern = TextAt(arguments, 0);
  const std::u32string text = DecodeUtf8(TextAt(arguments, 1));
  const bool anywhere = !pattern.empty() && pattern.front() == '%';
  const std::string_view rest = anywhere ? pattern.substr(1) : pattern;
  const std::size_t last = anywhere ? text.size() : 0;
  for (std::size_t i = 0; i <= last; ++i) {
    if (MatchesPattern(EncodeUtf8(std::u32string_view(text).substr(i)), rest, 0)) {
      return static_cast<Integer>(i + 1);
    }
  }
  return Integer{0};
}

Cell Replace(Cells arguments) {
  const std::u32string text = DecodeUtf8(TextAt(arguments, 0));
  const std::u32string wanted = DecodeUtf8(TextAt(arguments, 1));
  const std::u32string by = DecodeUtf8(TextAt(arguments, 2));
  if (wanted.empty()) return std::string(TextAt(arguments, 0));
  std::u32string result;
  std::size_t position = 0;
  for (std::size_t found = Find(text, wanted, 0); found != std::u32string::npos;
       found = Find(text, wanted, position)) {
    result.append(text, position, found - position).append(by);
    position = found + wanted.size();
  }
  return EncodeUtf8(result.append(text, position));
}

Cell Replicate(Cells arguments) {
  const std::string_view text = TextAt(arguments, 0);
  const Integer count = IntegerAt(arguments, 1);
  if (count < 0) return {};
  std::string result;
  for (Integer i = 0; i < count && result.size() + text.size() <= 3 * kLongestText; ++i) {
    if (text.empty()) break;
    result += text;
  }
  return std::string(CutText(result, kLongestText, TextUnit::kCodePageByte));
}

Cell Reverse(Cells arguments) {
  std::u32string characters = DecodeUtf8(TextAt(arguments, 0));
  std::reverse(characters.begin(), characters.end());
  return EncodeUtf8(characters);
}

// ASCII, Latin-1 and full-width Latin letters, as the collation folds them.
std::string Cased(std::string_view text, bool upper) {
  std::u32string characters = DecodeUtf8(text);
  for (char32_t& c : characters) {
    const char32_t base = upper ? c - 32 : c;
    if (c < 32) continue;
    const bool latin = (base >= 'A' && base <= 'Z') ||
                       (base >= 0xC0 && base <= 0xDE && base != 0xD7) ||
                       (base >= 0xFF21 && base <= 0xFF3A);
    if (latin) c = upper ? base : c + 32;
  }
  return EncodeUtf8(characters);
}

Cell Upper(Cells arguments) { return Cased(TextAt(arguments, 0), true); }
Cell Lower(Cells arguments) { return Cased(TextAt(arguments, 0), false); }

Cell Space(Cells arguments) {
  const Integer count = IntegerAt(arguments, 0);
  if (count < 0) return {};
  return std::string(std::min(ClampedLength(count), kLongestText), ' ');
}

Cell Stuff(Cells arguments) {
  const std::u32string text = DecodeUtf8(TextAt(arguments, 0));
  const Integer start = IntegerAt(arguments, 1);
  const Integer length = IntegerAt(arguments, 2);
  if (start < 1 || length < 0 || static_cast<std::size_t>(start) > text.size()) return {};
  const auto begin = static_cast<std::size_t>(start - 1);
  const std::size_t end = std::min(text.size(), begin + ClampedLength(length));
  return EncodeUtf8(text.substr(0, begin) + DecodeUtf8(TextAt(arguments, 3)) + text.substr(end));
}

// str(number [, length [, decimals]])
Cell Str(Cells arguments) {
  const double number = DoubleAt(arguments, 0);
  const Integer length = arguments.size() > 1 ? IntegerAt(arguments, 1) : 10;
  const Integer asked = arguments.size() > 2 ? IntegerAt(arguments, 2) : 0;
  if (length < 1 || asked < 0) return {};
  const auto width = static_cast<std::size_t>(std::min<Integer>(length, 128));
  std::array<char, 400> digits{};
  std::snprintf(digits.data(), digits.size(), "%.0f", number);
  const std::size_t whole = std::string_view(digits.data()).size();
  if (whole > width) return std::string(width, '*');
  // Decimals that find no room are rounded away.
  const Integer room = static_cast<Integer>(width - whole) - 1;
  const int decimals = static_cast<int>(std::clamp<Integer>(std::min<Integer>(asked, room), 0, 16));
  std::snprintf(digits.data(), digits.size(), "%.*f", decimals, number);
  std::string text = digits.data();
  if (text.size() > width) return std::string(width, '*');
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

Cell Char(Cells arguments) {
  const Integer code = IntegerAt(arguments, 0);
  if (code < 0 || code > 255) return {};
  // One byte of the code page: ASCII or half-width kana.
  if (code >= 0xA1 && code <= 0xDF) {
    return EncodeUtf8(std::u32string(1, static_cast<char32_t>(0xFF61 + code - 0xA1)));
  }
  if (code >= 0x80) return {};
  return std::string(1, static_cast<char>(code));
}

Cell NChar(Cells arguments) {
  const Integer code = IntegerAt(arguments, 0);
  if (code < 0 || code > 0xFFFF) return {};
  return EncodeUtf8(std::u32string(1, static_cast<char32_t>(code)));
}

Cell Ascii(Cells arguments) {
  const std::u32string text = DecodeUtf8(TextAt(arguments, 0));
  if (text.empty()) return {};
  if (text[0] >= 0xFF61 && text[0] <= 0xFF9F) return static_cast<Integer>(text[0] - 0xFF61 + 0xA1);
  if (text[0] >= 0x80) throw Unsupported("ascii() of Japanese characters");
  return static_cast<Integer>(text[0]);
}

Cell Unicode(Cells arguments) {
  const std::u32string text = DecodeUtf8(TextAt(arguments, 0));
  if (text.empty()) return {};
  return static_cast<Integer>(text[0] < 0x110000 ? text[0] : 0xFFFD);
}

Cell QuoteName(Cells arguments) {
  const std::string_view name = TextAt(arguments, 0);
  const std::string_view mark = arguments.size() > 1 ? TextAt(arguments, 1) : "[";
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

// ms_like(text, pattern [, escape])
Cell LikePattern(Cells arguments) {
  char32_t escape = 0;
  if (arguments.size() > 2) {
    const std::u32string mark = DecodeUtf8(TextAt(arguments, 2));
    if (mark.size() != 1) throw MakeError(506, {TextAt(arguments, 2)});
    escape = mark[0];
  }
  return Integer{MatchesPattern(TextAt(arguments, 0), TextAt(arguments, 1), escape) ? 1 : 0};
}

template <TypeId Type>
bool Converts(std::string_view text) {
  try {
    const SqlType from{TypeId::kVarChar, 8000, 0, 0, true};
    SqlType to{Type, 8, 19, 4, true};
    ConvertCell(std::string(text), from, to, 0, ConversionKind::kExplicit);
    return true;
  } catch (const SqlError&) {
    return false;
  }
}

Cell IsNumeric(Cells arguments) {
  if (IsNullCell(arguments[0])) return Integer{0};
  const std::string_view text = TextAt(arguments, 0);
  if (Trim(text).empty()) return Integer{0};
  return Integer{Converts<TypeId::kFloat>(text) || Converts<TypeId::kMoney>(text) ? 1 : 0};
}

Cell IsDate(Cells arguments) {
  if (IsNullCell(arguments[0])) return Integer{0};
  const std::string_view text = Trim(TextAt(arguments, 0));
  const bool date = !text.empty() && !ParseDateTime(text, DateOrder::kMonthDayYear).fault;
  return Integer{date ? 1 : 0};
}

// ms_join(left, right): bytes behind bytes.
Cell JoinBytes(Cells arguments) {
  return Blob{std::string(TextAt(arguments, 0)) + std::string(TextAt(arguments, 1))};
}

// ms_binary(bytes): without the zero bytes at the end, which do not count in comparisons.
Cell ComparableBytes(Cells arguments) {
  std::string_view bytes = TextAt(arguments, 0);
  while (!bytes.empty() && bytes.back() == '\0') bytes.remove_suffix(1);
  return Blob{std::string(bytes)};
}

constexpr FunctionEntry kEntries[] = {
    {"ms_len", 1, Len},
    {"ms_datalength", 2, DataLength},
    {"ms_left", 2, Left},
    {"ms_right", 2, Right},
    {"ms_substring", 3, Substring},
    {"ms_charindex", 2, CharIndex},
    {"ms_charindex", 3, CharIndex},
    {"ms_patindex", 2, PatIndex},
    {"ms_replace", 3, Replace},
    {"ms_replicate", 2, Replicate},
    {"ms_reverse", 1, Reverse},
    {"ms_upper", 1, Upper},
    {"ms_lower", 1, Lower},
    {"ms_space", 1, Space},
    {"ms_stuff", 4, Stuff},
    {"ms_str", -1, Str},
    {"ms_char", 1, Char},
    {"ms_nchar", 1, NChar},
    {"ms_ascii", 1, Ascii},
    {"ms_unicode", 1, Unicode},
    {"ms_quotename", -1, QuoteName},
    {"ms_like", 2, LikePattern},
    {"ms_like", 3, LikePattern},
    {"ms_isnumeric", 1, IsNumeric, NullRule::kSeesNulls},
    {"ms_isdate", 1, IsDate, NullRule::kSeesNulls},
    {"ms_join", 2, JoinBytes},
    {"ms_binary", 1, ComparableBytes},
};

}  // namespace

std::span<const FunctionEntry> TextFunctions() { return kEntries; }

}  // namespace dbkeeper::server
