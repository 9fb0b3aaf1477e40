// Jobs of the agent: kept, shown and assigned in msdb; nothing runs them here.
#include <algorithm>
#include <chrono>

#include "server/procedures/procedure_call.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

using std::chrono::year_month_day;

// What the agent's tables keep of a schedule; dates as yyyymmdd, times as hhmmss.
struct Schedule {
  int freq_type = 0;
  int freq_interval = 0;
  int start_date = 0;
  int start_time = 0;
};

constexpr int kOnce = 1;
constexpr int kDaily = 4;
constexpr int kWeekly = 8;
constexpr int kMonthly = 16;

int NumberOf(const year_month_day& date) {
  return static_cast<int>(date.year()) * 10000 +
         static_cast<int>(static_cast<unsigned>(date.month())) * 100 +
         static_cast<int>(static_cast<unsigned>(date.day()));
}

year_month_day DateOf(int number) {
  return {std::chrono::year(number / 10000),
          std::chrono::month(static_cast<unsigned>(number / 100 % 100)),
          std::chrono::day(static_cast<unsigned>(number % 100))};
}

bool RunsOn(const Schedule& schedule, std::chrono::sys_days day) {
  const year_month_day date(day);
  switch (schedule.freq_type) {
    case kOnce:
      return NumberOf(date) == schedule.start_date;
    case kDaily: {
      const auto since = (day - std::chrono::sys_days(DateOf(schedule.start_date))).count();
      return since % std::max(schedule.freq_interval, 1) == 0;
    }
    case kWeekly:
      // Sunday is the lowest bit.
      return (schedule.freq_interval >> std::chrono::weekday(day).c_encoding() & 1) != 0;
    case kMonthly:
      return static_cast<int>(static_cast<unsigned>(date.day())) == schedule.freq_interval;
    default:
      return false;
  }
}

// The next day and time from now on; 0 when there is none within two years.
std::pair<int, int> NextRun(const Schedule& schedule) {
  const CivilTime now = ToCivil(CurrentTime());
  const int today = now.year * 10000 + now.month * 100 + now.day;
  const int time = now.hour * 10000 + now.minute * 100 + now.second;
  constexpr int kDaysAhead = 731;
  std::chrono::sys_days day(DateOf(std::max(today, schedule.start_date)));
  for (int i = 0; i < kDaysAhead; ++i, day += std::chrono::days(1)) {
    const int number = NumberOf(year_month_day(day));
    const bool past = number == today && schedule.start_time <= time;
    if (!past && RunsOn(schedule, day)) return {number, schedule.start_time};
  }
  return {0, 0};
}

// The job that @job_id or @job_name means; throws 14294, 14262.
Cell NeedJob(ProcedureCall& call, Catalog& agent) {
  if (call.Has("@job_id") == call.Has("@job_name")) Fail(14294, {"@job_id", "@job_name"});
  SqliteStatement row = agent.Prepare("select job_id from {}sysjobs where job_id = ?1 or name = ?2",
                                      call.Value("@job_id"), call.Value("@job_name"));
  if (!row.Step()) {
    Fail(14262, {call.Has("@job_name") ? "@job_name" : "@job_id", call.Text("@job_name")});
  }
  return row.Value(0);
}

// Puts the date, the time and the schedule of the job's next run into three cells.
void SetNextRun(Catalog& agent, const Cell& job, Cell* cells) {
  std::pair<int, int> next{0, 0};
  SqliteStatement row = agent.Prepare(
      "select schedule_id, freq_type, freq_interval, active_start_date, active_start_time from "
      "{}sysjobschedules where job_id = ?1 and enabled = 1",
      job);
  while (row.Step()) {
    const Schedule schedule{static_cast<int>(row.Integer(1)), static_cast<int>(row.Integer(2)),
                            static_cast<int>(row.Integer(3)), static_cast<int>(row.Integer(4))};
    const std::pair<int, int> run = NextRun(schedule);
    if (run.first == 0 || (next.first != 0 && run >= next)) continue;
    next = run;
    cells[2] = row.Integer(0);
  }
  cells[0] = std::int64_t{next.first};
  cells[1] = std::int64_t{next.second};
}

