// The functions of the dialect as data: name, arguments, result, and how a call is written or
// computed. Behind the binder, which writes the calls, and server_functions.cpp, which registers
// what they call.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "server/types/cell.h"
#include "server/types/decimal.h"
#include "server/types/sql_type.h"

struct sqlite3_value;

namespace dbkeeper::server {

using Integer = std::int64_t;

// ---- functions of SQLite -----------------------------------------------------------------------

enum class FunctionKind {
  kPlain,      // any null argument makes the result null
  kSeesNulls,  // a null argument is none
  kRandom,     // the same, and no two calls give the same
};

struct SqlFunction {
  Cell (*run)(int count, sqlite3_value** values) = nullptr;
  int arguments = 0;  // -1: some may be left out
  FunctionKind kind = FunctionKind::kPlain;
};

// An argument as a plain value; the translator has seen to its form. Text gives the bytes of a blob
// too, and nothing of a number.
template <typename Value>
Value Take(sqlite3_value* value);
template <>
Integer Take<Integer>(sqlite3_value* value);
template <>
double Take<double>(sqlite3_value* value);
template <>
std::string_view Take<std::string_view>(sqlite3_value* value);
template <>
std::u32string Take<std::u32string>(sqlite3_value* value);
template <>
Decimal Take<Decimal>(sqlite3_value* value);
template <>
SqlType Take<SqlType>(sqlite3_value* value);
template <>
Cell Take<Cell>(sqlite3_value* value);

bool IsNullValue(sqlite3_value* value);

template <typename Value>
struct Argument {
  static constexpr bool kOptional = false;
  static Value At(int index, int, sqlite3_value** values) { return Take<Value>(values[index]); }
};
template <typename Value>
struct Argument<std::optional<Value>> {
  static constexpr bool kOptional = true;
  static std::optional<Value> At(int index, int count, sqlite3_value** values) {
    if (index >= count || IsNullValue(values[index])) return std::nullopt;
    return Take<Value>(values[index]);
  }
};

template <auto Function, typename... Values, std::size_t... Index>
Cell RunAdapted([[maybe_unused]] int count, [[maybe_unused]] sqlite3_value** values,
                std::index_sequence<Index...> /*places*/) {
  return Function(Argument<Values>::At(static_cast<int>(Index), count, values)...);
}

template <auto Function, typename... Values>
constexpr SqlFunction Adapt(Cell (*)(Values...), FunctionKind kind) {
  constexpr bool kSome = (Argument<std::decay_t<Values>>::kOptional || ...);
  return {[](int count, sqlite3_value** values) {
            return RunAdapted<Function, std::decay_t<Values>...>(
                count, values, std::index_sequence_for<Values...>());
          },
          kSome ? -1 : static_cast<int>(sizeof...(Values)), kind};
}

// A plain function over typed values as one of SQLite; optional parameters may be left out.
template <auto Function, FunctionKind Kind = FunctionKind::kPlain>
inline constexpr SqlFunction kAdapted = Adapt<Function>(Function, Kind);

// ---- functions of the dialect ------------------------------------------------------------------

// What a call gives: a type, or one that its first argument decides.
enum class ResultRule {
  kFixed,
  kNumber,    // as the first argument, small integers as int, texts as float
  kWhole,     // ... decimals without decimals
  kPower,     // ... decimals of 38 digits
  kText,      // the first argument as a variable text of its own length
  kWideText,  // ... of the greatest length
};

struct FunctionResult {
  // NOLINTNEXTLINE(google-explicit-constructor): rows name a type or a rule.
  constexpr FunctionResult(const SqlType& fixed) : type(fixed) {}
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr FunctionResult(ResultRule decided) : rule(decided) {}
  SqlType type;
  ResultRule rule = ResultRule::kFixed;
};

struct FunctionRow {
  // Written as `text`: "$*" stands for the arguments, "$1" for the first of them (NULL when there
  // is none), "$d" for the current database, "$t" for the time of the statement. "state": the call
  // goes to ServerState.
  constexpr FunctionRow(std::string_view function_name, std::string_view kinds,
                        FunctionResult gives, std::string_view text)
      : name(function_name), arguments(kinds), result(gives), sql(text) {}
  // Computed by a function, which SQLite knows as "ms_<name>".
  constexpr FunctionRow(std::string_view function_name, std::string_view kinds,
                        FunctionResult gives, const SqlFunction& computes)
      : name(function_name), arguments(kinds), result(gives), function(computes) {}
  // Of no use in the dialect: called by what the translator writes.
  constexpr FunctionRow(std::string_view function_name, const SqlFunction& computes)
      : name(function_name), result(kIntType), function(computes), internal(true) {}

  int least() const { return static_cast<int>(std::min(arguments.find('['), arguments.size())); }
  int most() const {
    return static_cast<int>(arguments.size()) - (arguments.find('[') == arguments.npos ? 0 : 1);
  }
  // How the argument of that number, from 1, is taken.
  char kind(std::size_t number) const {
    return arguments[number <= static_cast<std::size_t>(least()) ? number - 1 : number];
  }

  std::string_view name;  // in lower case
  // How each argument is taken; those behind "[" may be left out:
  //   a any, t text, b text or binary, i int, f float, d datetime, n number as it is, p date part
  std::string_view arguments;
  FunctionResult result;
  std::string_view sql;
  SqlFunction function;
  bool internal = false;
};

std::span<const FunctionRow> StateFunctions();
std::span<const FunctionRow> NumberFunctions();
std::span<const FunctionRow> TextFunctions();
std::span<const FunctionRow> DateFunctions();

// Null when the dialect has no such function.
const FunctionRow* FindFunction(std::string_view lower_name);

}  // namespace dbkeeper::server
