// Dates and times, and the conversions between types.
#include <ctime>
#include <limits>

#include "server/sql/function_table.h"
#include "server/types/conversion.h"
#include "server/types/datetime.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

Cell DateOperation(std::string_view op, Integer left, Integer right, const SqlType& type) {
  const Integer result = op == "+" ? left + right : left - right;
  const bool fits =
      type.id == TypeId::kDateTime ? InDateTimeRange(result) : InSmallDateTimeRange(result);
  if (!fits) throw MakeError(8115, {"expression", NameOf(type.id)});
  return result;
}

Cell AddToDate(std::string_view part, Integer count, Integer time) {
  const std::optional<Integer> result = DateAdd(part, count, time);
  if (!result) throw MakeError(517, {"datetime"});
  return *result;
}

Cell Difference(std::string_view part, Integer from, Integer to) {
  const Integer result = DateDiff(part, from, to);
  if (result < std::numeric_limits<std::int32_t>::min() ||
      result > std::numeric_limits<std::int32_t>::max()) {
    throw MakeError(535, {});
  }
  return result;
}

Cell Part(std::string_view part, Integer time) { return Integer{DatePart(part, time)}; }

Cell Name(std::string_view part, Integer time) { return DateName(part, time); }

Cell Utc(Integer local_time) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local_time - local.tm_gmtoff * kTicksPerSecond;
}

Cell Convert(const Cell& value, const SqlType& from, const SqlType& to,
             std::optional<Integer> style) {
  return ConvertCell(value, from, to, static_cast<int>(style.value_or(0)),
                     ConversionKind::kExplicit);
}

Cell Assign(const Cell& value, const SqlType& from, const SqlType& to) {
  return ConvertCell(value, from, to, 0, ConversionKind::kAssignment);
}

constexpr FunctionRow kRows[] = {
    {"getdate", "", kDateTimeType, "$t"},
    {"getutcdate", "", kDateTimeType, "ms_utc($t)"},
    {"current_timestamp", "", kDateTimeType, "$t"},
    {"dateadd", "pid", kDateTimeType, kAdapted<AddToDate>},
    {"datediff", "pdd", kIntType, kAdapted<Difference>},
    {"datepart", "pd", kIntType, kAdapted<Part>},
    {"datename", "pd", NVarChar(30), kAdapted<Name>},
    {"day", "d", kIntType, "ms_datepart('day', $*)"},
    {"month", "d", kIntType, "ms_datepart('month', $*)"},
    {"year", "d", kIntType, "ms_datepart('year', $*)"},
    {"datetime", kAdapted<DateOperation>},
    {"utc", kAdapted<Utc>},
    {"convert", kAdapted<Convert>},
    {"assign", kAdapted<Assign>},
};

}  // namespace

std::span<const FunctionRow> DateFunctions() { return kRows; }

}  // namespace dbkeeper::server
