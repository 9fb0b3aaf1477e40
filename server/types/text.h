// Texts as the server counts and compares them. All are UTF-8; broken bytes count as characters of
// their own.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace dbkeeper::server {

// The order of the collation MSTEXT: characters as collation.h folds them, trailing blanks do not
// count. Below, at or above zero.
int CompareText(std::string_view left, std::string_view right);

// Whether two names mean the same; they compare as texts do.
bool SameName(std::string_view left, std::string_view right);

// The small letter of a capital of ASCII, Latin-1, the full-width Latin letters, Greek, Cyrillic or
// the Roman numerals; any other character as it is.
char32_t Lowered(char32_t c);
// The other way round.
char32_t Raised(char32_t c);

// ASCII letters alone.
std::string ToUpperAscii(std::string_view text);
std::string ToLowerAscii(std::string_view text);

// Whether the list, words in capitals with blanks between them, has the word, in any case.
bool HasWord(std::string_view list, std::string_view word);

// The parts with the separator between them; none before the first that is not empty.
std::string Joined(std::span<const std::string> parts, std::string_view separator);

// Puts an item behind those of a list with commas.
void AppendItem(std::string& list, std::string_view item);

// As SQLite writes a name, a text and bytes: "a""b", 'it''s', X'00FF'.
std::string QuoteName(std::string_view name);
std::string QuoteText(std::string_view text);
std::string QuoteBytes(std::string_view bytes);

// "00FF", and the value of one such digit; -1 for what is none.
std::string HexDigits(std::string_view bytes);
int HexValue(char digit);

// `text` like `pattern`, with %, _, [a-z], [^a]; `escape` 0: none.
// Blanks at the end of the text need not be in the pattern, unless they count.
enum class EndBlanks { kIgnored, kCount };
bool MatchesPattern(std::string_view text, std::string_view pattern, char32_t escape,
                    EndBlanks blanks = EndBlanks::kIgnored);

// Bytes of the text in the server's code page (932): one for ASCII and half-width kana, else two.
int CodePageLength(std::string_view text);
// Units of two bytes that the text has as a national text.
int Utf16Length(std::string_view text);

// Takes the character at `position` and moves behind it. A byte that begins none stands alone, as
// far behind kBroken, so that broken texts still compare and come back as they were.
constexpr char32_t kBroken = 0x110000;
// What stands for characters that there are not where nothing broken may pass.
constexpr char32_t kReplacement = 0xFFFD;
char32_t NextCharacter(std::string_view text, std::size_t& position);

// The characters of a text, and back.
std::u32string DecodeUtf8(std::string_view text);
std::string EncodeUtf8(std::u32string_view characters);
void AppendUtf8(char32_t character, std::string& out);
// As one unit of two bytes, or as a pair.
inline void AppendUtf16(char32_t character, std::string& out) {
  const auto append = [&out](char32_t unit) {
    const char bytes[] = {static_cast<char>(unit), static_cast<char>(unit >> 8)};
    out.append(bytes, sizeof bytes);
  };
  if (character < 0x10000) return append(character);
  append(0xD800 + ((character - 0x10000) >> 10));
  append(0xDC00 + ((character - 0x10000) & 0x3FF));
}

// From little-endian UTF-16; a broken pair becomes U+FFFD.
std::string Utf16ToUtf8(std::string_view utf16);

// The longest beginning of `text` that measures at most `length`: bytes of the code page, or units
// of a national text.
enum class TextUnit { kCodePageByte, kUtf16Unit };
std::string_view CutText(std::string_view text, int length, TextUnit unit);

std::string_view TrimRight(std::string_view text);
std::string_view Trim(std::string_view text);

// A unique identifier of 16 bytes in the order of the wire from
// "6F9619FF-8B86-D011-B42D-00C04FC964FF", with or without braces, and back; none for anything else.
std::optional<std::string> ParseGuid(std::string_view text);
std::string FormatGuid(std::string_view bytes);

}  // namespace dbkeeper::server
