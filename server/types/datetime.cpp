#include "server/types/datetime.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

namespace dbkeeper::server {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};

struct PartRow {
  std::string_view name;
  std::string_view short_name;
  std::string_view shortest_name;
};
constexpr PartRow kParts[] = {
    {"year", "yy", "yyyy"},   {"quarter", "qq", "q"},     {"month", "mm", "m"},
    {"dayofyear", "dy", "y"}, {"day", "dd", "d"},         {"week", "wk", "ww"},
    {"weekday", "dw", "w"},   {"hour", "hh", "hh"},       {"minute", "mi", "n"},
    {"second", "ss", "s"},    {"millisecond", "ms", "ms"}};

// Letters of a pattern: Y year, y of two digits, M month, N month's short name, D day, e day padded
// with a blank, H hour of 24, h hour of 12 padded, k hour of 12 with a zero, I minute, S second,
// L millisecond, P AM or PM.
struct StyleRow {
  int style;
  std::string_view pattern;
};
constexpr StyleRow kStyles[] = {
    {0, "N e Y h:IP"},     {1, "M/D/y"},          {2, "y.M.D"},           {3, "D/M/y"},
    {4, "D.M.y"},          {5, "D-M-y"},          {6, "D N y"},           {7, "N D, y"},
    {8, "H:I:S"},          {9, "N e Y h:I:S:LP"}, {10, "M-D-y"},          {11, "y/M/D"},
    {12, "yMD"},           {13, "D N Y H:I:S:L"}, {14, "H:I:S:L"},        {20, "Y-M-D H:I:S"},
    {21, "Y-M-D H:I:S.L"}, {22, "M/D/y h:I:S P"}, {100, "N e Y h:IP"},    {101, "M/D/Y"},
    {102, "Y.M.D"},        {103, "D/M/Y"},        {104, "D.M.Y"},         {105, "D-M-Y"},
    {106, "D N Y"},        {107, "N D, Y"},       {108, "H:I:S"},         {109, "N e Y h:I:S:LP"},
    {110, "M-D-Y"},        {111, "Y/M/D"},        {112, "YMD"},           {113, "D N Y H:I:S:L"},
    {114, "H:I:S:L"},      {120, "Y-M-D H:I:S"},  {121, "Y-M-D H:I:S.L"}, {126, "Y-M-DTH:I:S.L"},
};

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days kFirstDay = std::chrono::year(1900) / 1 / 1;

// Days since 1900-01-01 of the proleptic Gregorian calendar.
std::int64_t DaysFromCivil(int year, int month, int day) {
  const year_month_day date(std::chrono::year(year),
                            std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day)));
  return (sys_days(date) - kFirstDay).count();
}

