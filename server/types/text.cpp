#include "server/types/text.h"

#include <cstddef>

namespace dbkeeper::server {
namespace {

// Takes the next character; a byte that begins none is taken as it is, beyond Unicode's range, so
// that broken texts still compare.
char32_t Next(std::string_view text, std::size_t& position) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(position++);
  if (first < 0x80) return first;
  const int extra = first >= 0xF0 && first < 0xF8 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
  if (extra == 0 || first >= 0xF8 || position + static_cast<std::size_t>(extra) > text.size()) {
    return 0x110000U + first;
  }
  char32_t character = first & (0x3FU >> extra);
  for (int i = 0; i < extra; ++i) {
    const unsigned char next = byte(position + static_cast<std::size_t>(i));
    if ((next & 0xC0U) != 0x80) return 0x110000U + first;
    character = character << 6 | (next & 0x3FU);
  }
  position += static_cast<std::size_t>(extra);
  return character;
}

std::string Quoted(std::string_view text, char mark) {
  std::string quoted(1, mark);
  for (const char c : text) {
    quoted += c;
    if (c == mark) quoted += c;
  }
  return quoted += mark;
}

// Small letters of ASCII, Latin-1 and the full-width Latin letters.
char32_t Fold(char32_t c) {
  if (c >= 'A' && c <= 'Z') return c + 32;
  if (c < 0xC0) return c;
  if (c <= 0xDE && c != 0xD7) return c + 32;
  if (c >= 0xFF21 && c <= 0xFF3A) return c + 32;
  return c;
}

std::u32string Folded(std::string_view text) {
  std::u32string characters = DecodeUtf8(text);
  for (char32_t& c : characters) c = Fold(c);
  return characters;
}

int UnitsOf(char32_t c, TextUnit unit) {
  if (unit == TextUnit::kUtf16Unit) return c >= 0x10000 && c < 0x110000 ? 2 : 1;
  return c < 0x80 || (c >= 0xFF61 && c <= 0xFF9F) ? 1 : 2;
}

int Measure(std::string_view text, TextUnit unit) {
  int length = 0;
  for (std::size_t position = 0; position < text.size();) {
    length += UnitsOf(Next(text, position), unit);
  }
  return length;
}

// The class that begins behind "[" at `position`; moves behind its "]". A class that is not closed
// matches nothing.
bool MatchesClass(char32_t c, const std::u32string& pattern, std::size_t& position) {
  bool negated = false;
  if (position < pattern.size() && pattern[position] == '^') {
    negated = true;
    ++position;
  }
  bool found = false;
  bool first = true;
  for (; position < pattern.size() && (first || pattern[position] != ']'); first = false) {
    const char32_t low = pattern[position++];
    char32_t high = low;
    if (position + 1 < pattern.size() && pattern[position] == '-' && pattern[position + 1] != ']') {
      high = pattern[position + 1];
      position += 2;
    }
    found = found || (c >= low && c <= high);
  }
  if (position >= pattern.size()) return false;
  ++position;
  return found != negated;
}

// One step of the pattern at `p` against `c`; moves `p` behind it.
bool MatchesOne(char32_t c, const std::u32string& pattern, std::size_t& p, char32_t escape) {
  const char32_t wanted = pattern[p++];
  if (escape != 0 && wanted == escape && p < pattern.size()) return pattern[p++] == c;
  if (wanted == '_') return true;
  if (wanted == '[') return MatchesClass(c, pattern, p);
  return wanted == c;
}

bool Matches(const std::u32string& text, const std::u32string& pattern, char32_t escape) {
  constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::size_t t = 0;
  std::size_t p = 0;
  std::size_t star = kNone;  // behind the last "%", and where in the text it was tried
  std::size_t star_text = 0;
  for (;;) {
    if (p < pattern.size() && pattern[p] == '%' && escape != '%') {
      star = ++p;
      star_text = t;
      continue;
    }
    if (t == text.size() && p == pattern.size()) return true;
    if (t < text.size() && p < pattern.size()) {
      std::size_t next = p;
      if (MatchesOne(text[t], pattern, next, escape)) {
        p = next;
        ++t;
        continue;
      }
    }
    if (star == kNone || star_text >= text.size()) return false;
    t = ++star_text;
    p = star;
  }
}

}  // namespace

