#include "server/types/decimal.h"

#include <algorithm>
#include <array>
#include <boost/multiprecision/cpp_int.hpp>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace dbkeeper::server {
namespace {

namespace mp = boost::multiprecision;

__extension__ using UInt128 = unsigned __int128;
// For what stands between two numbers of 38 digits and their product or quotient.
using Wide = mp::number<mp::cpp_int_backend<384, 384, mp::signed_magnitude, mp::unchecked, void>,
                        mp::et_off>;

constexpr int kMaximumDigits = 38;

Int128 PowerOfTen(int exponent) {
  Int128 power = 1;
  for (int i = 0; i < exponent; ++i) power *= 10;
  return power;
}

// 1 for an exponent below zero.
Wide WidePowerOfTen(int exponent) {
  return mp::pow(Wide(10), static_cast<unsigned>(std::max(exponent, 0)));
}

UInt128 Magnitude(Int128 value) {
  return value < 0 ? -static_cast<UInt128>(value) : static_cast<UInt128>(value);
}

enum class Rounding { kHalfUp, kCut };

// numerator / divisor; the divisor is above zero for kHalfUp.
std::optional<Decimal> Quotient(const Wide& numerator, const Wide& divisor, int scale,
                                Rounding rounding) {
  Wide quotient;
  Wide remainder;
  mp::divide_qr(numerator, divisor, quotient, remainder);
  if (rounding == Rounding::kHalfUp && 2 * mp::abs(remainder) >= divisor) {
    quotient += numerator.sign();
  }
  if (mp::abs(quotient) >= Wide(PowerOfTen(kMaximumDigits))) return std::nullopt;
  return Decimal{static_cast<Int128>(quotient), scale};
}

// The number `value` / 10^`from` with another scale.
std::optional<Decimal> Scaled(const Wide& value, int from, int to) {
  return Quotient(value * WidePowerOfTen(to - from), WidePowerOfTen(from - to), to,
                  Rounding::kHalfUp);
}

std::string_view WithoutSign(std::string_view text, bool& negative) {
  negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  if (text.find_first_not_of("0.") == std::string_view::npos) negative = false;
  return text;
}

int CompareMagnitudes(std::string_view left, std::string_view right) {
  const std::size_t left_point = std::min(left.find('.'), left.size());
  const std::size_t right_point = std::min(right.find('.'), right.size());
  if (left_point != right_point) return left_point < right_point ? -1 : 1;
  const std::size_t length = std::max(left.size(), right.size());
  for (std::size_t i = 0; i < length; ++i) {
    const char left_digit = i < left.size() ? left[i] : '0';
    const char right_digit = i < right.size() ? right[i] : '0';
    // One of them may end at its point.
    if (left_digit == right_digit || i == left_point) continue;
    return left_digit < right_digit ? -1 : 1;
  }
  return 0;
}

}  // namespace

std::optional<Decimal> ParseDecimal(std::string_view text) {
  Decimal number;
  bool negative = false;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  bool point = false;
  int digits = 0;
  bool any = false;
  for (const char c : text) {
    if (c == '.' && !point) {
      point = true;
      continue;
    }
    if (c < '0' || c > '9') return std::nullopt;
    any = true;
    if (number.value != 0 || c != '0') ++digits;
    if (point) ++number.scale;
    if (digits > kMaximumDigits || number.scale > kMaximumDigits) return std::nullopt;
    number.value = number.value * 10 + (c - '0');
  }
  if (!any) return std::nullopt;
  if (negative) number.value = -number.value;
  return number;
}

std::string FormatDecimal(const Decimal& number) {
  UInt128 rest = Magnitude(number.value);
  std::string digits;
  do {
    digits += static_cast<char>('0' + static_cast<int>(rest % 10));
    rest /= 10;
  } while (rest != 0);
  while (digits.size() <= static_cast<std::size_t>(number.scale)) digits += '0';
  if (number.scale > 0) digits.insert(static_cast<std::size_t>(number.scale), 1, '.');
  if (number.value < 0) digits += '-';
  std::reverse(digits.begin(), digits.end());
  return digits;
}

int PrecisionOf(const Decimal& number) {
  int digits = 0;
  for (UInt128 rest = Magnitude(number.value); rest != 0; rest /= 10) ++digits;
  return std::max({digits, number.scale, 1});
}

