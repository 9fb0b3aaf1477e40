#include "server/types/datetime.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};

// A part is so many months, or so many ticks.
struct PartRow {
  std::string_view names[3];
  int months;
  std::int64_t ticks;
};
constexpr PartRow kParts[] = {{{"year", "yy", "yyyy"}, 12, 0},
                              {{"quarter", "qq", "q"}, 3, 0},
                              {{"month", "mm", "m"}, 1, 0},
                              {{"dayofyear", "dy", "y"}, 0, kTicksPerDay},
                              {{"day", "dd", "d"}, 0, kTicksPerDay},
                              {{"week", "wk", "ww"}, 0, 7 * kTicksPerDay},
                              {{"weekday", "dw", "w"}, 0, kTicksPerDay},
                              {{"hour", "hh", "hh"}, 0, 60 * kTicksPerMinute},
                              {{"minute", "mi", "n"}, 0, kTicksPerMinute},
                              {{"second", "ss", "s"}, 0, kTicksPerSecond},
                              {{"millisecond", "ms", "ms"}, 0, 1}};

const PartRow* FindPart(std::string_view name) {
  const auto* const row = std::ranges::find_if(kParts, [name](const PartRow& each) {
    return std::ranges::find(each.names, name) != std::end(each.names);
  });
  return row == std::end(kParts) ? nullptr : row;
}

// Letters of a pattern: Y year, y of two digits, M month, N month's short name, D day, e day padded
// with a blank, H hour of 24, h hour of 12 padded, I minute, S second, L millisecond, P AM or PM.
// Those below 22 stand for the style that is higher by 100 too, which writes all years in full.
struct StyleRow {
  int style;
  std::string_view pattern;
};
constexpr int kAlone = 22;
constexpr StyleRow kStyles[] = {
    {0, "N e Y h:IP"},     {1, "M/D/y"},          {2, "y.M.D"},           {3, "D/M/y"},
    {4, "D.M.y"},          {5, "D-M-y"},          {6, "D N y"},           {7, "N D, y"},
    {8, "H:I:S"},          {9, "N e Y h:I:S:LP"}, {10, "M-D-y"},          {11, "y/M/D"},
    {12, "yMD"},           {13, "D N Y H:I:S:L"}, {14, "H:I:S:L"},        {20, "Y-M-D H:I:S"},
    {21, "Y-M-D H:I:S.L"}, {22, "M/D/y h:I:S P"}, {126, "Y-M-DTH:I:S.L"},
};

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days kFirstDay = std::chrono::year(1900) / 1 / 1;

// Days since 1900-01-01 of the proleptic Gregorian calendar.
constexpr std::int64_t DaysFromCivil(int year, int month, int day) {
  return (sys_days(std::chrono::year(year) / month / day) - kFirstDay).count();
}