int CompareText(std::string_view left, std::string_view right) {
  left = TrimRight(left);
  right = TrimRight(right);
  std::size_t l = 0;
  std::size_t r = 0;
  while (l < left.size() && r < right.size()) {
    // Most characters are the same byte on both sides.
    if (left[l] == right[r] && static_cast<unsigned char>(left[l]) < 0x80) {
      ++l;
      ++r;
      continue;
    }
    const char32_t left_character = Fold(Next(left, l));
    const char32_t right_character = Fold(Next(right, r));
    if (left_character != right_character) return left_character < right_character ? -1 : 1;
  }
  return static_cast<int>(l < left.size()) - static_cast<int>(r < right.size());
}

bool SameName(std::string_view left, std::string_view right) {
  return CompareText(left, right) == 0;
}

std::string ToUpperAscii(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::string ToLowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::string Joined(std::span<const std::string> parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += separator;
    text += part;
  }
  return text;
}

std::string QuoteName(std::string_view name) { return Quoted(name, '"'); }

std::string QuoteText(std::string_view text) {
  // SQLite ends a statement at a zero byte.
  if (text.find('\0') != std::string_view::npos) return "CAST(" + QuoteBytes(text) + " AS TEXT)";
  return Quoted(text, '\'');
}

std::string QuoteBytes(std::string_view bytes) { return "X'" + HexDigits(bytes) + '\''; }

std::string HexDigits(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string digits;
  for (const char c : bytes) {
    digits += kDigits[static_cast<unsigned char>(c) >> 4];
    digits += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return digits;
}

int HexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

bool MatchesPattern(std::string_view text, std::string_view pattern, char32_t escape) {
  std::u32string characters = Folded(text);
  const std::u32string steps = Folded(pattern);
  if (Matches(characters, steps, Fold(escape))) return true;
  // Blanks at the end of the text need not be in the pattern.
  if (characters.empty() || characters.back() != ' ') return false;
  while (!characters.empty() && characters.back() == ' ') characters.pop_back();
  return Matches(characters, steps, Fold(escape));
}

int CodePageLength(std::string_view text) { return Measure(text, TextUnit::kCodePageByte); }

int Utf16Length(std::string_view text) { return Measure(text, TextUnit::kUtf16Unit); }

std::u32string DecodeUtf8(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    characters += Next(text, position);
  }
  return characters;
}

void AppendUtf8(char32_t character, std::string& out) {
  if (character < 0x80) {
    out.push_back(static_cast<char>(character));
    return;
  }
  const int tail = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  constexpr unsigned char kLead[] = {0, 0xC0, 0xE0, 0xF0};
  out.push_back(static_cast<char>(kLead[tail] | character >> (6 * tail)));
  for (int i = tail - 1; i >= 0; --i) {
    out.push_back(static_cast<char>(0x80 | (character >> (6 * i) & 0x3F)));
  }
}

std::string EncodeUtf8(std::u32string_view characters) {
  std::string text;
  for (const char32_t c : characters) {
    if (c < 0x110000) {
      AppendUtf8(c, text);
    } else {
      text += static_cast<char>(c - 0x110000);  // a broken byte goes back as it came
    }
  }
  return text;
}

std::string_view CutText(std::string_view text, int length, TextUnit unit) {
  // No character has fewer bytes here than units there.
  if (text.size() <= static_cast<std::size_t>(length < 0 ? 0 : length)) return text;
  int used = 0;
  std::size_t position = 0;
  while (position < text.size()) {
    std::size_t next = position;
    used += UnitsOf(Next(text, next), unit);
    if (used > length) break;
    position = next;
  }
  return text.substr(0, position);
}

std::string_view TrimRight(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::string_view Trim(std::string_view text) {
  text = TrimRight(text);
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return text;
}

}  // namespace dbkeeper::server
