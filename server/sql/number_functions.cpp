// Arithmetic and mathematics.
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "server/sql/function_list.h"
#include "server/types/conversion.h"
#include "server/types/decimal.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using Integer = std::int64_t;

SqlType TypeAt(Cells arguments, std::size_t index) {
  return DecodeType(IntegerAt(arguments, index));
}

[[noreturn]] void Overflow(const SqlType& type) {
  throw MakeError(8115, {"expression", NameOf(type.id)});
}

double Finite(double value) {
  if (std::isfinite(value)) return value;
  throw MakeError(8115, {"expression", "float"});
}

// ms_range(value, type): an integer result that must fit its type. A sum that SQLite itself could
// not hold has become a real.
Cell Range(Cells arguments) {
  const SqlType type = TypeAt(arguments, 1);
  if (FamilyOf(type.id) != TypeFamily::kInteger) {
    return StoreDecimal(DecimalOfCell(arguments[0]), type, "numeric");
  }
  const auto* value = std::get_if<Integer>(&arguments[0]);
  if (value == nullptr || !FitsInteger(Decimal{*value, 0}, type.id)) Overflow(type);
  return *value;
}

// ms_integer(operator, left, right, type)
Cell IntegerOperation(Cells arguments) {
  const char op = TextAt(arguments, 0)[0];
  const Integer left = IntegerAt(arguments, 1);
  const Integer right = IntegerAt(arguments, 2);
  const SqlType type = TypeAt(arguments, 3);
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

// ms_float(operator, left, right)
Cell FloatOperation(Cells arguments) {
  const char op = TextAt(arguments, 0)[0];
  const double left = DoubleAt(arguments, 1);
  const double right = DoubleAt(arguments, 2);
  if (op == '+') return Finite(left + right);
  if (op == '-') return Finite(left - right);
  if (op == '*') return Finite(left * right);
  if (right == 0) throw MakeError(8134, {});
  return Finite(left / right);
}

// ms_decimal(operator, left, right, type): decimals and money.
Cell DecimalOperation(Cells arguments) {
  const char op = TextAt(arguments, 0)[0];
  const Decimal left = DecimalOfCell(arguments[1]);
  Decimal right = DecimalOfCell(arguments[2]);
  const SqlType type = TypeAt(arguments, 3);
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

// ms_number(value, type): what a function computed, as the type that its call has.
Cell AsNumber(Cells arguments) {
  const SqlType type = TypeAt(arguments, 1);
  if (FamilyOf(type.id) == TypeFamily::kReal) return DoubleAt(arguments, 0);
  if (const auto* real = std::get_if<double>(&arguments[0])) {
    const std::optional<Decimal> number =
        FromDouble(FamilyOf(type.id) == TypeFamily::kInteger ? std::trunc(*real) : *real,
                   FamilyOf(type.id) == TypeFamily::kInteger ? 0 : type.scale);
    if (!number) Overflow(type);
    return StoreDecimal(*number, type, "expression");
  }
  return StoreDecimal(DecimalOfCell(arguments[0]), type, "expression");
}

Cell Abs(Cells arguments) {
  if (const auto* real = std::get_if<double>(&arguments[0])) return std::fabs(*real);
  Decimal number = DecimalOfCell(arguments[0]);
  if (number.value < 0) number.value = -number.value;
  return FormatDecimal(number);
}

Cell Sign(Cells arguments) {
  if (const auto* real = std::get_if<double>(&arguments[0])) {
    return static_cast<double>((*real > 0) - (*real < 0));
  }
  const Decimal number = DecimalOfCell(arguments[0]);
  return static_cast<Integer>((number.value > 0) - (number.value < 0));
}

// The whole number at or beyond `arguments[0]` on the side of `direction`.
Cell Whole(Cells arguments, int direction) {
  if (const auto* real = std::get_if<double>(&arguments[0])) {
    return direction > 0 ? std::ceil(*real) : std::floor(*real);
  }
  const Decimal number = DecimalOfCell(arguments[0]);
  Decimal whole{Truncate(number), 0};
  const bool exact = Rescale(whole, number.scale).value_or(number).value == number.value;
  if (!exact && (number.value > 0) == (direction > 0)) whole.value += direction;
  return FormatDecimal(whole);
}

Cell Ceiling(Cells arguments) { return Whole(arguments, 1); }
Cell Floor(Cells arguments) { return Whole(arguments, -1); }

// round(number, digits [, cut])
Cell Round(Cells arguments) {
  const Integer digits = IntegerAt(arguments, 1);
  const bool cut = arguments.size() > 2 && IntegerAt(arguments, 2) != 0;
  if (const auto* real = std::get_if<double>(&arguments[0])) {
    if (digits > 300 || digits < -300) return digits > 0 ? *real : 0.0;
    const double power = std::pow(10.0, static_cast<double>(digits));
    const double scaled = *real * power;
    if (!std::isfinite(scaled) || power == 0) return *real;
    return (cut ? std::trunc(scaled) : std::round(scaled)) / power;
  }
  const Decimal number = DecimalOfCell(arguments[0]);
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

Cell Power(Cells arguments) {
  const double exponent = DoubleAt(arguments, 1);
  const double base = DoubleAt(arguments, 0);
  // Whole powers of whole numbers are exact as long as a double is.
  return Finite(std::pow(base, exponent));
}

struct MathRow {
  std::string_view name;
  double (*function)(double);
};
constexpr MathRow kMath[] = {
    {"sqrt", [](double x) { return std::sqrt(x); }},
    {"square", [](double x) { return x * x; }},
    {"exp", [](double x) { return std::exp(x); }},
    {"log", [](double x) { return std::log(x); }},
    {"log10", [](double x) { return std::log10(x); }},
    {"sin", [](double x) { return std::sin(x); }},
    {"cos", [](double x) { return std::cos(x); }},
    {"tan", [](double x) { return std::tan(x); }},
    {"cot", [](double x) { return 1 / std::tan(x); }},
    {"asin", [](double x) { return std::asin(x); }},
    {"acos", [](double x) { return std::acos(x); }},
    {"atan", [](double x) { return std::atan(x); }},
    {"degrees", [](double x) { return x * 180 / 3.14159265358979323846; }},
    {"radians", [](double x) { return x * 3.14159265358979323846 / 180; }},
};

// ms_math(name, x)
Cell Math(Cells arguments) {
  for (const MathRow& row : kMath) {
    if (row.name != TextAt(arguments, 0)) continue;
    const double result = row.function(DoubleAt(arguments, 1));
    if (!std::isfinite(result)) throw MakeError(3623);
    return result;
  }
  throw Unsupported("this function");
}

Cell Atn2(Cells arguments) { return std::atan2(DoubleAt(arguments, 0), DoubleAt(arguments, 1)); }

std::mt19937_64& Generator() {
  thread_local std::mt19937_64 generator{std::random_device{}()};
  return generator;
}

Cell Rand(Cells arguments) {
  if (!arguments.empty() && !IsNullCell(arguments[0])) {
    Generator().seed(static_cast<std::uint64_t>(IntegerAt(arguments, 0)));
  }
  return std::uniform_real_distribution<double>(0, 1)(Generator());
}

// A random identifier (version 4).
Cell NewId(Cells /*arguments*/) {
  std::string bytes;
  for (int half = 0; half < 2; ++half) {
    std::uint64_t value = Generator()();
    for (int i = 0; i < 8; ++i, value >>= 8) bytes += static_cast<char>(value);
  }
  bytes[7] = static_cast<char>((static_cast<unsigned char>(bytes[7]) & 0x0F) | 0x40);
  bytes[8] = static_cast<char>((static_cast<unsigned char>(bytes[8]) & 0x3F) | 0x80);
  return Blob{bytes};
}

constexpr FunctionEntry kEntries[] = {
    {"ms_range", 2, Range},
    {"ms_integer", 4, IntegerOperation},
    {"ms_float", 3, FloatOperation},
    {"ms_decimal", 4, DecimalOperation},
    {"ms_number", 2, AsNumber},
    {"ms_abs", 1, Abs},
    {"ms_sign", 1, Sign},
    {"ms_ceiling", 1, Ceiling},
    {"ms_floor", 1, Floor},
    {"ms_round", 2, Round},
    {"ms_round", 3, Round},
    {"ms_power", 2, Power},
    {"ms_math", 2, Math},
    {"ms_atn2", 2, Atn2},
    {"ms_rand", 0, Rand, NullRule::kSeesNulls, false},
    {"ms_rand", 1, Rand, NullRule::kSeesNulls, false},
    {"ms_newid", 0, NewId, NullRule::kSeesNulls, false},
};

}  // namespace

std::span<const FunctionEntry> NumberFunctions() { return kEntries; }

}  // namespace dbkeeper::server
