#include "server/types/text.h"

#include <algorithm>
#include <bit>

namespace dbkeeper::server {
namespace {

std::string Quoted(std::string_view text, char mark) {
  std::string quoted(1, mark);
  for (const char c : text) {
    quoted += c;
    if (c == mark) quoted += c;
  }
  return quoted += mark;
}

// With the 26 letters from `first` on moved to those from `to` on.
std::string Moved(std::string_view text, char first, char to) {
  std::string moved(text);
  for (char& c : moved) {
    if (c >= first && c < first + 26) c = static_cast<char>(c - first + to);
  }
  return moved;
}

int UnitsOf(char32_t c, TextUnit unit) {
  if (unit == TextUnit::kUtf16Unit) return c >= 0x10000 && c < 0x110000 ? 2 : 1;
  return c < 0x80 || (c >= 0xFF61 && c <= 0xFF9F) ? 1 : 2;
}

int Measure(std::string_view text, TextUnit unit) {
  int length = 0;
  for (std::size_t position = 0; position < text.size();) {
    length += UnitsOf(NextCharacter(text, position), unit);
  }
  return length;
}

// The byte of each pair of a guid's digits: the first three groups stand with their lowest byte
// first.
constexpr std::size_t kGuidOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr std::size_t kGuidText = 36;

bool IsDashPlace(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

}  // namespace

std::string ToUpperAscii(std::string_view text) { return Moved(text, 'a', 'A'); }

std::string ToLowerAscii(std::string_view text) { return Moved(text, 'A', 'a'); }

bool HasWord(std::string_view list, std::string_view word) {
  if (word.empty() || word.find(' ') != std::string_view::npos) return false;
  const std::string upper = ToUpperAscii(word);
  for (std::size_t at = list.find(upper); at < list.size(); at = list.find(upper, at + 1)) {
    const std::size_t end = at + upper.size();
    const bool begins = at == 0 || list[at - 1] == ' ';
    if (begins && (end == list.size() || list[end] == ' ')) return true;
  }
  return false;
}

std::string Joined(std::span<const std::string> parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += separator;
    text += part;
  }
  return text;
}

void AppendItem(std::string& list, std::string_view item) {
  if (!list.empty()) list += ", ";
  list += item;
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

int CodePageLength(std::string_view text) { return Measure(text, TextUnit::kCodePageByte); }

int Utf16Length(std::string_view text) { return Measure(text, TextUnit::kUtf16Unit); }

char32_t NextCharacter(std::string_view text, std::size_t& position) {
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(text[position++]);
  if (lead < 0x80) return lead;
  const auto length = static_cast<std::size_t>(std::countl_one(lead));
  const std::string_view tail = text.substr(position, length - 1);
  if (length < 2 || length > 4 || tail.size() < length - 1) return kBroken + lead;
  char32_t character = lead & (0x7FU >> length);
  for (const char c : tail) {
    if ((c & 0xC0) != 0x80) return kBroken + lead;
    character = character << 6 | (c & 0x3FU);
  }
  if (character < kLeast[length] || character >= kBroken) return kBroken + lead;
  position += tail.size();
  return character;
}

std::u32string DecodeUtf8(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    characters += NextCharacter(text, position);
  }
  return characters;
}

void AppendUtf8(char32_t character, std::string& out) {
  if (character < 0x80 || character >= kBroken) {
    out.push_back(static_cast<char>(character - (character < 0x80 ? 0 : kBroken)));
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
  for (const char32_t c : characters) AppendUtf8(c, text);
  return text;
}

std::string Utf16ToUtf8(std::string_view utf16) {
  const auto unit = [utf16](std::size_t i) -> char32_t {
    return static_cast<unsigned char>(utf16[i]) | static_cast<unsigned char>(utf16[i + 1]) << 8;
  };
  std::string out;
  out.reserve(utf16.size() / 2);
  for (std::size_t i = 0; i + 1 < utf16.size(); i += 2) {
    char32_t character = unit(i);
    const bool pair = character >= 0xD800 && character < 0xDC00 && i + 3 < utf16.size() &&
                      unit(i + 2) >= 0xDC00 && unit(i + 2) < 0xE000;
    if (pair) {
      character = 0x10000 + ((character - 0xD800) << 10) + (unit(i + 2) - 0xDC00);
      i += 2;
    } else if (character >= 0xD800 && character < 0xE000) {
      character = kReplacement;
    }
    AppendUtf8(character, out);
  }
  return out;
}

std::string_view CutText(std::string_view text, int length, TextUnit unit) {
  // No character has fewer bytes here than units there.
  if (text.size() <= static_cast<std::size_t>(length < 0 ? 0 : length)) return text;
  int used = 0;
  std::size_t position = 0;
  while (position < text.size()) {
    std::size_t next = position;
    used += UnitsOf(NextCharacter(text, next), unit);
    if (used > length) break;
    position = next;
  }
  return text.substr(0, position);
}

std::string_view TrimRight(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string_view Trim(std::string_view text) {
  text = TrimRight(text);
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::optional<std::string> ParseGuid(std::string_view text) {
  if (text.size() == kGuidText + 2 && text.front() == '{' && text.back() == '}') {
    text = text.substr(1, kGuidText);
  }
  if (text.size() < kGuidText) return std::nullopt;
  std::string bytes(16, '\0');
  std::size_t pair = 0;
  for (std::size_t i = 0; i < kGuidText; ++i) {
    if (IsDashPlace(i)) {
      if (text[i] != '-') return std::nullopt;
      continue;
    }
    const int high = HexValue(text[i]);
    const int low = HexValue(text[++i]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes[kGuidOrder[pair++]] = static_cast<char>(high * 16 + low);
  }
  return bytes;
}

std::string FormatGuid(std::string_view bytes) {
  std::string text;
  for (const std::size_t place : kGuidOrder) {
    if (IsDashPlace(text.size())) text += '-';
    text += place < bytes.size() ? HexDigits(bytes.substr(place, 1)) : "00";
  }
  return text;
}

}  // namespace dbkeeper::server
