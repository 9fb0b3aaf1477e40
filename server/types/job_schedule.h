// When the schedule of a job is due, reckoned from what the agent's tables keep of it.
#pragma once

#include <compare>
#include <cstdint>

namespace dbkeeper::server {

// Values of freq_type.
struct Frequency {
  static constexpr int kOnce = 1;
  static constexpr int kDaily = 4;
  static constexpr int kWeekly = 8;
  static constexpr int kMonthly = 16;
  static constexpr int kMonthlyByWeekday = 32;
  static constexpr int kAtStart = 64;
  static constexpr int kWhenIdle = 128;
};

// A day as yyyymmdd and a time of it as hhmmss, the form of the agent's tables; 0, 0: never.
struct AgentTime {
  int date = 0;
  int time = 0;
  auto operator<=>(const AgentTime&) const = default;
};

// Of a time in the engine's form (datetime.h), and back.
AgentTime ToAgentTime(std::int64_t time);
std::int64_t FromAgentTime(const AgentTime& time);
// Whether the numbers are a date from 1990 on, and a time.
bool IsAgentDate(std::int64_t date);
bool IsAgentClock(std::int64_t time);

struct JobSchedule {
  int freq_type = 0;
  // Daily: every so many days. Weekly: bits of the weekdays, Sunday the lowest. Monthly: the day.
  // Monthly by weekday: 1 Sunday to 7 Saturday, 8 any day, 9 Monday to Friday, 10 the weekend.
  int freq_interval = 0;
  int freq_relative_interval =
      0;  // which of the month: 1, 2, 4, 8 the first to fourth, 16 the last
  int freq_recurrence_factor = 0;  // every so many weeks or months
  int start_date = 0;
  int end_date = 0;
  int start_time = 0;
  bool operator==(const JobSchedule&) const = default;
};

// The first time later than `after`; never when there is none within ten years.
AgentTime NextRun(const JobSchedule& schedule, const AgentTime& after);

}  // namespace dbkeeper::server