std::int64_t FloorDivide(std::int64_t value, std::int64_t by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

std::int64_t DayOf(std::int64_t time) { return FloorDivide(time, kTicksPerDay); }

// Sunday is 0; 1900-01-01 was a Monday.
int WeekdayOf(std::int64_t day) { return static_cast<int>(((day + 1) % 7 + 7) % 7); }

std::string Padded(int number, int width, char fill = '0') {
  std::string text = std::to_string(number);
  if (text.size() < static_cast<std::size_t>(width)) {
    text.insert(0, static_cast<std::size_t>(width) - text.size(), fill);
  }
  return text;
}

char LowerOf(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool StartsWithoutCase(std::string_view text, std::string_view word) {
  return text.size() >= word.size() &&
         std::equal(word.begin(), word.end(), text.begin(),
                    [](char l, char r) { return LowerOf(l) == LowerOf(r); });
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Two digits of a year stand for 1950 to 2049.
int FullYear(int year, std::size_t digits) {
  if (digits > 2) return year;
  return year < 50 ? 2000 + year : 1900 + year;
}

class DateReader {
 public:
  DateReader(std::string_view text, DateOrder order) : text_(text), order_(order) {}

  ParsedDate Run() {
    ParsedDate parsed;
    while (!fault_ && SkipTo()) Step();
    if (!fault_) FinishDate();
    if (!fault_ && !InRange()) fault_ = DateFault::kRange;
    parsed.fault = fault_;
    if (!fault_) parsed.time = FromCivil(civil_) + carry_;
    if (!fault_ && !InDateTimeRange(parsed.time)) parsed.fault = DateFault::kRange;
    return parsed;
  }

 private:
  struct Number {
    int value = 0;
    std::size_t digits = 0;
  };

  bool SkipTo() {
    while (position_ < text_.size() && (text_[position_] == ' ' || text_[position_] == ',')) {
      ++position_;
    }
    return position_ < text_.size();
  }

  char At(std::size_t ahead = 0) const {
    return position_ + ahead < text_.size() ? text_[position_ + ahead] : '\0';
  }

  void Fail(DateFault fault = DateFault::kSyntax) { fault_ = fault; }

  Number ReadNumber() {
    Number number;
    while (IsDigit(At())) {
      if (number.digits < 9) number.value = number.value * 10 + (At() - '0');
      ++number.digits;
      ++position_;
    }
    return number;
  }

  void Step() {
    if (IsLetter(At())) {
      ReadWord();
    } else if (IsDigit(At())) {
      const std::size_t begin = position_;
      const Number number = ReadNumber();
      if (At() == ':' || NextIsHalf()) {
        position_ = begin;
        ReadTime();
      } else if (number.digits > 4 || (number.digits == 4 && numbers_ == 0 && IsWholeDate())) {
        ReadPacked(begin, number.digits);
      } else {
        ReadDateNumber(number);
      }
    } else {
      Fail();
    }
  }

  // "10AM", "10 pm"
  bool NextIsHalf() const {
    const std::size_t skip = At() == ' ' ? 1 : 0;
    const std::string_view rest = text_.substr(std::min(position_ + skip, text_.size()));
    return (StartsWithoutCase(rest, "AM") || StartsWithoutCase(rest, "PM")) &&
           (rest.size() == 2 || !IsLetter(rest[2]));
  }

  // Four digits alone are a year, before a time or a text's end.
  bool IsWholeDate() const {
    const std::string_view rest = text_.substr(position_);
    const std::size_t next = rest.find_first_not_of(' ');
    return month_word_ == 0 && (next == std::string_view::npos || rest.find(':') < rest.size()) &&
           rest.find_first_of("/-.") == std::string_view::npos;
  }

  void ReadWord() {
    const std::string_view rest = text_.substr(position_);
    std::size_t length = 0;
    while (length < rest.size() && IsLetter(rest[length])) ++length;
    const std::string_view word = rest.substr(0, length);
    // The "T" of ISO 8601 stands between date and time.
    if (length == 1 && LowerOf(word[0]) == 't' && numbers_ == 3) {
      ++position_;
      return;
    }
    for (std::size_t i = 0; i < kMonths.size(); ++i) {
      const bool full = word.size() == kMonths[i].size() && StartsWithoutCase(word, kMonths[i]);
      const bool brief = word.size() == 3 && StartsWithoutCase(kMonths[i], word);
      if (!full && !brief) continue;
      if (month_word_ != 0) break;
      month_word_ = static_cast<int>(i) + 1;
      position_ += length;
      while (At() == '-' || At() == '/' || At() == '.') ++position_;
      return;
    }
    Fail();
  }

  void ReadDateNumber(const Number& number) {
    if (numbers_ == 3 || number.digits > 4) {
      Fail();
      return;
    }
    found_[numbers_++] = number;
    if (At() == '/' || At() == '-' || At() == '.') ++position_;
  }

  // yyyymmdd, yymmdd, yyyy
  void ReadPacked(std::size_t begin, std::size_t digits) {
    if (numbers_ > 0 || month_word_ != 0 || (digits != 8 && digits != 6 && digits != 4)) {
      Fail();
      return;
    }
    const auto part = [&](std::size_t from, std::size_t count) {
      int value = 0;
      for (std::size_t i = 0; i < count; ++i) value = value * 10 + (text_[begin + from + i] - '0');
      return value;
    };
    const std::size_t year_digits = digits == 6 ? 2 : 4;
    civil_.year = FullYear(part(0, year_digits), year_digits);
    if (digits > 4) {
      civil_.month = part(year_digits, 2);
      civil_.day = part(year_digits + 2, 2);
    }
    numbers_ = 3;
    packed_ = true;
  }

  void ReadTime() {
    if (time_seen_) {
      Fail();
      return;
    }
    time_seen_ = true;
    civil_.hour = ReadNumber().value;
    if (At() == ':') {
      ++position_;
      civil_.minute = ReadTimeNumber();
      if (At() == ':') {
        ++position_;
        civil_.second = ReadTimeNumber();
        ReadFraction();
      }
    }
    ReadHalf();
  }

  int ReadTimeNumber() {
    const Number number = ReadNumber();
    if (number.digits == 0 || number.digits > 2) Fail();
    return number.value;
  }

  // ".5" is half a second, ":5" are five milliseconds.
  void ReadFraction() {
    const char separator = At();
    if (separator != '.' && separator != ':') return;
    ++position_;
    const Number number = ReadNumber();
    if (number.digits == 0 || number.digits > 3) {
      Fail();
      return;
    }
    int milliseconds = number.value;
    for (std::size_t i = number.digits; separator == '.' && i < 3; ++i) milliseconds *= 10;
    // 999 ms are a whole second in 1/300 s.
    carry_ = TicksOfMilliseconds(milliseconds);
  }

  void ReadHalf() {
    if (At() == ' ' && !NextIsHalf()) return;
    if (!NextIsHalf()) return;
    if (At() == ' ') ++position_;
    const bool afternoon = LowerOf(At()) == 'p';
    position_ += 2;
    if (civil_.hour < 1 || civil_.hour > 12) {
      if (afternoon || civil_.hour != 0) Fail(DateFault::kRange);
      return;
    }
    civil_.hour = civil_.hour % 12 + (afternoon ? 12 : 0);
  }

  void FinishDate() {
    if (packed_) return;
    if (month_word_ != 0) {
      FinishNamedMonth();
      return;
    }
    if (numbers_ == 0) return;
    if (numbers_ != 3) {
      Fail();
      return;
    }
    const bool year_first = found_[0].digits > 2 || order_ == DateOrder::kYearMonthDay;
    const bool day_first = !year_first && order_ == DateOrder::kDayMonthYear;
    const Number& year = year_first ? found_[0] : found_[2];
    civil_.month = (year_first || day_first ? found_[1] : found_[0]).value;
    civil_.day = (year_first ? found_[2] : day_first ? found_[0] : found_[1]).value;
    SetYear(year);
  }

  // "Jan 2 2004", "2 Jan 2004", "2004 Jan 2", "Jan 2004".
  void FinishNamedMonth() {
    civil_.month = month_word_;
    if (numbers_ == 0 || numbers_ == 3) {
      Fail();
      return;
    }
    if (numbers_ == 1) {
      if (found_[0].digits < 3) {
        Fail();
        return;
      }
      SetYear(found_[0]);
      return;
    }
    const bool year_first = found_[0].digits > 2;
    civil_.day = found_[year_first ? 1 : 0].value;
    SetYear(found_[year_first ? 0 : 1]);
  }

  void SetYear(const Number& year) {
    if (year.digits == 3) Fail();
    civil_.year = FullYear(year.value, year.digits);
  }

  bool InRange() const {
    return civil_.year >= 1753 && civil_.year <= 9999 && civil_.month >= 1 && civil_.month <= 12 &&
           civil_.day >= 1 && civil_.day <= DaysInMonth(civil_.year, civil_.month) &&
           civil_.hour < 24 && civil_.minute < 60 && civil_.second < 60;
  }

  std::string_view text_;
  DateOrder order_;
  std::size_t position_ = 0;
  CivilTime civil_;
  std::array<Number, 3> found_{};
  std::size_t numbers_ = 0;
  int month_word_ = 0;
  int carry_ = 0;
  bool packed_ = false;
  bool time_seen_ = false;
  std::optional<DateFault> fault_;
};

std::string FormatPart(char letter, const CivilTime& civil) {
  const int twelve = civil.hour % 12 == 0 ? 12 : civil.hour % 12;
  switch (letter) {
    case 'Y':
      return Padded(civil.year, 4);
    case 'y':
      return Padded(civil.year % 100, 2);
    case 'M':
      return Padded(civil.month, 2);
    case 'N':
      return std::string(kMonths[static_cast<std::size_t>(civil.month - 1)].substr(0, 3));
    case 'D':
      return Padded(civil.day, 2);
    case 'e':
      return Padded(civil.day, 2, ' ');
    case 'H':
      return Padded(civil.hour, 2);
    case 'h':
      return Padded(twelve, 2, ' ');
    case 'I':
      return Padded(civil.minute, 2);
    case 'S':
      return Padded(civil.second, 2);
    case 'L':
      return Padded(Milliseconds(civil.ticks), 3);
    case 'P':
      return civil.hour < 12 ? "AM" : "PM";
    default:
      return std::string(1, letter);
  }
}

struct UnitRow {
  std::string_view part;
  std::int64_t ticks;
};
constexpr UnitRow kUnits[] = {{"week", 7 * kTicksPerDay},     {"dayofyear", kTicksPerDay},
                              {"day", kTicksPerDay},          {"weekday", kTicksPerDay},
                              {"hour", 60 * kTicksPerMinute}, {"minute", kTicksPerMinute},
                              {"second", kTicksPerSecond}};

std::int64_t UnitOf(std::string_view part) {
  for (const UnitRow& row : kUnits) {
    if (row.part == part) return row.ticks;
  }
  return 1;
}

int MonthsOf(std::string_view part) { return part == "year" ? 12 : part == "quarter" ? 3 : 1; }

bool IsMonthPart(std::string_view part) {
  return part == "year" || part == "quarter" || part == "month";
}

std::int64_t MillisecondsOf(std::int64_t time) {
  const CivilTime civil = ToCivil(time);
  const std::int64_t seconds = (time - civil.ticks) / kTicksPerSecond;
  return seconds * 1000 + Milliseconds(civil.ticks);
}

int DayOfYear(const CivilTime& civil) {
  return static_cast<int>(DaysFromCivil(civil.year, civil.month, civil.day) -
                          DaysFromCivil(civil.year, 1, 1)) +
         1;
}

}  // namespace

int DaysInMonth(int year, int month) {
  return static_cast<int>(DaysFromCivil(month == 12 ? year + 1 : year, month % 12 + 1, 1) -
                          DaysFromCivil(year, month, 1));
}

int Milliseconds(int ticks) { return (ticks * 10 + 1) / 3; }

int TicksOfMilliseconds(int milliseconds) { return (milliseconds * 3 + 5) / 10; }

CivilTime ToCivil(std::int64_t time) {
  const std::int64_t day = DayOf(time);
  const std::int64_t ticks = time - day * kTicksPerDay;
  const year_month_day date(kFirstDay + std::chrono::days(day));
  CivilTime civil;
  civil.day = static_cast<int>(static_cast<unsigned>(date.day()));
  civil.month = static_cast<int>(static_cast<unsigned>(date.month()));
  civil.year = static_cast<int>(date.year());
  civil.hour = static_cast<int>(ticks / (60 * kTicksPerMinute));
  civil.minute = static_cast<int>(ticks / kTicksPerMinute % 60);
  civil.second = static_cast<int>(ticks / kTicksPerSecond % 60);
  civil.ticks = static_cast<int>(ticks % kTicksPerSecond);
  return civil;
}

std::int64_t FromCivil(const CivilTime& civil) {
  return DaysFromCivil(civil.year, civil.month, civil.day) * kTicksPerDay +
         (civil.hour * 60 + civil.minute) * kTicksPerMinute + civil.second * kTicksPerSecond +
         civil.ticks;
}

std::int64_t CurrentTime() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  localtime_r(&seconds, &local);
  const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(
      now - std::chrono::system_clock::from_time_t(seconds));
  return FromCivil({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                    local.tm_min, local.tm_sec, static_cast<int>(rest.count() * 3 / 10)});
}

bool InDateTimeRange(std::int64_t time) {
  return time >= FromCivil({1753, 1, 1, 0, 0, 0, 0}) &&
         time <= FromCivil({9999, 12, 31, 23, 59, 59, 299});
}

bool InSmallDateTimeRange(std::int64_t time) {
  return time >= 0 && time <= FromCivil({2079, 6, 6, 23, 59, 0, 0});
}

DateOrder OrderOfStyle(int style) {
  switch (style % 100) {
    case 3:
    case 4:
    case 5:
      return DateOrder::kDayMonthYear;
    case 2:
    case 11:
      return DateOrder::kYearMonthDay;
    default:
      return DateOrder::kMonthDayYear;
  }
}

ParsedDate ParseDateTime(std::string_view text, DateOrder order) {
  return DateReader(text, order).Run();
}

std::optional<std::string> FormatDateTime(std::int64_t time, int style) {
  const CivilTime civil = ToCivil(time);
  for (const StyleRow& row : kStyles) {
    if (row.style != style) continue;
    std::string text;
    for (const char letter : row.pattern) text += FormatPart(letter, civil);
    return text;
  }
  return std::nullopt;
}

std::string_view DatePartName(std::string_view word) {
  const auto is = [&](std::string_view name) {
    return word.size() == name.size() && StartsWithoutCase(word, name);
  };
  for (const PartRow& row : kParts) {
    if (is(row.name) || is(row.short_name) || is(row.shortest_name)) return row.name;
  }
  return "";
}

std::optional<std::int64_t> DateAdd(std::string_view part, std::int64_t count, std::int64_t time) {
  constexpr std::int64_t kMostMonths = 120000;
  std::int64_t result = 0;
  if (IsMonthPart(part)) {
    if (count < -kMostMonths || count > kMostMonths) return std::nullopt;
    CivilTime civil = ToCivil(time);
    const std::int64_t months = civil.year * 12 + civil.month - 1 + count * MonthsOf(part);
    const std::int64_t year = FloorDivide(months, 12);
    if (year < 1753 || year > 9999) return std::nullopt;
    civil.year = static_cast<int>(year);
    civil.month = static_cast<int>(months - year * 12) + 1;
    civil.day = std::min(civil.day, DaysInMonth(civil.year, civil.month));
    result = FromCivil(civil);
  } else if (part == "millisecond") {
    const std::int64_t milliseconds = MillisecondsOf(time) + count;
    const std::int64_t seconds = FloorDivide(milliseconds, 1000);
    result = seconds * kTicksPerSecond +
             TicksOfMilliseconds(static_cast<int>(milliseconds - seconds * 1000));
  } else if (__builtin_mul_overflow(count, UnitOf(part), &result) ||
             __builtin_add_overflow(result, time, &result)) {
    return std::nullopt;
  }
  if (!InDateTimeRange(result)) return std::nullopt;
  return result;
}

// Counts the boundaries between the two, not whole units.
std::int64_t DateDiff(std::string_view part, std::int64_t from, std::int64_t to) {
  if (IsMonthPart(part)) {
    const CivilTime first = ToCivil(from);
    const CivilTime second = ToCivil(to);
    const int months = MonthsOf(part);
    return (second.year * 12 + second.month - 1) / months -
           (first.year * 12 + first.month - 1) / months;
  }
  if (part == "millisecond") return MillisecondsOf(to) - MillisecondsOf(from);
  if (part == "week") {
    // Weeks begin on Sunday: the day before 1900-01-01.
    return FloorDivide(DayOf(to) + 1, 7) - FloorDivide(DayOf(from) + 1, 7);
  }
  const std::int64_t unit = UnitOf(part);
  return FloorDivide(to, unit) - FloorDivide(from, unit);
}

int DatePart(std::string_view part, std::int64_t time) {
  const CivilTime civil = ToCivil(time);
  if (part == "year") return civil.year;
  if (part == "quarter") return (civil.month + 2) / 3;
  if (part == "month") return civil.month;
  if (part == "dayofyear") return DayOfYear(civil);
  if (part == "day") return civil.day;
  if (part == "weekday") return WeekdayOf(DayOf(time)) + 1;
  if (part == "week") {
    const std::int64_t first = DaysFromCivil(civil.year, 1, 1);
    return (DayOfYear(civil) + WeekdayOf(first) - 1) / 7 + 1;
  }
  if (part == "hour") return civil.hour;
  if (part == "minute") return civil.minute;
  if (part == "second") return civil.second;
  return Milliseconds(civil.ticks);
}

std::string DateName(std::string_view part, std::int64_t time) {
  const int value = DatePart(part, time);
  if (part == "month") return std::string(kMonths[static_cast<std::size_t>(value - 1)]);
  if (part == "weekday") return std::string(kWeekdays[static_cast<std::size_t>(value - 1)]);
  return std::to_string(value);
}

}  // namespace dbkeeper::server
