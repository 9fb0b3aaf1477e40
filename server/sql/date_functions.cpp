// Dates and times, and the conversions between types.
#include <cstdint>
#include <ctime>
#include <limits>

#include "server/sql/function_list.h"
#include "server/types/conversion.h"
#include "server/types/datetime.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using Integer = std::int64_t;

// ms_datetime(operator, left, right, type)
Cell DateOperation(Cells arguments) {
  const Integer left = IntegerAt(arguments, 1);
  const Integer right = IntegerAt(arguments, 2);
  const Integer result = TextAt(arguments, 0) == "+" ? left + right : left - right;
  const SqlType type = DecodeType(IntegerAt(arguments, 3));
  const bool fits =
      type.id == TypeId::kDateTime ? InDateTimeRange(result) : InSmallDateTimeRange(result);
  if (!fits) throw MakeError(8115, {"expression", NameOf(type.id)});
  return result;
}

Cell AddToDate(Cells arguments) {
  const std::optional<Integer> result =
      DateAdd(TextAt(arguments, 0), IntegerAt(arguments, 1), IntegerAt(arguments, 2));
  if (!result) throw MakeError(517, {"datetime"});
  return *result;
}

Cell Difference(Cells arguments) {
  const Integer result =
      DateDiff(TextAt(arguments, 0), IntegerAt(arguments, 1), IntegerAt(arguments, 2));
  if (result < std::numeric_limits<std::int32_t>::min() ||
      result > std::numeric_limits<std::int32_t>::max()) {
    throw MakeError(535, {});
  }
  return result;
}

Cell Part(Cells arguments) {
  return Integer{DatePart(TextAt(arguments, 0), IntegerAt(arguments, 1))};
}

Cell Name(Cells arguments) { return DateName(TextAt(arguments, 0), IntegerAt(arguments, 1)); }

// ms_utc(local time)
Cell Utc(Cells arguments) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return IntegerAt(arguments, 0) - local.tm_gmtoff * kTicksPerSecond;
}

// ms_convert(value, from, to [, style])
Cell Convert(Cells arguments) {
  const Integer style = arguments.size() > 3 ? IntegerAt(arguments, 3) : 0;
  return ConvertCell(arguments[0], DecodeType(IntegerAt(arguments, 1)),
                     DecodeType(IntegerAt(arguments, 2)), static_cast<int>(style),
                     ConversionKind::kExplicit);
}

// ms_assign(value, from, to)
Cell Assign(Cells arguments) {
  return ConvertCell(arguments[0], DecodeType(IntegerAt(arguments, 1)),
                     DecodeType(IntegerAt(arguments, 2)), 0, ConversionKind::kAssignment);
}

constexpr FunctionEntry kDateEntries[] = {
    {"ms_datetime", 4, DateOperation}, {"ms_dateadd", 3, AddToDate}, {"ms_datediff", 3, Difference},
    {"ms_datepart", 2, Part},          {"ms_datename", 2, Name},     {"ms_utc", 1, Utc},
};

constexpr FunctionEntry kConversionEntries[] = {
    {"ms_convert", 3, Convert},
    {"ms_convert", 4, Convert},
    {"ms_assign", 3, Assign},
};

}  // namespace

std::span<const FunctionEntry> DateFunctions() { return kDateEntries; }
std::span<const FunctionEntry> ConversionFunctions() { return kConversionEntries; }

}  // namespace dbkeeper::server
