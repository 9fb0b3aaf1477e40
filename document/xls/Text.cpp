#include "document/xls/Text.h"

#include <algorithm>
#include <cstdint>

#include "app/support/Utf8.h"

namespace dbkeeper::xls {

namespace {

constexpr char32_t kUnknown = 0xFFFD;

// What stands for a character that a cell cannot show.
char32_t Shown(char32_t code) {
  constexpr char32_t kControlPictures = 0x2400;
  if (code < 0x20 && code != '\n' && code != '\t') return kControlPictures + code;
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return surrogate || code > 0x10FFFF || (code & 0xFFFE) == 0xFFFE ? kUnknown : code;
}

void Append(std::u16string& units, char32_t code) {
  if (code < 0x10000) {
    units += static_cast<char16_t>(code);
  } else {
    units += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
    units += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
  }
}

// Leaves room for the mark and never half a pair.
void Cut(std::u16string& units, std::size_t limit) {
  units.resize(limit - 1);
  if (!units.empty() && (units.back() & 0xFC00) == 0xD800) units.pop_back();
  units += kCutMark;
}

}  // namespace

std::u16string ToUnits(std::string_view utf8, std::size_t limit) {
  std::u16string units;
  units.reserve(std::min(utf8.size(), limit + 2));
  for (std::size_t at = 0; at < utf8.size() && units.size() <= limit;) {
    const std::size_t length = Utf8Length(utf8, at);
    const std::string_view character = utf8.substr(at, length);
    at += length;
    if (length == 1) {
      const auto byte = static_cast<unsigned char>(character[0]);
      if (byte == '\r') {
        if (at == utf8.size() || utf8[at] != '\n') units += u'\n';
      } else {
        Append(units, byte < 0x80 ? Shown(byte) : kUnknown);
      }
    } else {
      Append(units, Shown(Utf8Decode(character)));
    }
  }
  if (units.size() > limit) Cut(units, limit);
  return units;
}

std::string ToUtf8(std::u16string_view units) {
  std::string text;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t code = units[i];
    if ((code & 0xFC00) == 0xD800 && i + 1 < units.size()) {
      code = 0x10000 + ((code & 0x3FF) << 10) + (units[++i] & 0x3FF);
    }
    Utf8Append(text, code);
  }
  return text;
}

bool IsNarrow(std::u16string_view units) {
  return std::all_of(units.begin(), units.end(), [](char16_t unit) { return unit < 0x100; });
}

void AddUnits(Bytes& out, std::u16string_view units, bool narrow) {
  for (const char16_t unit : units) {
    if (narrow) {
      out.U8(static_cast<std::uint8_t>(unit));
    } else {
      out.U16(unit);
    }
  }
}

void AddShortText(Bytes& out, std::u16string_view units) {
  const bool narrow = IsNarrow(units);
  out.U8(static_cast<std::uint8_t>(units.size()));
  out.U8(narrow ? 0 : 1);
  AddUnits(out, units, narrow);
}

void AddText(Bytes& out, std::u16string_view units) {
  const bool narrow = IsNarrow(units);
  out.U16(static_cast<std::uint16_t>(units.size()));
  out.U8(narrow ? 0 : 1);
  AddUnits(out, units, narrow);
}

}  // namespace dbkeeper::xls
