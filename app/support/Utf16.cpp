#include "app/support/Utf16.h"

#include <cstddef>

#include "app/support/Errors.h"
#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// Decodes the character at `position` and moves behind it.
char32_t TakeCharacter(std::string_view text, std::size_t& position) {
  const std::string_view bytes = text.substr(position, Utf8Length(text, position));
  const char32_t character = Utf8Decode(bytes);
  // The smallest character that is written in so many bytes.
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool stray = bytes.size() == 1 && character >= 0x80;
  const bool valid = !stray && character >= kSmallest[bytes.size()] && character <= 0x10FFFF &&
                     !IsHighSurrogate(character) && !IsLowSurrogate(character);
  if (!valid) throw ConvertError("The text is not valid UTF-8.");
  position += bytes.size();
  return character;
}

// The character at `position`, which moves behind it; an unpaired surrogate is given as it is.
char32_t TakeCharacter(std::u16string_view text, std::size_t& position) {
  const char32_t unit = text[position++];
  if (!IsHighSurrogate(unit) || position >= text.size()) return unit;
  if (!IsLowSurrogate(text[position])) return unit;
  return 0x10000 + ((unit - 0xD800) << 10) + (text[position++] - 0xDC00);
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
  for (std::size_t position = 0; position < text.size();) {
    const char32_t character = TakeCharacter(text, position);
    const bool half = IsHighSurrogate(character) || IsLowSurrogate(character);
    Utf8Append(narrow, half ? kReplacement : character);
  }
  return narrow;
}

bool HasHalfCharacter(std::u16string_view text) {
  for (std::size_t position = 0; position < text.size();) {
    const char32_t character = TakeCharacter(text, position);
    if (IsHighSurrogate(character) || IsLowSurrogate(character)) return true;
  }
  return false;
}

}  // namespace dbkeeper
