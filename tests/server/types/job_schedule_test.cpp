// When schedules are due, against dates read off a calendar.
#include "server/types/job_schedule.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>

#include "server/types/datetime.h"

namespace dbkeeper::server {
namespace {

constexpr int kForEver = 99991231;

struct Case {
  std::string_view what;
  JobSchedule schedule;  // type, interval, which of the month, factor, start, end, time
  AgentTime after;
  // The next runs in order, "yyyymmdd hhmmss" with a comma between; "never" ends them.
  std::string_view runs;
};

constexpr Case kCases[] = {
    {"once", {1, 0, 0, 0, 20050303, kForEver, 13000}, {20050301, 120000}, "20050303 13000, never"},
    {"once, later that day",
     {1, 0, 0, 0, 20050303, kForEver, 13000},
     {20050303, 12959},
     "20050303 13000"},
    {"once, at that second", {1, 0, 0, 0, 20050303, kForEver, 13000}, {20050303, 13000}, "never"},
    {"daily, today still",
     {4, 1, 0, 0, 20050101, kForEver, 10000},
     {20050301, 5959},
     "20050301 10000, 20050302 10000"},
    {"daily, today no more",
     {4, 1, 0, 0, 20050101, kForEver, 10000},
     {20050301, 10000},
     "20050302 10000"},
    {"daily over a leap day",
     {4, 1, 0, 0, 20040101, kForEver, 0},
     {20040228, 0},
     "20040229 0, 20040301 0"},
    {"daily over the end of February",
     {4, 1, 0, 0, 20050101, kForEver, 0},
     {20050228, 0},
     "20050301 0"},
    {"daily over the end of a year",
     {4, 1, 0, 0, 20050101, kForEver, 235959},
     {20051230, 235959},
     "20051231 235959, 20060101 235959"},
    {"daily, not before its start",
     {4, 1, 0, 0, 20060401, kForEver, 10000},
     {20050301, 0},
     "20060401 10000"},
    {"every third day from the start",
     {4, 3, 0, 0, 20050227, kForEver, 0},
     {20050227, 0},
     "20050302 0, 20050305 0"},
    {"daily until the end",
     {4, 1, 0, 0, 20050101, 20050302, 0},
     {20050301, 0},
     "20050302 0, never"},
    // 2005-03-01 is a Tuesday.
    {"weekly, Monday and Friday",
     {8, 34, 0, 1, 20050301, kForEver, 10000},
     {20050301, 0},
     "20050304 10000, 20050307 10000, 20050311 10000"},
    {"weekly, Sunday", {8, 1, 0, 1, 20050301, kForEver, 10000}, {20050301, 0}, "20050306 10000"},
    {"weekly, Saturday over the end of a month",
     {8, 64, 0, 1, 20050301, kForEver, 0},
     {20050326, 0},
     "20050402 0"},
    {"weekly, all days",
     {8, 127, 0, 1, 20050301, kForEver, 0},
     {20050305, 0},
     "20050306 0, 20050307 0"},
    {"every second week, Monday, counted from the start's week",
     {8, 2, 0, 2, 20050301, kForEver, 0},
     {20050301, 0},
     "20050314 0, 20050328 0"},
    {"weekly, Thursday of a leap week",
     {8, 16, 0, 1, 20040101, kForEver, 0},
     {20040226, 0},
     "20040304 0"},
    {"monthly, the 1st",
     {16, 1, 0, 1, 20050101, kForEver, 0},
     {20050301, 0},
     "20050401 0, 20050501 0"},
    {"monthly, the 31st skips short months",
     {16, 31, 0, 1, 20050101, kForEver, 0},
     {20050131, 0},
     "20050331 0, 20050531 0, 20050731 0, 20050831 0, 20051031 0"},
    {"monthly, the 30th skips February",
     {16, 30, 0, 1, 20050101, kForEver, 0},
     {20050130, 0},
     "20050330 0"},
    {"monthly, the 29th in a leap year",
     {16, 29, 0, 1, 20040101, kForEver, 0},
     {20040129, 0},
     "20040229 0, 20040329 0"},
    {"monthly, the 29th in a common year",
     {16, 29, 0, 1, 20050101, kForEver, 0},
     {20050129, 0},
     "20050329 0"},
    {"every twelfth month, the 29th of February",
     {16, 29, 0, 12, 20960201, kForEver, 0},
     {20960229, 0},
     "21040229 0"},
    {"every third month, the 15th",
     {16, 15, 0, 3, 20050101, kForEver, 0},
     {20050115, 0},
     "20050415 0, 20050715 0"},
    {"first Sunday",
     {32, 1, 1, 1, 20050101, kForEver, 10000},
     {20050301, 0},
     "20050306 10000, 20050403 10000, 20050501 10000"},
    {"second Tuesday",
     {32, 3, 2, 1, 20050101, kForEver, 0},
     {20050301, 0},
     "20050308 0, 20050412 0"},
    {"third Monday, on the 21st",
     {32, 2, 4, 1, 20050101, kForEver, 0},
     {20050301, 0},
     "20050321 0"},
    {"fourth Friday, not the last",
     {32, 6, 8, 1, 20050101, kForEver, 0},
     {20050401, 0},
     "20050422 0"},
    {"last Thursday, the fourth or the fifth",
     {32, 5, 16, 1, 20050101, kForEver, 0},
     {20050301, 0},
     "20050331 0, 20050428 0"},
    {"last Sunday of a leap February",
     {32, 1, 16, 1, 20040101, kForEver, 0},
     {20040201, 0},
     "20040229 0"},
    {"last Saturday of a common February",
     {32, 7, 16, 1, 20050101, kForEver, 0},
     {20050201, 0},
     "20050226 0"},
    {"fourth Saturday of December, over the year",
     {32, 7, 8, 1, 20050101, kForEver, 0},
     {20051224, 0},
     "20060128 0"},
    {"last day",
     {32, 8, 16, 1, 20040101, kForEver, 0},
     {20040131, 0},
     "20040229 0, 20040331 0, 20040430 0"},
    {"first working day", {32, 9, 1, 1, 20050101, kForEver, 0}, {20050430, 0}, "20050502 0"},
    {"last day of a weekend", {32, 10, 16, 1, 20050101, kForEver, 0}, {20050430, 0}, "20050529 0"},
    {"every second month, first Monday",
     {32, 2, 1, 2, 20050101, kForEver, 0},
     {20050103, 0},
     "20050307 0, 20050502 0"},
    {"an interval that means no day",
     {32, 16, 16, 1, 20050101, kForEver, 0},
     {20050301, 0},
     "never"},
    {"no weekday at all", {8, 0, 0, 1, 20050101, kForEver, 0}, {20050301, 0}, "never"},
    {"when the agent starts", {64, 0, 0, 0, 20050101, kForEver, 0}, {20050301, 0}, "never"},
};

std::string TextOf(const AgentTime& time) {
  std::ostringstream text;
  text << time.date << ' ' << time.time;
  return time.date == 0 ? "never" : text.str();
}

TEST(JobSchedule, IsDueOnTheDaysOfTheCalendar) {
  for (const Case& c : kCases) {
    AgentTime after = c.after;
    for (std::string_view rest = c.runs; !rest.empty();) {
      const std::string_view expected = rest.substr(0, rest.find(','));
      rest.remove_prefix(std::min(expected.size() + 2, rest.size()));
      after = NextRun(c.schedule, after);
      EXPECT_EQ(TextOf(after), expected) << c.what;
    }
  }
}

TEST(JobSchedule, TellsDatesAndTimesFromOtherNumbers) {
  struct NumberCase {
    std::int64_t number;
    bool date, clock;
  };
  constexpr NumberCase kNumbers[] = {
      {20050301, true, false},   {20040229, true, false},  {20050229, false, false},
      {20051301, false, false},  {19891231, false, false}, {99991231, true, false},
      {999991231, false, false}, {0, false, true},         {235959, false, true},
      {240000, false, false},    {6000, false, false},     {60, false, false},
      {-1, false, false},
  };
  for (const auto& [number, date, clock] : kNumbers) {
    EXPECT_EQ(IsAgentDate(number), date) << number;
    EXPECT_EQ(IsAgentClock(number), clock) << number;
  }
}

TEST(JobSchedule, TimesGoToNumbersAndBack) {
  const std::int64_t time = FromCivil({2005, 3, 1, 1, 2, 3, 150});
  EXPECT_EQ(TextOf(ToAgentTime(time)), "20050301 10203");
  EXPECT_EQ(FromAgentTime({20050301, 10203}), FromCivil({2005, 3, 1, 1, 2, 3, 0}));
}

}  // namespace
}  // namespace dbkeeper::server
