// Exact numbers of up to 38 digits.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "server/types/sql_type.h"

namespace dbkeeper::server {

__extension__ using Int128 = __int128;

// value / 10^scale, with at most 38 digits.
struct Decimal {
  Int128 value = 0;
  int scale = 0;
};

// "-12.50", without blanks; none for anything else and for more than 38 digits.
std::optional<Decimal> ParseDecimal(std::string_view text);
// In the storage form of sql_type.h.
std::string FormatDecimal(const Decimal& number);

// Digits that the number needs, those behind the point included.
int PrecisionOf(const Decimal& number);
bool FitsPrecision(const Decimal& number, int precision);
bool FitsInteger(const Decimal& number, TypeId type);
// Whether a column of the type, an integer or a decimal, can hold the number.
bool FitsType(const Decimal& number, const SqlType& type);
// Whether a signed number of so many bits can be `value`.
bool FitsBits(Int128 value, int bits);

// With another scale, halves away from zero; none beyond 38 digits.
std::optional<Decimal> Rescale(const Decimal& number, int scale);
// Without decimals, cut towards zero.
Int128 Truncate(const Decimal& number);

// The result has the scale asked for: sums and products are rounded, quotients cut. None beyond 38
// digits; the divisor is not zero.
std::optional<Decimal> Add(const Decimal& left, const Decimal& right, int scale);
std::optional<Decimal> Multiply(const Decimal& left, const Decimal& right, int scale);
std::optional<Decimal> Divide(const Decimal& left, const Decimal& right, int scale);
std::optional<Decimal> Remainder(const Decimal& left, const Decimal& right, int scale);

double ToDouble(const Decimal& number);
// Rounded to `scale`; none beyond 38 digits and for what is no number.
std::optional<Decimal> FromDouble(double number, int scale);

// The order of the collation MSDECIMAL: two texts in storage form, of any scales, as numbers.
int CompareDecimalText(std::string_view left, std::string_view right);

}  // namespace dbkeeper::server
