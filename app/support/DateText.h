// Dates and times as texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "controls/Inputs.h"

namespace dbkeeper {

// Formats by a pattern of "yyyy" "yy" "mm" "m" "dd" "d" (date), "hh" "h" "nn" "n" "ss" "am/pm"
// (time, the hours of 24 unless the pattern holds "am/pm"); everything else stands for itself.
std::string FormatDateTime(const DateTimeValue& value, std::string_view pattern);

// Reads "yyyy-mm-dd hh:mm:ss.fff", the fraction and the time being optional.
std::optional<DateTimeValue> ParseServerDate(std::string_view text);

// A date of the server in the host's short form with "h:nn:ss" behind it; midnight shows the date
// alone. A text that is no date stays as it is.
std::string ServerDateToHostText(std::string_view text, std::string_view short_date_format);

// The day `days` later.
DateTimeValue AddDays(const DateTimeValue& value, int days);

}  // namespace dbkeeper