bool FitsPrecision(const Decimal& number, int precision) {
  return Magnitude(number.value) < static_cast<UInt128>(PowerOfTen(std::min(precision, 38)));
}

bool FitsInteger(const Decimal& number, TypeId type) {
  const Int128 value = Truncate(number);
  if (type == TypeId::kTinyInt) return value >= 0 && value <= 255;
  return FitsBits(value, type == TypeId::kSmallInt ? 16 : type == TypeId::kInt ? 32 : 64);
}

bool FitsType(const Decimal& number, const SqlType& type) {
  const bool decimal = type.id == TypeId::kDecimal || type.id == TypeId::kNumeric;
  return decimal ? FitsPrecision(number, type.precision) : FitsInteger(number, type.id);
}

bool FitsBits(Int128 value, int bits) {
  const Int128 sign = value >> (bits - 1);
  return sign == 0 || sign == -1;
}

std::optional<Decimal> Rescale(const Decimal& number, int scale) {
  if (scale == number.scale) return number;
  return Scaled(number.value, number.scale, scale);
}

Int128 Truncate(const Decimal& number) { return number.value / PowerOfTen(number.scale); }

std::optional<Decimal> Add(const Decimal& left, const Decimal& right, int scale) {
  // Numbers of 38 digits at scales far apart are brought together at the scale of the result.
  const int common = std::max(left.scale, right.scale);
  std::optional<Decimal> left_scaled = Rescale(left, common);
  std::optional<Decimal> right_scaled = Rescale(right, common);
  if (!left_scaled || !right_scaled) {
    left_scaled = Rescale(left, scale);
    right_scaled = Rescale(right, scale);
  }
  if (!left_scaled || !right_scaled) return std::nullopt;
  Decimal sum{0, left_scaled->scale};
  if (__builtin_add_overflow(left_scaled->value, right_scaled->value, &sum.value)) {
    return std::nullopt;
  }
  const std::optional<Decimal> result = Rescale(sum, scale);
  if (!result || !FitsPrecision(*result, kMaximumDigits)) return std::nullopt;
  return result;
}

std::optional<Decimal> Multiply(const Decimal& left, const Decimal& right, int scale) {
  return Scaled(Wide(left.value) * right.value, left.scale + right.scale, scale);
}

std::optional<Decimal> Divide(const Decimal& left, const Decimal& right, int scale) {
  const int exponent = scale - left.scale + right.scale;
  return Quotient(left.value * WidePowerOfTen(exponent), right.value * WidePowerOfTen(-exponent),
                  scale, Rounding::kCut);
}

std::optional<Decimal> Remainder(const Decimal& left, const Decimal& right, int scale) {
  const int common = std::max(left.scale, right.scale);
  const std::optional<Decimal> left_scaled = Rescale(left, common);
  const std::optional<Decimal> right_scaled = Rescale(right, common);
  if (!left_scaled || !right_scaled) return std::nullopt;
  return Rescale(Decimal{left_scaled->value % right_scaled->value, common}, scale);
}

double ToDouble(const Decimal& number) {
  return std::strtod(FormatDecimal(number).c_str(), nullptr);
}

std::optional<Decimal> FromDouble(double number, int scale) {
  if (!std::isfinite(number) || std::fabs(number) >= 1e38) return std::nullopt;
  // The shortest digits that mean this double; the rest of its expansion would be noise.
  std::array<char, 32> digits{};
  const auto end =
      std::to_chars(digits.begin(), digits.end(), number, std::chars_format::scientific);
  const std::string_view text(digits.data(), end.ptr);
  const std::size_t exponent_at = text.find('e');
  const std::optional<Decimal> mantissa = ParseDecimal(text.substr(0, exponent_at));
  if (!mantissa) return std::nullopt;
  const int own_scale = mantissa->scale - std::atoi(digits.data() + exponent_at + 1);
  if (own_scale > 60) return Decimal{0, scale};
  return Scaled(mantissa->value, own_scale, scale);
}

int CompareDecimalText(std::string_view left, std::string_view right) {
  bool left_negative = false;
  bool right_negative = false;
  left = WithoutSign(left, left_negative);
  right = WithoutSign(right, right_negative);
  if (left_negative != right_negative) return left_negative ? -1 : 1;
  const int order = CompareMagnitudes(left, right);
  return left_negative ? -order : order;
}

}  // namespace dbkeeper::server