std::int64_t FloorDivide(std::int64_t value, std::int64_t by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

// Sunday is 0.
int WeekdayOf(std::int64_t day) {
  return static_cast<int>(std::chrono::weekday(kFirstDay + std::chrono::days(day)).c_encoding());
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return c >= 'a' && c <= 'z'; }

// Reads a text without regard to case; throws the DateFault that it finds.
class DateReader {
 public:
  DateReader(std::string_view text, DateOrder order) : text_(ToLowerAscii(text)), order_(order) {}

  std::int64_t Run() {
    while (SkipBlanks()) Step();
    FinishDate();
    const bool sound = civil_.year >= 1753 && civil_.year <= 9999 && civil_.month >= 1 &&
                       civil_.month <= 12 && civil_.day >= 1 &&
                       civil_.day <= DaysInMonth(civil_.year, civil_.month) && civil_.hour < 24 &&
                       civil_.minute < 60 && civil_.second < 60;
    if (!sound) throw DateFault::kRange;
    const std::int64_t time = FromCivil(civil_) + carry_;
    if (!InDateTimeRange(time)) throw DateFault::kRange;
    return time;
  }

 private:
  struct Number {
    int value = 0;
    std::size_t digits = 0;
  };

  static void Expect(bool sound) {
    if (!sound) throw DateFault::kSyntax;
  }

  bool SkipBlanks() {
    position_ = std::min(text_.find_first_not_of(" ,", position_), text_.size());
    return position_ < text_.size();
  }

  std::string_view Rest() const { return std::string_view(text_).substr(position_); }
  char At() const { return position_ < text_.size() ? text_[position_] : '\0'; }

  // Takes one of the characters, if one comes; else 0.
  char Take(std::string_view characters) {
    const char c = At();
    if (c == '\0' || characters.find(c) == std::string_view::npos) return '\0';
    ++position_;
    return c;
  }

  Number ReadNumber() {
    Number number;
    for (; IsDigit(At()); ++position_) {
      if (number.digits++ < 9) number.value = number.value * 10 + (At() - '0');
    }
    return number;
  }

  void Step() {
    if (IsLetter(At())) return ReadWord();
    Expect(IsDigit(At()));
    const Number number = ReadNumber();
    if (At() == ':' || HalfLength() > 0) {
      ReadTime(number.value);
    } else if (number.digits > 4 || (number.digits == 4 && numbers_ == 0 && IsWholeDate())) {
      ReadPacked(number);
    } else {
      Expect(numbers_ < found_.size());
      found_[numbers_++] = number;
      Take("/-.");
    }
  }

  // Of "AM" or "PM" as in "10AM", "10 pm", with the blank; 0 when there is none.
  std::size_t HalfLength() const {
    const std::size_t blank = At() == ' ' ? 1 : 0;
    const std::string_view rest = Rest().substr(blank);
    const bool half = rest.starts_with("am") || rest.starts_with("pm");
    return half && (rest.size() == 2 || !IsLetter(rest[2])) ? blank + 2 : 0;
  }

  // Four digits alone are a year, before a time or a text's end.
  bool IsWholeDate() const {
    const std::string_view rest = Rest();
    return month_word_ == 0 && rest.find_first_of("/-.") == std::string_view::npos &&
           (rest.find_first_not_of(' ') == std::string_view::npos ||
            rest.find(':') != std::string_view::npos);
  }

  void ReadWord() {
    const std::string_view rest = Rest();
    const auto* const end = std::ranges::find_if_not(rest, IsLetter);
    const std::string_view word(rest.begin(), end);
    position_ += word.size();
    // The "T" of ISO 8601 stands between date and time.
    if (word == "t" && numbers_ == 3) return;
    const auto* const month = std::ranges::find_if(kMonths, [word](std::string_view name) {
      return (word.size() == 3 || word.size() == name.size()) &&
             ToLowerAscii(name).starts_with(word);
    });
    Expect(month != kMonths.end() && month_word_ == 0);
    month_word_ = static_cast<int>(month - kMonths.begin()) + 1;
    while (Take("-/.") != '\0') {
    }
  }

  // yyyymmdd, yymmdd, yyyy
  void ReadPacked(const Number& number) {
    const bool year_alone = number.digits == 4;
    Expect(numbers_ == 0 && month_word_ == 0 &&
           (year_alone || number.digits == 6 || number.digits == 8));
    SetYear({number.value / (year_alone ? 1 : 10000), number.digits == 6 ? 2U : 4U});
    if (!year_alone) {
      civil_.month = number.value / 100 % 100;
      civil_.day = number.value % 100;
    }
    numbers_ = found_.size();
    packed_ = true;
  }

  void ReadTime(int hour) {
    Expect(!time_seen_);
    time_seen_ = true;
    civil_.hour = hour;
    bool sound = true;
    const auto read = [&](std::size_t most_digits) {
      const Number number = ReadNumber();
      sound = sound && number.digits > 0 && number.digits <= most_digits;
      return number;
    };
    if (Take(":") != '\0') {
      civil_.minute = read(2).value;
      if (Take(":") != '\0') {
        civil_.second = read(2).value;
        // ".5" is half a second, ":5" are five milliseconds.
        if (const char separator = Take(".:"); separator != '\0') {
          Number fraction = read(3);
          for (; separator == '.' && fraction.digits < 3; ++fraction.digits) fraction.value *= 10;
          // 999 ms are a whole second in 1/300 s.
          if (sound) carry_ = TicksOfMilliseconds(fraction.value);
        }
      }
    }
    ReadHalf();
    Expect(sound);
  }

  void ReadHalf() {
    const std::size_t length = HalfLength();
    if (length == 0) return;
    position_ += length;
    const bool afternoon = text_[position_ - 2] == 'p';
    if (civil_.hour == 0 && !afternoon) return;
    if (civil_.hour < 1 || civil_.hour > 12) throw DateFault::kRange;
    civil_.hour = civil_.hour % 12 + (afternoon ? 12 : 0);
  }

  void FinishDate() {
    if (packed_ || (numbers_ == 0 && month_word_ == 0)) return;
    const bool long_first = found_[0].digits > 2;
    if (month_word_ != 0) {
      // "Jan 2 2004", "2 Jan 2004", "2004 Jan 2", "Jan 2004".
      Expect(numbers_ == 2 || (numbers_ == 1 && long_first));
      civil_.month = month_word_;
      if (numbers_ == 2) civil_.day = found_[long_first ? 1 : 0].value;
      return SetYear(found_[long_first ? 0 : 1]);
    }
    Expect(numbers_ == 3);
    const bool year_first = long_first || order_ == DateOrder::kYearMonthDay;
    const bool day_first = !year_first && order_ == DateOrder::kDayMonthYear;
    civil_.month = found_[year_first || day_first ? 1 : 0].value;
    civil_.day = found_[year_first ? 2 : day_first ? 0 : 1].value;
    SetYear(found_[year_first ? 0 : 2]);
  }

  // Two digits of a year stand for 1950 to 2049.
  void SetYear(const Number& year) {
    Expect(year.digits != 3);
    civil_.year = year.value + (year.digits > 2 ? 0 : year.value < 50 ? 2000 : 1900);
  }

  const std::string text_;
  const DateOrder order_;
  std::size_t position_ = 0;
  CivilTime civil_;
  std::array<Number, 3> found_{};
  std::size_t numbers_ = 0;
  int month_word_ = 0;
  int carry_ = 0;
  bool packed_ = false;
  bool time_seen_ = false;
};

struct NumberRow {
  char letter;
  std::size_t width;
  char fill;
  int (*value)(const CivilTime& civil);
};
constexpr NumberRow kNumbers[] = {
    {'Y', 4, '0', [](const CivilTime& civil) { return civil.year; }},
    {'y', 2, '0', [](const CivilTime& civil) { return civil.year % 100; }},
    {'M', 2, '0', [](const CivilTime& civil) { return civil.month; }},
    {'D', 2, '0', [](const CivilTime& civil) { return civil.day; }},
    {'e', 2, ' ', [](const CivilTime& civil) { return civil.day; }},
    {'H', 2, '0', [](const CivilTime& civil) { return civil.hour; }},
    {'h', 2, ' ', [](const CivilTime& civil) { return (civil.hour + 11) % 12 + 1; }},
    {'I', 2, '0', [](const CivilTime& civil) { return civil.minute; }},
    {'S', 2, '0', [](const CivilTime& civil) { return civil.second; }},
    {'L', 3, '0', [](const CivilTime& civil) { return Milliseconds(civil.ticks); }},
};

std::string FormatPart(char letter, const CivilTime& civil) {
  if (letter == 'N') {
    return std::string(kMonths[static_cast<std::size_t>(civil.month - 1)].substr(0, 3));
  }
  if (letter == 'P') return civil.hour < 12 ? "AM" : "PM";
  const auto* const row = std::ranges::find(kNumbers, letter, &NumberRow::letter);
  if (row == std::end(kNumbers)) return std::string(1, letter);
  std::string text = std::to_string(row->value(civil));
  return text.insert(0, row->width - std::min(row->width, text.size()), row->fill);
}

std::int64_t MillisecondsOf(std::int64_t time) {
  const CivilTime civil = ToCivil(time);
  const std::int64_t seconds = (time - civil.ticks) / kTicksPerSecond;
  return seconds * 1000 + Milliseconds(civil.ticks);
}

// Of the years since the year 0.
std::int64_t MonthOf(const CivilTime& civil) { return civil.year * 12 + civil.month - 1; }

}  // namespace

