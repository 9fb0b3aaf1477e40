#include "server/wire/decimal.h"

#include <algorithm>

namespace dbkeeper::server {
namespace {

constexpr std::uint32_t kChunk = 1'000'000'000;  // nine digits
constexpr int kChunkDigits = 9;

void MultiplyAdd(DecimalWords& number, std::uint32_t factor, std::uint32_t add) {
  std::uint64_t carry = add;
  for (std::uint32_t& word : number.words) {
    carry += std::uint64_t{word} * factor;
    word = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
}

// Divides by a thousand million and gives the remainder.
std::uint32_t DivideByChunk(DecimalWords& number) {
  std::uint64_t rest = 0;
  for (auto word = number.words.rbegin(); word != number.words.rend(); ++word) {
    rest = rest << 32 | *word;
    *word = static_cast<std::uint32_t>(rest / kChunk);
    rest %= kChunk;
  }
  return static_cast<std::uint32_t>(rest);
}

}  // namespace

DecimalWords ParseDecimal(std::string_view text, int scale) {
  DecimalWords number;
  // Digits are gathered nine at a time: one long multiplication for nine of them.
  std::uint32_t chunk = 0;
  std::uint32_t factor = 1;
  const auto add_digit = [&](char digit) {
    chunk = chunk * 10 + static_cast<std::uint32_t>(digit - '0');
    factor *= 10;
    if (factor == kChunk) {
      MultiplyAdd(number, factor, chunk);
      chunk = 0;
      factor = 1;
    }
  };
  int decimals = -1;  // not behind the point yet
  for (const char c : text) {
    if (c == '-') {
      number.negative = true;
    } else if (c == '.') {
      decimals = 0;
    } else if (c >= '0' && c <= '9' && decimals < scale) {
      add_digit(c);
      if (decimals >= 0) ++decimals;
    }
  }
  for (decimals = std::max(decimals, 0); decimals < scale; ++decimals) add_digit('0');
  MultiplyAdd(number, factor, chunk);
  return number;
}

std::string FormatDecimal(const DecimalWords& number, int scale) {
  DecimalWords rest = number;
  std::string reversed;
  while (std::any_of(rest.words.begin(), rest.words.end(), [](auto word) { return word != 0; })) {
    std::uint32_t chunk = DivideByChunk(rest);
    for (int i = 0; i < kChunkDigits; ++i) {
      reversed.push_back(static_cast<char>('0' + chunk % 10));
      chunk /= 10;
    }
  }
  const auto least = static_cast<std::size_t>(scale) + 1;
  while (reversed.size() > least && reversed.back() == '0') reversed.pop_back();
  reversed.resize(std::max(reversed.size(), least), '0');
  std::string text(reversed.rbegin(), reversed.rend());
  if (scale > 0) text.insert(text.size() - static_cast<std::size_t>(scale), 1, '.');
  const bool zero = text.find_first_of("123456789") == std::string::npos;
  return number.negative && !zero ? "-" + text : text;
}

}  // namespace dbkeeper::server