// The columns of sp_help_job; those from last_run_date on are worked out.
constexpr std::string_view kJobColumns =
    "job_id uniqueidentifier, originating_server nvarchar(30), name sysname, enabled tinyint, "
    "description nvarchar(512), start_step_id int, category sysname, owner sysname, "
    "notify_level_eventlog int, notify_level_email int, notify_level_netsend int, "
    "notify_level_page int, notify_email_operator sysname, notify_netsend_operator sysname, "
    "notify_page_operator sysname, delete_level int, date_created datetime, "
    "date_modified datetime, version_number int, last_run_date int, last_run_time int, "
    "last_run_outcome int, next_run_date int, next_run_time int, next_run_schedule_id int, "
    "current_execution_status int, current_execution_step sysname, current_retry_attempt int, "
    "has_step int, has_schedule int, has_target int, type int";

void HelpJob(ProcedureCall& call) {
  Catalog agent = call.workspace().CatalogOf("msdb");
  Cell wanted;
  if (call.Has("@job_id") || call.Has("@job_name")) wanted = NeedJob(call, agent);
  // 5: the outcome is not known; 4: the job is idle, since nothing runs jobs here.
  SqliteStatement job = agent.Prepare(
      "select j.job_id, j.originating_server, j.name, j.enabled, j.description, j.start_step_id, "
      "coalesce(c.name, '[Uncategorized (Local)]'), coalesce(l.name, 'sa'), "
      "j.notify_level_eventlog, j.notify_level_email, j.notify_level_netsend, j.notify_level_page, "
      "'(unknown)', '(unknown)', '(unknown)', j.delete_level, j.date_created, j.date_modified, "
      "j.version_number, coalesce(s.last_run_date, 0), coalesce(s.last_run_time, 0), "
      "coalesce(s.last_run_outcome, 5), 0, 0, 0, 4, '0 (unknown)', 0, (select count(*) from "
      "{}sysjobsteps t where t.job_id = j.job_id), (select count(*) from {}sysjobschedules t where "
      "t.job_id = j.job_id), s.job_id is not null, s.job_id is not null from {}sysjobs j left join "
      "{}sysjobservers s on s.job_id = j.job_id left join {}syscategories c on c.category_id = "
      "j.category_id left join main.syslogins l on l.sid = j.owner_sid where ?1 is null or "
      "j.job_id = ?1 order by j.name",
      wanted);
  constexpr std::size_t kNextDate = 22;
  constexpr std::size_t kHasTarget = 30;
  std::vector<std::vector<Cell>> rows;
  while (job.Step()) {
    std::vector<Cell> cells;
    cells.reserve(static_cast<std::size_t>(job.ColumnCount()));
    for (int i = 0; i < job.ColumnCount(); ++i) cells.push_back(job.Value(i));
    if (cells[kHasTarget] == Cell(std::int64_t{1})) {
      SetNextRun(agent, cells[0], &cells[kNextDate]);
    }
    rows.push_back(std::move(cells));
  }
  call.Rows(kJobColumns, rows);
}

void TargetJob(ProcedureCall& call, bool targeted) {
  DatabaseChange change(call, "msdb");
  const Cell job = NeedJob(call, change.catalog);
  const bool before =
      change.catalog.IntegerOf(0, "select 1 from {}sysjobservers where job_id = ?1", job) != 0;
  if (before == targeted) {
    Fail(targeted ? 14269 : 14270,
         {call.Text("@job_name"), call.Text("@server_name", targeted ? "(local)" : "")});
  }
  if (targeted) {
    change.catalog.Run("insert into {}sysjobservers values (?1, 0, 5, null, 0, 0, 0)", job);
  } else {
    change.catalog.Run("delete from {}sysjobservers where job_id = ?1", job);
  }
  change.scope.Commit();
}

void DeleteJob(ProcedureCall& call) {
  DatabaseChange change(call, "msdb");
  const Cell job = NeedJob(call, change.catalog);
  for (const char* table :
       {"sysjobhistory", "sysjobsteps", "sysjobschedules", "sysjobservers", "sysjobs"}) {
    call.sqlite().Run("delete from " + change.catalog.Path(table) + " where job_id = ?1", job);
  }
  change.scope.Commit();
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_help_job",
     "@job_id=, @job_name=, @job_aspect=, @job_type=, @owner_login_name=, @subsystem=, "
     "@category_name=, @enabled=, @execution_status=",
     HelpJob},
    {"sp_add_jobserver", "@job_id=, @job_name=, @server_name=, @automatic_post=",
     [](ProcedureCall& call) { TargetJob(call, true); }},
    {"sp_delete_jobserver",
     "@job_id=, @job_name=, @server_name=", [](ProcedureCall& call) { TargetJob(call, false); }},
    {"sp_delete_job", "@job_id=, @job_name=, @originating_server=, @delete_history=", DeleteJob},
};

}  // namespace

std::span<const ProcedureRow> JobProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
