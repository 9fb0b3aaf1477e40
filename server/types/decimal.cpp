#include "server/types/decimal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace dbkeeper::server {
namespace {

__extension__ using UInt128 = unsigned __int128;

constexpr int kMaximumDigits = 38;

Int128 PowerOfTen(int exponent) {
  Int128 power = 1;
  for (int i = 0; i < exponent; ++i) power *= 10;
  return power;
}

UInt128 Magnitude(Int128 value) {
  return value < 0 ? -static_cast<UInt128>(value) : static_cast<UInt128>(value);
}

// An unsigned number of 384 bits, for what stands between two numbers of 38 digits and their
// product or quotient.
class Wide {
 public:
  explicit Wide(UInt128 value) {
    for (std::size_t i = 0; i < 4; ++i) limbs_[i] = static_cast<std::uint32_t>(value >> (32 * i));
  }

  void Multiply(std::uint32_t factor) {
    std::uint64_t carry = 0;
    for (std::uint32_t& limb : limbs_) {
      carry += static_cast<std::uint64_t>(limb) * factor;
      limb = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }

  void Multiply(const Wide& factor) {
    std::array<std::uint32_t, kLimbs> product{};
    for (std::size_t i = 0; i < kLimbs; ++i) {
      std::uint64_t carry = 0;
      for (std::size_t j = 0; i + j < kLimbs; ++j) {
        carry += product[i + j] + static_cast<std::uint64_t>(limbs_[i]) * factor.limbs_[j];
        product[i + j] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
      }
    }
    limbs_ = product;
  }

  void Scale(int exponent) {
    for (int i = 0; i < exponent; ++i) Multiply(10U);
  }

  // Divides by `divisor` and leaves the remainder in `remainder`; long division, bit by bit.
  void Divide(const Wide& divisor, Wide& remainder) {
    Wide quotient(0);
    remainder = Wide(0);
    for (std::size_t bit = kLimbs * 32; bit-- > 0;) {
      remainder.ShiftIn((limbs_[bit / 32] >> (bit % 32) & 1U) != 0);
      if (remainder.IsBelow(divisor)) continue;
      remainder.Subtract(divisor);
      quotient.limbs_[bit / 32] |= 1U << (bit % 32);
    }
    *this = quotient;
  }

  bool IsBelow(const Wide& other) const {
    for (std::size_t i = kLimbs; i-- > 0;) {
      if (limbs_[i] != other.limbs_[i]) return limbs_[i] < other.limbs_[i];
    }
    return false;
  }

  // None when it has more than 38 digits.
  std::optional<Int128> Value() const {
    const auto limit = static_cast<UInt128>(PowerOfTen(kMaximumDigits));
    if (!IsBelow(Wide(limit))) return std::nullopt;
    UInt128 value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 32 | limbs_[i];
    return static_cast<Int128>(value);
  }

 private:
  static constexpr std::size_t kLimbs = 12;

  void ShiftIn(bool bit) {
    std::uint32_t carry = bit ? 1 : 0;
    for (std::uint32_t& limb : limbs_) {
      const std::uint32_t next = limb >> 31;
      limb = limb << 1 | carry;
      carry = next;
    }
  }

  void Subtract(const Wide& other) {
    std::int64_t borrow = 0;
    for (std::size_t i = 0; i < kLimbs; ++i) {
      borrow += static_cast<std::int64_t>(limbs_[i]) - other.limbs_[i];
      limbs_[i] = static_cast<std::uint32_t>(borrow);
      borrow >>= 32;
    }
  }

  std::array<std::uint32_t, kLimbs> limbs_{};
};

enum class Rounding { kHalfUp, kCut };

// numerator / divisor with a sign.
std::optional<Decimal> Quotient(Wide numerator, const Wide& divisor, bool negative, int scale,
                                Rounding rounding) {
  Wide remainder(0);
  numerator.Divide(divisor, remainder);
  std::optional<Int128> value = numerator.Value();
  if (!value) return std::nullopt;
  remainder.Multiply(2U);
  if (rounding == Rounding::kHalfUp && !remainder.IsBelow(divisor)) ++*value;
  if (*value >= PowerOfTen(kMaximumDigits)) return std::nullopt;
  return Decimal{negative ? -*value : *value, scale};
}

Wide TenTo(int exponent) {
  Wide power(1);
  power.Scale(exponent);
  return power;
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
  switch (type) {
    case TypeId::kTinyInt:
      return value >= 0 && value <= 255;
    case TypeId::kSmallInt:
      return value >= -32768 && value <= 32767;
    case TypeId::kInt:
      return value >= std::numeric_limits<std::int32_t>::min() &&
             value <= std::numeric_limits<std::int32_t>::max();
    default:
      return value >= std::numeric_limits<std::int64_t>::min() &&
             value <= std::numeric_limits<std::int64_t>::max();
  }
}

std::optional<Decimal> Rescale(const Decimal& number, int scale) {
  if (scale == number.scale) return number;
  Wide value(Magnitude(number.value));
  const bool negative = number.value < 0;
  if (scale > number.scale) value.Scale(scale - number.scale);
  return Quotient(value, TenTo(std::max(0, number.scale - scale)), negative, scale,
                  Rounding::kHalfUp);
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
  Wide product(Magnitude(left.value));
  product.Multiply(Wide(Magnitude(right.value)));
  const int product_scale = left.scale + right.scale;
  if (scale > product_scale) product.Scale(scale - product_scale);
  const bool negative = (left.value < 0) != (right.value < 0);
  return Quotient(product, TenTo(std::max(0, product_scale - scale)), negative, scale,
                  Rounding::kHalfUp);
}

std::optional<Decimal> Divide(const Decimal& left, const Decimal& right, int scale) {
  Wide numerator(Magnitude(left.value));
  Wide divisor(Magnitude(right.value));
  const int exponent = scale - left.scale + right.scale;
  if (exponent > 0) numerator.Scale(exponent);
  if (exponent < 0) divisor.Scale(-exponent);
  const bool negative = (left.value < 0) != (right.value < 0);
  return Quotient(numerator, divisor, negative, scale, Rounding::kCut);
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
  std::array<char, 64> digits{};
  for (int count = 14; count <= 16; ++count) {
    std::snprintf(digits.data(), digits.size(), "%.*e", count, number);
    if (std::strtod(digits.data(), nullptr) == number) break;
  }
  const std::string_view text(digits.data());
  const std::size_t exponent_at = text.find('e');
  const int exponent = std::atoi(text.data() + exponent_at + 1);
  std::optional<Decimal> mantissa = ParseDecimal(text.substr(0, exponent_at));
  if (!mantissa) return std::nullopt;
  mantissa->scale -= exponent;
  if (mantissa->scale > 60) return Decimal{0, scale};
  if (mantissa->scale < 0) {
    Wide value(Magnitude(mantissa->value));
    value.Scale(-mantissa->scale + scale);
    return Quotient(value, Wide(1), number < 0, scale, Rounding::kHalfUp);
  }
  return Rescale(*mantissa, scale);
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
