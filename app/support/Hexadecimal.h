// Bytes as pairs of hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

namespace dbkeeper {

// Of either case.
bool IsHexadecimalDigit(char c);

// Appends two upper-case digits for each byte.
void AppendHexadecimal(std::string_view bytes, std::string& text);
std::string ToHexadecimal(std::string_view bytes);

// The bytes of pairs of digits; a single digit at the end is left out.
std::string FromHexadecimal(std::string_view digits);

}  // namespace dbkeeper
