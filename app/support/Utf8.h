// Characters of a UTF-8 text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dbkeeper {

// The length in bytes of the character that begins at `at`; a stray byte counts as one character.
std::size_t Utf8Length(std::string_view text, std::size_t at);

// The number of characters.
std::size_t Utf8Count(std::string_view text);

// The last `count` characters, or all.
std::string_view Utf8Right(std::string_view text, std::size_t count);

// The code point of one character's bytes.
char32_t Utf8Decode(std::string_view character);

// Adds the bytes of one character.
void Utf8Append(std::string& text, char32_t code);

// The text with Latin letters, half-width and full-width, in lower case.
std::string FoldCase(std::string_view text);

}  // namespace dbkeeper
