#include "app/support/DateText.h"

#include <array>
#include <charconv>
#include <chrono>

namespace dbkeeper {

namespace {

std::string Digits(int value, std::size_t width) {
  std::string text = std::to_string(value);
  if (text.size() < width) text.insert(0, width - text.size(), '0');
  return text;
}

struct Element {
  std::string_view code;
  std::string (*format)(const DateTimeValue& value, bool half_day);
};

int HalfDayHour(int hour) { return hour % 12 == 0 ? 12 : hour % 12; }

constexpr std::array<Element, 12> kElements = {{
    {"yyyy", [](const DateTimeValue& v, bool) { return Digits(v.year, 4); }},
    {"yy", [](const DateTimeValue& v, bool) { return Digits(v.year % 100, 2); }},
    {"mm", [](const DateTimeValue& v, bool) { return Digits(v.month, 2); }},
    {"m", [](const DateTimeValue& v, bool) { return Digits(v.month, 1); }},
    {"dd", [](const DateTimeValue& v, bool) { return Digits(v.day, 2); }},
    {"d", [](const DateTimeValue& v, bool) { return Digits(v.day, 1); }},
    {"hh", [](const DateTimeValue& v,
              bool half) { return Digits(half ? HalfDayHour(v.hour) : v.hour, 2); }},
    {"h", [](const DateTimeValue& v,
             bool half) { return Digits(half ? HalfDayHour(v.hour) : v.hour, 1); }},
    {"nn", [](const DateTimeValue& v, bool) { return Digits(v.minute, 2); }},
    {"n", [](const DateTimeValue& v, bool) { return Digits(v.minute, 1); }},
    {"ss", [](const DateTimeValue& v, bool) { return Digits(v.second, 2); }},
    {"am/pm", [](const DateTimeValue& v, bool) { return std::string(v.hour < 12 ? "am" : "pm"); }},
}};

bool ReadNumber(std::string_view text, std::size_t at, std::size_t width, int& value) {
  if (text.size() < at + width) return false;
  const char* begin = text.data() + at;
  const auto [stop, problem] = std::from_chars(begin, begin + width, value);
  return problem == std::errc() && stop == begin + width;
}

}  // namespace

std::string FormatDateTime(const DateTimeValue& value, std::string_view pattern) {
  const bool half_day = pattern.find("am/pm") != std::string_view::npos;
  std::string text;
  while (!pattern.empty()) {
    const Element* match = nullptr;
    for (const Element& element : kElements) {
      // The first letter first: an export formats millions of dates.
      if (pattern.front() == element.code.front() && pattern.starts_with(element.code)) {
        match = &element;
        break;
      }
    }
    if (match != nullptr) {
      text += match->format(value, half_day);
      pattern.remove_prefix(match->code.size());
    } else {
      text += pattern.front();
      pattern.remove_prefix(1);
    }
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

DateTimeValue AddDays(const DateTimeValue& value, int days) {
  using std::chrono::year_month_day;
  const std::chrono::sys_days moved =
      std::chrono::sys_days(year_month_day(std::chrono::year(value.year),
                                           std::chrono::month(static_cast<unsigned>(value.month)),
                                           std::chrono::day(static_cast<unsigned>(value.day)))) +
      std::chrono::days(days);
  const year_month_day date(moved);
  DateTimeValue result = value;
  result.year = static_cast<int>(date.year());
  result.month = static_cast<int>(static_cast<unsigned>(date.month()));
  result.day = static_cast<int>(static_cast<unsigned>(date.day()));
  return result;
}

}  // namespace dbkeeper
