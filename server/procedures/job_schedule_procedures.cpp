// Schedules of jobs in msdb: shown, added, changed, deleted.
#include "server/procedures/job_call.h"
#include "server/types/messages.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

namespace {

constexpr int kLastDate = 99991231;
constexpr int kLastTime = 235959;

struct NamedSchedule {
  std::int64_t id = 0;
  std::string name;
  std::int64_t enabled = 1;
  JobSchedule when{.end_date = kLastDate};
  int end_time = kLastTime;
  int subday_type = 0;
};

// Throws 14262.
NamedSchedule ReadSchedule(ProcedureCall& call, Catalog& agent, const Cell& job,
                           std::string_view parameter) {
  SqliteStatement row = agent.Prepare(
      "select schedule_id, name, enabled, active_end_time, freq_subday_type, freq_type, "
      "freq_interval, freq_relative_interval, freq_recurrence_factor, active_start_date, "
      "active_end_date, active_start_time from {}sysjobschedules where job_id = ?1 and name = ?2",
      job, call.Value(parameter));
  if (!row.Step()) Fail(14262, {parameter, call.Text(parameter)});
  return {.id = row.Integer(0),
          .name = row.Text(1),
          .enabled = row.Integer(2),
          .when = ScheduleAt(row, 5),
          .end_time = static_cast<int>(row.Integer(3)),
          .subday_type = static_cast<int>(row.Integer(4))};
}

// Puts what the procedure was given over what is there.
void TakeGiven(ProcedureCall& call, NamedSchedule& schedule) {
  const auto take = [&call](std::string_view parameter, int& value) {
    value = static_cast<int>(call.Integer(parameter, value));
  };
  // A job runs at most once a day here.
  RefuseGiven(call, {"@freq_subday_interval"});
  schedule.enabled = call.Integer("@enabled", schedule.enabled);
  take("@freq_type", schedule.when.freq_type);
  take("@freq_interval", schedule.when.freq_interval);
  take("@freq_relative_interval", schedule.when.freq_relative_interval);
  take("@freq_recurrence_factor", schedule.when.freq_recurrence_factor);
  take("@active_start_date", schedule.when.start_date);
  take("@active_end_date", schedule.when.end_date);
  take("@active_start_time", schedule.when.start_time);
  take("@active_end_time", schedule.end_time);
  take("@freq_subday_type", schedule.subday_type);
}

void CheckDate(std::string_view parameter, int date) {
  if (!IsAgentDate(date)) Fail(14266, {parameter, "19900101..99991231"});
}

void CheckTime(std::string_view parameter, int time) {
  if (IsAgentClock(time)) return;
  constexpr int kHours = 24;
  const bool minutes = time / 100 % 100 >= 60;
  Fail(14287, {parameter, time < 0 || time / 10000 >= kHours ? "hour"
                          : minutes                          ? "minute"
                                                             : "second"});
}

void CheckActive(const NamedSchedule& schedule) {
  CheckDate("@active_start_date", schedule.when.start_date);
  CheckDate("@active_end_date", schedule.when.end_date);
  if (schedule.when.end_date < schedule.when.start_date) {
    Fail(14288, {"@active_end_date", "@active_start_date"});
  }
  CheckTime("@active_start_time", schedule.when.start_time);
  CheckTime("@active_end_time", schedule.end_time);
}

// What a frequency that comes back needs.
struct FrequencyRule {
  int freq_type;
  int first;  // of freq_interval
  int last;
  std::string_view complaint;
};
constexpr FrequencyRule kRules[] = {
    {Frequency::kDaily, 1, 1 << 30, "@freq_interval must be at least 1 for a daily job."},
    {Frequency::kWeekly, 1, 127,
     "@freq_interval must be a valid day of the week bitmask [Sunday = 1 .. Saturday = 64] for a "
     "weekly job."},
    {Frequency::kMonthly, 1, 31, "@freq_interval must be between 1 and 31 for a monthly job."},
    {Frequency::kMonthlyByWeekday, 1, 10,
     "@freq_interval must be between 1 and 10 (1 = Sunday .. 7 = Saturday, 8 = Day, 9 = Weekday, "
     "10 = Weekend-day) for a monthly-relative job."},
};

void CheckRecurring(const JobSchedule& when) {
  for (const FrequencyRule& rule : kRules) {
    if (when.freq_type != rule.freq_type) continue;
    if (when.freq_type == Frequency::kMonthlyByWeekday) {
      const int which = when.freq_relative_interval;
      const bool known = which == 1 || which == 2 || which == 4 || which == 8 || which == 16;
      if (!known) {
        Fail(14278, {"@freq_relative_interval must be one of 1st (0x1), 2nd (0x2), 3rd [0x4], 4th "
                     "(0x8) or Last (0x10)."});
      }
    }
    if (when.freq_interval < rule.first || when.freq_interval > rule.last) {
      Fail(14278, {rule.complaint});
    }
    if (when.freq_type != Frequency::kDaily && when.freq_recurrence_factor < 1) {
      Fail(14278, {"@freq_recurrence_factor must be at least 1."});
    }
  }
}

// Throws what is wrong with it, and fills in what goes without saying.
void Verify(ProcedureCall& call, NamedSchedule& schedule) {
  NeedOneOf("@enabled", schedule.enabled, "0, 1");
  JobSchedule& when = schedule.when;
  constexpr int kFrequencies = 1 | 4 | 8 | 16 | 32 | 64 | 128;
  const bool one_bit = when.freq_type > 0 && (when.freq_type & (when.freq_type - 1)) == 0;
  if (!one_bit || (when.freq_type & kFrequencies) == 0) {
    Fail(14266, {"@freq_type", "0x1, 0x4, 0x8, 0x10, 0x20, 0x40, 0x80"});
  }
  if (when.freq_type == Frequency::kAtStart) throw Unsupported("jobs that run when it starts");
  if (when.freq_type == Frequency::kWhenIdle) throw Unsupported("jobs that wait for idle time");
  if (schedule.subday_type > 1) throw Unsupported("jobs that run more than once a day");
  if (when.start_date == 0) when.start_date = AgentNow(call).date;
  if (when.end_date == 0) when.end_date = kLastDate;
  CheckActive(schedule);
  CheckRecurring(when);
  const bool once = when.freq_type == Frequency::kOnce;
  if (once) when.freq_interval = 0;
  if (once || when.freq_type == Frequency::kDaily) when.freq_recurrence_factor = 0;
  if (when.freq_type != Frequency::kMonthlyByWeekday) when.freq_relative_interval = 0;
  schedule.subday_type = once ? 0 : 1;
}

void NeedFreeName(Catalog& agent, const Cell& job, const std::string& name,
                  std::string_view parameter, std::int64_t own) {
  const bool taken = agent.IntegerOf(0,
                                     "select 1 from {}sysjobschedules where job_id = ?1 and name = "
                                     "?2 and schedule_id <> ?3",
                                     job, name, own) != 0;
  if (taken) Fail(14261, {parameter, name});
}

void AddSchedule(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  NamedSchedule schedule;
  schedule.name = TextUpTo(call, "@name", kNameLimit);
  NeedFreeName(change.catalog, job, schedule.name, "@name", 0);
  TakeGiven(call, schedule);
  Verify(call, schedule);
  const std::int64_t table = change.catalog.FindObject("sysjobschedules")->id;
  schedule.id = call.workspace().NextIdentity(change.catalog.alias(), table, kIntType);
  const JobSchedule& when = schedule.when;
  change.catalog.Run(
      "insert into {}sysjobschedules values (?1, ?2, ?3, ?4, ?5, ?6, ?7, 0, ?8, ?9, ?10, ?11, ?12, "
      "?13, 0, 0, ?14)",
      schedule.id, job, schedule.name, schedule.enabled, when.freq_type, when.freq_interval,
      schedule.subday_type, when.freq_relative_interval, when.freq_recurrence_factor,
      when.start_date, when.end_date, when.start_time, schedule.end_time, CurrentTime());
  change.Commit(job);
}

void UpdateSchedule(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  NamedSchedule schedule = ReadSchedule(call, change.catalog, job, "@name");
  if (call.Has("@new_name")) {
    schedule.name = TextUpTo(call, "@new_name", kNameLimit);
    NeedFreeName(change.catalog, job, schedule.name, "@new_name", schedule.id);
  }
  TakeGiven(call, schedule);
  Verify(call, schedule);
  const JobSchedule& when = schedule.when;
  change.catalog.Run(
      "update {}sysjobschedules set name = ?2, enabled = ?3, freq_type = ?4, freq_interval = ?5, "
      "freq_subday_type = ?6, freq_relative_interval = ?7, freq_recurrence_factor = ?8, "
      "active_start_date = ?9, active_end_date = ?10, active_start_time = ?11, active_end_time = "
      "?12 where schedule_id = ?1",
      schedule.id, schedule.name, schedule.enabled, when.freq_type, when.freq_interval,
      schedule.subday_type, when.freq_relative_interval, when.freq_recurrence_factor,
      when.start_date, when.end_date, when.start_time, schedule.end_time);
  change.Commit(job);
}

void DeleteSchedule(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  const NamedSchedule schedule = ReadSchedule(call, change.catalog, job, "@name");
  change.catalog.Run("delete from {}sysjobschedules where schedule_id = ?1", schedule.id);
  change.Commit(job);
}

constexpr std::string_view kColumns =
    "schedule_id int, schedule_name sysname, enabled int, freq_type int, freq_interval int, "
    "freq_subday_type int, freq_subday_interval int, freq_relative_interval int, "
    "freq_recurrence_factor int, active_start_date int, active_end_date int, active_start_time "
    "int, active_end_time int, date_created datetime, schedule_description nvarchar(255), "
    "next_run_date int, next_run_time int";

void HelpSchedule(ProcedureCall& call) {
  constexpr std::size_t kEnabled = 2;
  constexpr std::size_t kNextDate = 15;
  Catalog agent = call.workspace().CatalogOf("msdb");
  const Cell job = NeedJob(call, agent, JobAccess::kRead);
  if (call.Has("@schedule_name")) ReadSchedule(call, agent, job, "@schedule_name");
  const bool targeted =
      agent.IntegerOf(0, "select 1 from {}sysjobservers where job_id = ?1", job) != 0;
  const AgentTime now = AgentNow(call);
  SqliteStatement row = agent.Prepare(
      "select schedule_id, name, enabled, freq_type, freq_interval, freq_subday_type, "
      "freq_subday_interval, freq_relative_interval, freq_recurrence_factor, active_start_date, "
      "active_end_date, active_start_time, active_end_time, date_created, '(Description not "
      "requested.)', 0, 0, freq_type, freq_interval, freq_relative_interval, "
      "freq_recurrence_factor, active_start_date, active_end_date, active_start_time from "
      "{}sysjobschedules where job_id = ?1 and (?2 is null or name = ?2) and (?3 is null or "
      "schedule_id = ?3) order by schedule_id",
      job, call.Value("@schedule_name"),
      call.Has("@schedule_id") ? Cell(call.Integer("@schedule_id")) : Cell());
  std::vector<std::vector<Cell>> rows;
  while (row.Step()) {
    std::vector<Cell> cells = row.Row();
    cells.resize(kNextDate + 2);
    if (targeted && row.Integer(kEnabled) != 0) {
      const AgentTime next = NextRun(ScheduleAt(row, kNextDate + 2), now);
      cells[kNextDate] = std::int64_t{next.date};
      cells[kNextDate + 1] = std::int64_t{next.time};
    }
    rows.push_back(std::move(cells));
  }
  call.Rows(kColumns, rows);
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_add_jobschedule",
     "@job_id=, @job_name=, @name, @enabled=, @freq_type=, @freq_interval=, @freq_subday_type=, "
     "@freq_subday_interval=, @freq_relative_interval=, @freq_recurrence_factor=, "
     "@active_start_date=, @active_end_date=, @active_start_time=, @active_end_time=",
     AddSchedule},
    {"sp_update_jobschedule",
     "@job_id=, @job_name=, @name, @new_name=, @enabled=, @freq_type=, @freq_interval=, "
     "@freq_subday_type=, @freq_subday_interval=, @freq_relative_interval=, "
     "@freq_recurrence_factor=, @active_start_date=, @active_end_date=, @active_start_time=, "
     "@active_end_time=",
     UpdateSchedule},
    {"sp_delete_jobschedule", "@job_id=, @job_name=, @name", DeleteSchedule},
    {"sp_help_jobschedule",
     "@job_id=, @job_name=, @schedule_name=, @schedule_id=, @include_description=", HelpSchedule},
};

}  // namespace

std::span<const ProcedureRow> JobScheduleProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