std::int64_t DayOf(std::int64_t time) { return FloorDivide(time, kTicksPerDay); }

int DaysInMonth(int year, int month) {
  const year_month_day last(std::chrono::year(year) / month / std::chrono::last);
  return static_cast<int>(static_cast<unsigned>(last.day()));
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
  const int form = style % 100;
  if (form >= 3 && form <= 5) return DateOrder::kDayMonthYear;
  return form == 2 || form == 11 ? DateOrder::kYearMonthDay : DateOrder::kMonthDayYear;
}

ParsedDate ParseDateTime(std::string_view text, DateOrder order) {
  try {
    return {DateReader(text, order).Run(), std::nullopt};
  } catch (const DateFault fault) {
    return {0, fault};
  }
}

std::optional<std::string> FormatDateTime(std::int64_t time, int style) {
  const CivilTime civil = ToCivil(time);
  const bool in_full = style >= 100 && style < 100 + kAlone;
  const auto* const row =
      std::ranges::find(kStyles, in_full ? style - 100 : style, &StyleRow::style);
  if (row == std::end(kStyles)) return std::nullopt;
  std::string text;
  for (const char letter : row->pattern) {
    text += FormatPart(in_full && letter == 'y' ? 'Y' : letter, civil);
  }
  return text;
}

std::string_view DatePartName(std::string_view word) {
  const PartRow* const row = FindPart(ToLowerAscii(word));
  return row == nullptr ? "" : row->names[0];
}

