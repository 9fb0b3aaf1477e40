// Arithmetic and mathematics.
#include <cmath>
#include <limits>
#include <random>

#include "server/sql/function_table.h"
#include "server/types/conversion.h"
#include "server/types/decimal.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using enum ResultRule;

[[noreturn]] void Overflow(const SqlType& type) {
  throw MakeError(8115, {"expression", NameOf(type.id)});
}

double Finite(double value) {
  if (std::isfinite(value)) return value;
  throw MakeError(8115, {"expression", "float"});
}

// An integer result that must fit its type. A sum that SQLite itself could not hold has become a
// real.
Cell Range(const Cell& number, const SqlType& type) {
  if (FamilyOf(type.id) != TypeFamily::kInteger) {
    return StoreDecimal(DecimalOfCell(number), type, "numeric");
  }
  const auto* value = std::get_if<Integer>(&number);
  if (value == nullptr || !FitsInteger(Decimal{*value, 0}, type.id)) Overflow(type);
  return *value;
}

Cell IntegerOperation(std::string_view symbol, Integer left, Integer right, const SqlType& type) {
  const char op = symbol[0];
  Integer result = 0;
  bool overflow = false;
  if (op == '/' || op == '%') {
    if (right == 0) throw MakeError(8134, {});
    overflow = left == std::numeric_limits<Integer>::min() && right == -1;
    if (!overflow) result = op == '/' ? left / right : left % right;
  } else if (op == '+') {
    overflow = __builtin_add_overflow(left, right, &result);
  } else if (op == '-') {
    overflow = __builtin_sub_overflow(left, right, &result);
  } else {
    overflow = __builtin_mul_overflow(left, right, &result);
  }
  if (overflow || !FitsInteger(Decimal{result, 0}, type.id)) Overflow(type);
  return result;
}

Cell FloatOperation(std::string_view op, double left, double right) {
  if (op == "+") return Finite(left + right);
  if (op == "-") return Finite(left - right);
  if (op == "*") return Finite(left * right);
  if (right == 0) throw MakeError(8134, {});
  return Finite(left / right);
}

// Decimals and money.
Cell DecimalOperation(std::string_view symbol, const Decimal& left, Decimal right,
                      const SqlType& type) {
  const char op = symbol[0];
  if ((op == '/' || op == '%') && right.value == 0) throw MakeError(8134, {});
  std::optional<Decimal> result;
  if (op == '-') right.value = -right.value;
  if (op == '+' || op == '-') result = Add(left, right, type.scale);
  if (op == '*') result = Multiply(left, right, type.scale);
  if (op == '/') result = Divide(left, right, type.scale);
  if (op == '%') result = Remainder(left, right, type.scale);
  const std::string_view name =
      FamilyOf(type.id) == TypeFamily::kMoney ? NameOf(type.id) : "numeric";
  if (!result) throw MakeError(8115, {"expression", name});
  return StoreDecimal(*result, type, "numeric");
}

// What a function computed, as the type that its call has.
Cell AsNumber(const Cell& value, const SqlType& type) {
  const auto* real = std::get_if<double>(&value);
  if (real == nullptr) {
    const Decimal number = DecimalOfCell(value);
    if (FamilyOf(type.id) == TypeFamily::kReal) return ToDouble(number);
    return StoreDecimal(number, type, "expression");
  }
  if (FamilyOf(type.id) == TypeFamily::kReal) return *real;
  const bool whole = FamilyOf(type.id) == TypeFamily::kInteger;
  const std::optional<Decimal> number =
      FromDouble(whole ? std::trunc(*real) : *real, whole ? 0 : type.scale);
  if (!number) Overflow(type);
  return StoreDecimal(*number, type, "expression");
}

Cell Abs(const Cell& value) {
  if (const auto* real = std::get_if<double>(&value)) return std::fabs(*real);
  Decimal number = DecimalOfCell(value);
  if (number.value < 0) number.value = -number.value;
  return FormatDecimal(number);
}

Cell Sign(const Cell& value) {
  if (const auto* real = std::get_if<double>(&value)) {
    return static_cast<double>((*real > 0) - (*real < 0));
  }
  const Decimal number = DecimalOfCell(value);
  return static_cast<Integer>((number.value > 0) - (number.value < 0));
}

// The whole number at or beyond `value` on the side of `direction`.
Cell Whole(const Cell& value, int direction) {
  if (const auto* real = std::get_if<double>(&value)) {
    return direction > 0 ? std::ceil(*real) : std::floor(*real);
  }
  const Decimal number = DecimalOfCell(value);
  Decimal whole{Truncate(number), 0};
  const bool exact = Rescale(whole, number.scale).value_or(number).value == number.value;
  if (!exact && (number.value > 0) == (direction > 0)) whole.value += direction;
  return FormatDecimal(whole);
}

Cell Ceiling(const Cell& value) { return Whole(value, 1); }
Cell Floor(const Cell& value) { return Whole(value, -1); }

