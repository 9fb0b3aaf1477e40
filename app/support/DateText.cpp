#include "app/support/DateText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

namespace dbkeeper {

namespace {

// Appends a number of up to four digits, with zeros before it up to `width` digits.
void AppendDigits(std::string& text, int value, int width) {
  if (width > 2 || value > 99) {
    text += static_cast<char>('0' + value / 1000 % 10);
    text += static_cast<char>('0' + value / 100 % 10);
  }
  if (width > 1 || value > 9) text += static_cast<char>('0' + value / 10 % 10);
  text += static_cast<char>('0' + value % 10);
}

// A part of a date that a pattern names. `part` is null for the half of the day.
struct Element {
  std::string_view code;
  int (*part)(const DateTimeValue& value, bool half_day);
  int width;  // digits at least
};

int Hour(const DateTimeValue& value, bool half_day) {
  if (!half_day) return value.hour;
  return value.hour % 12 == 0 ? 12 : value.hour % 12;
}
int Year(const DateTimeValue& value, bool) { return value.year; }
int Month(const DateTimeValue& value, bool) { return value.month; }
int Day(const DateTimeValue& value, bool) { return value.day; }
int Minute(const DateTimeValue& value, bool) { return value.minute; }

constexpr std::array<Element, 12> kElements = {{
    {"yyyy", Year, 4},
    {"yy", [](const DateTimeValue& v, bool) { return v.year % 100; }, 2},
    {"mm", Month, 2},
    {"m", Month, 1},
    {"dd", Day, 2},
    {"d", Day, 1},
    {"hh", Hour, 2},
    {"h", Hour, 1},
    {"nn", Minute, 2},
    {"n", Minute, 1},
    {"ss", [](const DateTimeValue& v, bool) { return v.second; }, 2},
    {"am/pm", nullptr, 0},
}};

// The longest element that the pattern begins with, or null.
const Element* LeadingElement(std::string_view pattern) {
  // An export formats millions of dates: most of a pattern is seen at its first letter.
  if (pattern.front() < 'a') return nullptr;
  for (const Element& element : kElements) {
    if (pattern.front() == element.code.front() && pattern.starts_with(element.code)) {
      return &element;
    }
  }
  return nullptr;
}

bool ReadNumber(std::string_view text, std::size_t at, std::size_t width, int& value) {
  if (text.size() < at + width) return false;
  const char* begin = text.data() + at;
  const auto [stop, problem] = std::from_chars(begin, begin + width, value);
  return problem == std::errc() && stop == begin + width;
}

std::chrono::year_month_day Date(const DateTimeValue& value) {
  return {std::chrono::year(value.year), std::chrono::month(static_cast<unsigned>(value.month)),
          std::chrono::day(static_cast<unsigned>(value.day))};
}

// Reads the date that the pattern describes; nothing where the text has another form.
std::optional<DateTimeValue> ReadByPattern(std::string_view text, std::string_view pattern) {
  DateTimeValue value;
  while (!pattern.empty()) {
    const char kind = pattern.front();
    if (kind != 'y' && kind != 'm' && kind != 'd') {
      if (text.empty() || text.front() != kind) return std::nullopt;
      text.remove_prefix(1);
      pattern.remove_prefix(1);
      continue;
    }
    pattern.remove_prefix(std::min(pattern.find_first_not_of(kind), pattern.size()));
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    int number = 0;
    if (digits == 0 || digits > 4 || !ReadNumber(text, 0, digits, number)) return std::nullopt;
    text.remove_prefix(digits);
    if (kind == 'y' && digits <= 2) number += number < 50 ? 2000 : 1900;
    (kind == 'y' ? value.year : kind == 'm' ? value.month : value.day) = number;
  }
  if (!text.empty()) return std::nullopt;
  return Date(value).ok() ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<DateTimeValue> ParseHostDate(std::string_view text,
                                           std::string_view short_date_format) {
  const bool year_first = text.find('/') == 4;
  return ReadByPattern(text, year_first ? "yyyy/mm/dd" : short_date_format);
}

std::string FormatDateTime(const DateTimeValue& value, std::string_view pattern) {
  const bool half_day = pattern.find("am/pm") != std::string_view::npos;
  std::string text;
  text.reserve(24);
  while (!pattern.empty()) {
    const Element* const element = LeadingElement(pattern);
    if (element == nullptr) {
      text += pattern.front();
      pattern.remove_prefix(1);
      continue;
    }
    if (element->part != nullptr) {
      AppendDigits(text, element->part(value, half_day), element->width);
    } else {
      text += value.hour < 12 ? "am" : "pm";
    }
    pattern.remove_prefix(element->code.size());
  }
  return text;
}

std::optional<DateTimeValue> ParseServerDate(std::string_view text) {
  DateTimeValue value;
  if (!ReadNumber(text, 0, 4, value.year) || !ReadNumber(text, 5, 2, value.month) ||
      !ReadNumber(text, 8, 2, value.day)) {
    return std::nullopt;
  }
  if (text.size() > 10 &&
      (!ReadNumber(text, 11, 2, value.hour) || !ReadNumber(text, 14, 2, value.minute) ||
       !ReadNumber(text, 17, 2, value.second))) {
    return std::nullopt;
  }
  return value;
}

std::string ServerDateToHostText(std::string_view text, std::string_view short_date_format) {
  const auto value = ParseServerDate(text);
  if (!value) return std::string(text);
  std::string shown = FormatDateTime(*value, short_date_format);
  if (value->hour != 0 || value->minute != 0 || value->second != 0) {
    shown += FormatDateTime(*value, " h:nn:ss");
  }
  return shown;
}

std::int64_t DayNumber(const DateTimeValue& value) {
  return std::chrono::sys_days(Date(value)).time_since_epoch().count();
}

DateTimeValue AddDays(const DateTimeValue& value, int days) {
  const std::chrono::year_month_day date(std::chrono::sys_days(Date(value)) +
                                         std::chrono::days(days));
  DateTimeValue result = value;
  result.year = static_cast<int>(date.year());
  result.month = static_cast<int>(static_cast<unsigned>(date.month()));
  result.day = static_cast<int>(static_cast<unsigned>(date.day()));
  return result;
}

}  // namespace dbkeeper