std::optional<std::int64_t> DateAdd(std::string_view part, std::int64_t count, std::int64_t time) {
  constexpr std::int64_t kMostMonths = 120000;
  const PartRow& row = *FindPart(part);
  std::int64_t result = 0;
  if (row.months > 0) {
    if (count < -kMostMonths || count > kMostMonths) return std::nullopt;
    CivilTime civil = ToCivil(time);
    const std::int64_t months = MonthOf(civil) + count * row.months;
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
  } else if (__builtin_mul_overflow(count, row.ticks, &result) ||
             __builtin_add_overflow(result, time, &result)) {
    return std::nullopt;
  }
  if (!InDateTimeRange(result)) return std::nullopt;
  return result;
}

// Counts the boundaries between the two, not whole units.
std::int64_t DateDiff(std::string_view part, std::int64_t from, std::int64_t to) {
  const PartRow& row = *FindPart(part);
  if (row.months > 0) {
    return MonthOf(ToCivil(to)) / row.months - MonthOf(ToCivil(from)) / row.months;
  }
  if (part == "millisecond") return MillisecondsOf(to) - MillisecondsOf(from);
  // Weeks begin on Sunday: the day before 1900-01-01.
  const std::int64_t begin = part == "week" ? kTicksPerDay : 0;
  return FloorDivide(to + begin, row.ticks) - FloorDivide(from + begin, row.ticks);
}

int DatePart(std::string_view part, std::int64_t time) {
  const CivilTime civil = ToCivil(time);
  const std::int64_t first = DaysFromCivil(civil.year, 1, 1);
  const auto day_of_year = static_cast<int>(DayOf(time) - first) + 1;
  if (part == "year") return civil.year;
  if (part == "quarter") return (civil.month + 2) / 3;
  if (part == "month") return civil.month;
  if (part == "dayofyear") return day_of_year;
  if (part == "day") return civil.day;
  if (part == "weekday") return WeekdayOf(DayOf(time)) + 1;
  if (part == "week") return (day_of_year + WeekdayOf(first) - 1) / 7 + 1;
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