Cell Round(const Cell& value, Integer digits, std::optional<Integer> function) {
  const bool cut = function.value_or(0) != 0;
  if (const auto* real = std::get_if<double>(&value)) {
    if (digits > 300 || digits < -300) return digits > 0 ? *real : 0.0;
    const double power = std::pow(10.0, static_cast<double>(digits));
    const double scaled = *real * power;
    if (!std::isfinite(scaled) || power == 0) return *real;
    return (cut ? std::trunc(scaled) : std::round(scaled)) / power;
  }
  const Decimal number = DecimalOfCell(value);
  if (digits >= number.scale) return FormatDecimal(number);
  if (digits <= -38) return FormatDecimal(Decimal{0, number.scale});
  // Digits before the point are rounded as decimals of a number moved to the right.
  Decimal moved = number;
  moved.scale = number.scale - static_cast<int>(digits);
  Decimal rounded = cut ? Decimal{0, 0} : Rescale(moved, 0).value_or(moved);
  if (cut && moved.scale <= 38) rounded.value = Truncate(moved);
  rounded.scale = 0;
  for (int i = 0; i < moved.scale; ++i) {
    if (__builtin_mul_overflow(rounded.value, Int128{10}, &rounded.value)) {
      throw MakeError(8115, {"expression", "numeric"});
    }
  }
  rounded.scale = number.scale;
  return FormatDecimal(rounded);
}

Cell Power(double base, double exponent) { return Finite(std::pow(base, exponent)); }

constexpr double kPi = 3.14159265358979323846;

template <double (*Function)(double)>
Cell Math(double x) {
  const double result = Function(x);
  if (!std::isfinite(result)) throw MakeError(3623);
  return result;
}
template <double (*Function)(double)>
constexpr SqlFunction kMath = kAdapted<Math<Function>>;

Cell Atn2(double y, double x) { return std::atan2(y, x); }

std::mt19937_64& Generator() {
  thread_local std::mt19937_64 generator{std::random_device{}()};
  return generator;
}

Cell Rand(std::optional<Integer> seed) {
  if (seed) Generator().seed(static_cast<std::uint64_t>(*seed));
  return std::uniform_real_distribution<double>(0, 1)(Generator());
}

// A random identifier (version 4).
Cell NewId() {
  std::string bytes;
  for (int half = 0; half < 2; ++half) {
    std::uint64_t value = Generator()();
    for (int i = 0; i < 8; ++i, value >>= 8) bytes += static_cast<char>(value);
  }
  bytes[7] = static_cast<char>((static_cast<unsigned char>(bytes[7]) & 0x0F) | 0x40);
  bytes[8] = static_cast<char>((static_cast<unsigned char>(bytes[8]) & 0x3F) | 0x80);
  return Blob{bytes};
}

constexpr FunctionRow kRows[] = {
    {"abs", "n", kNumber, kAdapted<Abs>},
    {"ceiling", "n", kWhole, kAdapted<Ceiling>},
    {"floor", "n", kWhole, kAdapted<Floor>},
    {"round", "ni[i", kNumber, kAdapted<Round>},
    {"sign", "n", kNumber, kAdapted<Sign>},
    {"power", "nf", ResultRule::kPower, kAdapted<Power>},
    {"sqrt", "f", kFloatType, kMath<[](double x) { return std::sqrt(x); }>},
    {"square", "f", kFloatType, kMath<[](double x) { return x * x; }>},
    {"exp", "f", kFloatType, kMath<[](double x) { return std::exp(x); }>},
    {"log", "f", kFloatType, kMath<[](double x) { return std::log(x); }>},
    {"log10", "f", kFloatType, kMath<[](double x) { return std::log10(x); }>},
    {"sin", "f", kFloatType, kMath<[](double x) { return std::sin(x); }>},
    {"cos", "f", kFloatType, kMath<[](double x) { return std::cos(x); }>},
    {"tan", "f", kFloatType, kMath<[](double x) { return std::tan(x); }>},
    {"cot", "f", kFloatType, kMath<[](double x) { return 1 / std::tan(x); }>},
    {"asin", "f", kFloatType, kMath<[](double x) { return std::asin(x); }>},
    {"acos", "f", kFloatType, kMath<[](double x) { return std::acos(x); }>},
    {"atan", "f", kFloatType, kMath<[](double x) { return std::atan(x); }>},
    {"atn2", "ff", kFloatType, kAdapted<Atn2>},
    {"degrees", "f", kFloatType, kMath<[](double x) { return x * 180 / kPi; }>},
    {"radians", "f", kFloatType, kMath<[](double x) { return x * kPi / 180; }>},
    {"pi", "", kFloatType, "3.1415926535897931"},
    {"rand", "[i", kFloatType, kAdapted<Rand, FunctionKind::kRandom>},
    {"newid", "", SqlType{TypeId::kUniqueIdentifier, 16, 0, 0, true},
     kAdapted<NewId, FunctionKind::kRandom>},
    {"range", kAdapted<Range>},
    {"integer", kAdapted<IntegerOperation>},
    {"float", kAdapted<FloatOperation>},
    {"decimal", kAdapted<DecimalOperation>},
    {"number", kAdapted<AsNumber>},
};

}  // namespace

std::span<const FunctionRow> NumberFunctions() { return kRows; }

}  // namespace dbkeeper::server
