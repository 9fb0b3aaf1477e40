// Decimal numbers between their text and the 16 bytes that the wire has.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace dbkeeper::server {

// The digits of a number without sign and point, as four words, the lowest first.
struct DecimalWords {
  std::array<std::uint32_t, 4> words{};
  bool negative = false;
};

// Reads "-123.45" as so many units of the last of `scale` decimals. Decimals that miss are zeros,
// surplus ones are left out.
DecimalWords ParseDecimal(std::string_view text, int scale);

// The text with exactly `scale` decimals.
std::string FormatDecimal(const DecimalWords& number, int scale);

}  // namespace dbkeeper::server
