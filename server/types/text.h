// Texts as the server counts and compares them. All are UTF-8; broken bytes count as characters of
// their own.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace dbkeeper::server {

// The order of the collation MSTEXT: Latin letters without case, trailing blanks do not count.
// Below, at or above zero.
int CompareText(std::string_view left, std::string_view right);

// Whether two names mean the same; they compare as texts do.
bool SameName(std::string_view left, std::string_view right);

// ASCII letters alone.
std::string ToUpperAscii(std::string_view text);
std::string ToLowerAscii(std::string_view text);

// The parts with the separator between them; none before the first that is not empty.
std::string Joined(std::span<const std::string> parts, std::string_view separator);

// As SQLite writes a name, a text and bytes: "a""b", 'it''s', X'00FF'.
std::string QuoteName(std::string_view name);
std::string QuoteText(std::string_view text);
std::string QuoteBytes(std::string_view bytes);

// "00FF", and the value of one such digit; -1 for what is none.
std::string HexDigits(std::string_view bytes);
int HexValue(char digit);

// `text` like `pattern`, with %, _, [a-z], [^a]; `escape` 0: none.
bool MatchesPattern(std::string_view text, std::string_view pattern, char32_t escape);

// Bytes of the text in the server's code page (932): one for ASCII and half-width kana, else two.
int CodePageLength(std::string_view text);
// Units of two bytes that the text has as a national text.
int Utf16Length(std::string_view text);

// The characters of a text, and back.
std::u32string DecodeUtf8(std::string_view text);
std::string EncodeUtf8(std::u32string_view characters);
void AppendUtf8(char32_t character, std::string& out);

// The longest beginning of `text` that measures at most `length`: bytes of the code page, or units
// of a national text.
enum class TextUnit { kCodePageByte, kUtf16Unit };
std::string_view CutText(std::string_view text, int length, TextUnit unit);

std::string_view TrimRight(std::string_view text);
std::string_view Trim(std::string_view text);

}  // namespace dbkeeper::server
