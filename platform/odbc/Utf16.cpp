#include "platform/odbc/Utf16.h"

#include <cstddef>
#include <cstdint>

#include "app/support/Errors.h"

namespace dbkeeper {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// Decodes the character at `position` and moves behind it.
char32_t TakeCharacter(std::string_view text, std::size_t& position) {
  const auto lead = static_cast<std::uint8_t>(text[position++]);
  if (lead < 0x80) return lead;
  const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  char32_t character = lead & (0x3F >> following);
  bool valid = lead >= 0xC0 && lead < 0xF8;
  for (int i = 0; valid && i < following; ++i) {
    valid = position < text.size() && (static_cast<std::uint8_t>(text[position]) & 0xC0) == 0x80;
    if (valid) character = character << 6 | (static_cast<std::uint8_t>(text[position++]) & 0x3F);
  }
  valid = valid && character >= kSmallest[following] && character <= 0x10FFFF &&
          !IsHighSurrogate(character) && !IsLowSurrogate(character);
  if (!valid) throw ConvertError("The text is not valid UTF-8.");
  return character;
}

void AppendUtf8(char32_t character, std::string& text) {
  if (character < 0x80) {
    text += static_cast<char>(character);
    return;
  }
  const int following = character >= 0x10000 ? 3 : character >= 0x800 ? 2 : 1;
  constexpr char32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kLead[following] | character >> (6 * following));
  for (int i = following - 1; i >= 0; --i) {
    text += static_cast<char>(0x80 | (character >> (6 * i) & 0x3F));
  }
}

}  // namespace

std::u16string Utf8ToUtf16(std::string_view text) {
  std::u16string wide;
  wide.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const char32_t character = TakeCharacter(text, position);
    if (character < 0x10000) {
      wide += static_cast<char16_t>(character);
    } else {
      wide += static_cast<char16_t>(0xD7C0 + (character >> 10));
      wide += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
  }
  return wide;
}

std::string Utf16ToUtf8(std::u16string_view text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if (IsHighSurrogate(character) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00);
    } else if (IsHighSurrogate(character) || IsLowSurrogate(character)) {
      character = kReplacement;
    }
    AppendUtf8(character, narrow);
  }
  return narrow;
}

}  // namespace dbkeeper
