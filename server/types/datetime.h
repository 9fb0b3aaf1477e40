// Dates and times in the storage form of sql_type.h: days since 1900-01-01 times 25,920,000 plus
// 1/300 s.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "server/types/sql_type.h"

namespace dbkeeper::server {

inline constexpr std::int64_t kTicksPerSecond = 300;
inline constexpr std::int64_t kTicksPerMinute = 60 * kTicksPerSecond;
inline constexpr std::int64_t kTicksPerDay = 1440 * kTicksPerMinute;

struct CivilTime {
  int year = 1900;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int ticks = 0;  // 1/300 s
};

std::int64_t DayOf(std::int64_t time);
CivilTime ToCivil(std::int64_t time);
std::int64_t FromCivil(const CivilTime& civil);
std::int64_t CurrentTime();  // local
int DaysInMonth(int year, int month);
int Milliseconds(int ticks);
// Rounds to the 1/300 s that the server keeps.
int TicksOfMilliseconds(int milliseconds);

bool InDateTimeRange(std::int64_t time);       // 1753 to 9999
bool InSmallDateTimeRange(std::int64_t time);  // 1900-01-01 to 2079-06-06

// How days, months and years stand in a text of numbers such as 01/02/03.
enum class DateOrder { kMonthDayYear, kDayMonthYear, kYearMonthDay };
DateOrder OrderOfStyle(int style);

enum class DateFault { kSyntax, kRange };
struct ParsedDate {
  std::int64_t time = 0;
  std::optional<DateFault> fault;
};
// A text as the server reads dates: numbers with separators, month names, ISO 8601, times with or
// without AM and PM; an empty text is 1900-01-01.
ParsedDate ParseDateTime(std::string_view text, DateOrder order);

// The text of a convert style; none for a number that is no style.
std::optional<std::string> FormatDateTime(std::int64_t time, int style);

// The full name of a date part ("yy", "YEAR" give "year"); empty for what is none.
std::string_view DatePartName(std::string_view word);

// `part` is a full name. DateAdd gives none when the result is beyond the range.
std::optional<std::int64_t> DateAdd(std::string_view part, std::int64_t count, std::int64_t time);
std::int64_t DateDiff(std::string_view part, std::int64_t from, std::int64_t to);
int DatePart(std::string_view part, std::int64_t time);
std::string DateName(std::string_view part, std::int64_t time);

}  // namespace dbkeeper::server
