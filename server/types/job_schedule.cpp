#include "server/types/job_schedule.h"

#include <algorithm>
#include <chrono>

#include "server/types/datetime.h"

namespace dbkeeper::server {

namespace {

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::months;
using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int kDaysAhead = 3660;  // a 29th of February is at most eight years away
constexpr int kLastOfMonth = 16;

int NumberOf(const year_month_day& date) {
  return static_cast<int>(date.year()) * 10000 +
         static_cast<int>(static_cast<unsigned>(date.month())) * 100 +
         static_cast<int>(static_cast<unsigned>(date.day()));
}

year_month_day DateOf(int number) {
  return {year(number / 10000), month(static_cast<unsigned>(number / 100 % 100)),
          day(static_cast<unsigned>(number % 100))};
}

// Every so many of what has passed since the start; a factor below one counts as one.
bool IsTurn(std::int64_t passed, int factor) { return passed % std::max(factor, 1) == 0; }

std::int64_t MonthsBetween(const year_month_day& from, const year_month_day& to) {
  return (to.year() / to.month() - from.year() / from.month()).count();
}

std::int64_t WeeksBetween(sys_days from, sys_days to) {
  const auto sunday = [](sys_days of) { return of - days(weekday(of).c_encoding()); };
  return (sunday(to) - sunday(from)).count() / 7;
}

// Whether the interval of a schedule by weekday means this kind of day.
bool Means(int interval, sys_days date) {
  constexpr int kAnyDay = 8;
  constexpr int kWorkingDay = 9;
  constexpr int kWeekendDay = 10;
  const auto of_week = static_cast<int>(weekday(date).c_encoding());  // Sunday is 0
  const bool weekend = of_week == 0 || of_week == 6;
  switch (interval) {
    case kAnyDay:
      return true;
    case kWorkingDay:
      return !weekend;
    case kWeekendDay:
      return weekend;
    default:
      return interval == of_week + 1;
  }
}

// Whether the day is the first, second ... or last of its kind in its month.
bool IsWhichOfMonth(const JobSchedule& schedule, sys_days date) {
  if (!Means(schedule.freq_interval, date)) return false;
  const month of = year_month_day(date).month();
  const bool last = schedule.freq_relative_interval == kLastOfMonth;
  const days step(last ? 1 : -1);
  int others = 0;
  for (sys_days d = date + step; year_month_day(d).month() == of; d += step) {
    if (Means(schedule.freq_interval, d)) ++others;
  }
  return last ? others == 0 : schedule.freq_relative_interval == 1 << others;
}

bool RunsOn(const JobSchedule& schedule, sys_days date) {
  const year_month_day start = DateOf(schedule.start_date);
  const year_month_day civil(date);
  const int factor = schedule.freq_recurrence_factor;
  switch (schedule.freq_type) {
    case Frequency::kOnce:
      return civil == start;
    case Frequency::kDaily:
      return IsTurn((date - sys_days(start)).count(), schedule.freq_interval);
    case Frequency::kWeekly:
      return (schedule.freq_interval >> weekday(date).c_encoding() & 1) != 0 &&
             IsTurn(WeeksBetween(sys_days(start), date), factor);
    case Frequency::kMonthly:
      return static_cast<int>(static_cast<unsigned>(civil.day())) == schedule.freq_interval &&
             IsTurn(MonthsBetween(start, civil), factor);
    case Frequency::kMonthlyByWeekday:
      return IsWhichOfMonth(schedule, date) && IsTurn(MonthsBetween(start, civil), factor);
    default:
      return false;
  }
}

}  // namespace

AgentTime ToAgentTime(std::int64_t time) {
  const CivilTime civil = ToCivil(time);
  return {civil.year * 10000 + civil.month * 100 + civil.day,
          civil.hour * 10000 + civil.minute * 100 + civil.second};
}

std::int64_t FromAgentTime(const AgentTime& time) {
  return FromCivil({time.date / 10000, time.date / 100 % 100, time.date % 100, time.time / 10000,
                    time.time / 100 % 100, time.time % 100, 0});
}

bool IsAgentDate(std::int64_t date) {
  constexpr std::int64_t kFirst = 19900101;
  constexpr std::int64_t kLast = 99991231;
  return date >= kFirst && date <= kLast && DateOf(static_cast<int>(date)).ok();
}

bool IsAgentClock(std::int64_t time) {
  return time >= 0 && time / 10000 < 24 && time / 100 % 100 < 60 && time % 100 < 60;
}

AgentTime NextRun(const JobSchedule& schedule, const AgentTime& after) {
  sys_days date(DateOf(std::max(after.date, schedule.start_date)));
  for (int i = 0; i < kDaysAhead; ++i, date += days(1)) {
    const AgentTime due{NumberOf(year_month_day(date)), schedule.start_time};
    if (due.date > schedule.end_date) break;
    if (due > after && RunsOn(schedule, date)) return due;
  }
  return {};
}

}  // namespace dbkeeper::server
