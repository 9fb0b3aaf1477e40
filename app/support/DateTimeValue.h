// A calendar date or a time of day.
#pragma once

namespace dbkeeper {

struct DateTimeValue {
  int year = 1900, month = 1, day = 1, hour = 0, minute = 0, second = 0;
  bool operator==(const DateTimeValue&) const = default;
};

}  // namespace dbkeeper
