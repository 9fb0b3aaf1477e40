// Dates and times as texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "app/support/DateTimeValue.h"

namespace dbkeeper {

// Formats by a pattern of "yyyy" "yy" "mm" "m" "dd" "d" (date), "hh" "h" "nn" "n" "ss" "am/pm"
// (time, the hours of 24 unless the pattern holds "am/pm"); everything else stands for itself.
std::string FormatDateTime(const DateTimeValue& value, std::string_view pattern);

// Reads "yyyy-mm-dd hh:mm:ss.fff", the fraction and the time being optional.
std::optional<DateTimeValue> ParseServerDate(std::string_view text);

// A date of the server in the host's short form with "h:nn:ss" behind it; midnight shows the date
// alone. A text that is no date stays as it is.
std::string ServerDateToHostText(std::string_view text, std::string_view short_date_format);

// Reads a date in a host's short form such as "m/d/yy", or as "yyyy/mm/dd", which every host may
// use. The digits may be fewer or more than the pattern's letters; a year of two digits is of this
// century below 50. Absence where the text is no such date or the day does not exist.
std::optional<DateTimeValue> ParseHostDate(std::string_view text,
                                           std::string_view short_date_format);

// The day, counted from 1970-01-01.
std::int64_t DayNumber(const DateTimeValue& value);

// The day `days` later.
DateTimeValue AddDays(const DateTimeValue& value, int days);

}  // namespace dbkeeper
