#include "server/types/guid.h"

#include <array>
#include <cstddef>

#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

// The byte of each pair of digits: the first three groups stand with their lowest byte first.
constexpr std::array<std::size_t, 16> kOrder = {3, 2, 1,  0,  5,  4,  7,  6,
                                                8, 9, 10, 11, 12, 13, 14, 15};
constexpr std::size_t kTextLength = 36;

bool IsDashPlace(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

}  // namespace

std::optional<std::string> ParseGuid(std::string_view text) {
  if (text.size() == kTextLength + 2 && text.front() == '{' && text.back() == '}') {
    text = text.substr(1, kTextLength);
  }
  if (text.size() < kTextLength) return std::nullopt;
  std::string bytes(16, '\0');
  std::size_t pair = 0;
  for (std::size_t i = 0; i < kTextLength; ++i) {
    if (IsDashPlace(i)) {
      if (text[i] != '-') return std::nullopt;
      continue;
    }
    const int high = HexValue(text[i]);
    const int low = HexValue(text[++i]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes[kOrder[pair++]] = static_cast<char>(high * 16 + low);
  }
  return bytes;
}

std::string FormatGuid(std::string_view bytes) {
  std::string text;
  for (const std::size_t place : kOrder) {
    if (IsDashPlace(text.size())) text += '-';
    text += place < bytes.size() ? HexDigits(bytes.substr(place, 1)) : "00";
  }
  return text;
}

}  // namespace dbkeeper::server
