#include "app/support/Hexadecimal.h"

#include <cstddef>

namespace dbkeeper {

bool IsHexadecimalDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

void AppendHexadecimal(std::string_view bytes, std::string& text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::size_t at = text.size();
  text.resize(at + 2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text[at++] = kDigits[byte >> 4];
    text[at++] = kDigits[byte & 15];
  }
}

std::string ToHexadecimal(std::string_view bytes) {
  std::string text;
  AppendHexadecimal(bytes, text);
  return text;
}

std::string FromHexadecimal(std::string_view digits) {
  const auto value = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
  std::string bytes;
  bytes.reserve(digits.size() / 2);
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(value(digits[i]) * 16 + value(digits[i + 1]));
  }
  return bytes;
}

}  // namespace dbkeeper
