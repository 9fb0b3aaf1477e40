// Jobs in msdb: shown, made, changed, assigned to the server, started and stopped.
#include <utility>

#include "server/procedures/job_call.h"
#include "server/storage/host_file.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// Puts the date, the time and the schedule of the job's next run into three cells.
void SetNextRun(Catalog& agent, const AgentTime& now, const Cell& job, Cell* cells) {
  AgentTime next;
  SqliteStatement row = agent.Prepare(
      "select schedule_id, freq_type, freq_interval, freq_relative_interval, "
      "freq_recurrence_factor, active_start_date, active_end_date, active_start_time from "
      "{}sysjobschedules where job_id = ?1 and enabled = 1",
      job);
  while (row.Step()) {
    const AgentTime run = NextRun(ScheduleAt(row, 1), now);
    if (run.date == 0 || (next.date != 0 && run >= next)) continue;
    next = run;
    cells[2] = row.Integer(0);
  }
  cells[0] = std::int64_t{next.date};
  cells[1] = std::int64_t{next.time};
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

// The places in a row of sp_help_job that are worked out.
constexpr std::size_t kJobId = 0;
constexpr std::size_t kNextDate = 22;
constexpr std::size_t kStatus = 25;
constexpr std::size_t kStep = 26;
constexpr std::size_t kHasTarget = 30;

void SetStatus(const JobAgent* agent, std::vector<Cell>& cells) {
  constexpr std::int64_t kExecuting = 1;
  if (agent == nullptr) return;
  const std::optional<RunningStep> step = agent->StepOf(std::get<Blob>(cells[kJobId]).bytes);
  if (!step) return;
  cells[kStatus] = kExecuting;
  if (step->id != 0) cells[kStep] = std::to_string(step->id) + " (" + step->name + ")";
}

void HelpJob(ProcedureCall& call) {
  Catalog agent = call.workspace().CatalogOf("msdb");
  Cell wanted;
  if (call.Has("@job_id") || call.Has("@job_name")) wanted = NeedJob(call, agent, JobAccess::kRead);
  const LoginInfo& login = call.workspace().login();
  const AgentTime now = AgentNow(call);
  // 5: the outcome is not known; 4: the job is idle.
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
      "j.category_id left join main.syslogins l on l.sid = j.owner_sid where (?1 is null or "
      "j.job_id = ?1) and (?2 or j.owner_sid = ?3) order by j.name",
      wanted, login.sysadmin ? 1 : 0, SidOf(call, login.name));
  std::vector<std::vector<Cell>> rows;
  while (job.Step()) {
    std::vector<Cell> cells = job.Row();
    if (cells[kHasTarget] == Cell(std::int64_t{1})) {
      SetNextRun(agent, now, cells[kJobId], &cells[kNextDate]);
    }
    SetStatus(call.workspace().instance().agent(), cells);
    rows.push_back(std::move(cells));
  }
  call.Rows(kJobColumns, rows);
}

// What sp_add_job and sp_update_job may be given of a job; null: not given.
struct JobValues {
  Cell enabled, description, start_step, category, owner, notify_eventlog;
};

Cell OwnerOf(ProcedureCall& call) {
  if (!call.Has("@owner_login_name")) return {};
  const LoginInfo& login = call.workspace().login();
  const std::string owner = call.Text("@owner_login_name");
  NeedKnown("@owner_login_name", call.Exists("select 1 from main.syslogins where name = ?1", owner),
            "sp_helplogins");
  if (!login.sysadmin && !SameName(owner, login.name)) Fail(14515);
  return SidOf(call, owner);
}

Cell CategoryOf(ProcedureCall& call, Catalog& agent) {
  if (!call.Has("@category_name")) return {};
  const std::int64_t category = agent.IntegerOf(
      0, "select category_id from {}syscategories where name = ?1", call.Text("@category_name"));
  NeedKnown("@category_name", category != 0, "sp_help_category");
  return category;
}

// No e-mail and no messages of the network are sent here, and no job is deleted by its run.
void RefuseNotices(ProcedureCall& call) {
  RefuseGiven(call, {"@notify_level_email", "@notify_level_netsend", "@notify_level_page",
                     "@notify_email_operator_name", "@notify_netsend_operator_name",
                     "@notify_page_operator_name", "@delete_level"});
}

Cell IntegerOrNull(ProcedureCall& call, std::string_view parameter, std::string_view values = {}) {
  if (!call.Has(parameter)) return {};
  const std::int64_t value = call.Integer(parameter);
  if (!values.empty()) NeedOneOf(parameter, value, values);
  return value;
}

JobValues ValuesOf(ProcedureCall& call, Catalog& agent) {
  constexpr int kDescriptionLimit = 512;
  RefuseNotices(call);
  JobValues values{.enabled = IntegerOrNull(call, "@enabled", "0, 1"),
                   .description = {},
                   .start_step = IntegerOrNull(call, "@start_step_id"),
                   .category = CategoryOf(call, agent),
                   .owner = OwnerOf(call),
                   .notify_eventlog = IntegerOrNull(call, "@notify_level_eventlog", "0, 1, 2, 3")};
  if (call.Has("@description")) {
    values.description = TextUpTo(call, "@description", kDescriptionLimit);
  }
  return values;
}

// Throws 14261 when another job has the name.
void NeedFreeName(Catalog& agent, const std::string& name, std::string_view parameter,
                  const Cell& job) {
  const std::int64_t taken =
      agent.IntegerOf(0, "select 1 from {}sysjobs where name = ?1 and job_id is not ?2", name, job);
  if (taken != 0) Fail(14261, {parameter, name});
}

void AddJob(ProcedureCall& call) {
  JobChange change(call);
  const std::string name = TextUpTo(call, "@job_name", kNameLimit);
  NeedFreeName(change.catalog, name, "@job_name", {});
  RefuseGiven(call, {"@category_id"});
  const JobValues values = ValuesOf(call, change.catalog);
  const Cell job = Blob{RandomBytes()};
  change.catalog.Run(
      "insert into {}sysjobs values (?1, '(local)', ?2, coalesce(?3, 1), coalesce(?4, 'No "
      "description available.'), coalesce(?5, 1), coalesce(?6, 1), ?7, coalesce(?8, 2), 0, 0, 0, "
      "0, 0, 0, 0, ?9, ?9, 0)",
      job, name, values.enabled, values.description, values.start_step, values.category,
      IsNullCell(values.owner) ? SidOf(call, call.workspace().login().name) : values.owner,
      values.notify_eventlog, CurrentTime());
  change.Commit(job);
}

void UpdateJob(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  const JobValues values = ValuesOf(call, change.catalog);
  Cell new_name;
  if (call.Has("@new_name")) {
    const std::string name = TextUpTo(call, "@new_name", kNameLimit);
    NeedFreeName(change.catalog, name, "@new_name", job);
    new_name = name;
  }
  change.catalog.Run(
      "update {}sysjobs set name = coalesce(?2, name), enabled = coalesce(?3, enabled), "
      "description = coalesce(?4, description), start_step_id = coalesce(?5, start_step_id), "
      "category_id = coalesce(?6, category_id), owner_sid = coalesce(?7, owner_sid), "
      "notify_level_eventlog = coalesce(?8, notify_level_eventlog) where job_id = ?1",
      job, new_name, values.enabled, values.description, values.start_step, values.category,
      values.owner, values.notify_eventlog);
  change.Commit(job);
}

void DeleteJob(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  for (const char* table :
       {"sysjobhistory", "sysjobsteps", "sysjobschedules", "sysjobservers", "sysjobs"}) {
    call.sqlite().Run("delete from " + change.catalog.Path(table) + " where job_id = ?1", job);
  }
  change.Commit(job);
}

std::string NameOfJob(Catalog& agent, const Cell& job) {
  return agent.TextOf("select name from {}sysjobs where job_id = ?1", job);
}

bool IsTargeted(Catalog& agent, const Cell& job) {
  return agent.IntegerOf(0, "select 1 from {}sysjobservers where job_id = ?1", job) != 0;
}

// Throws 14262 when the server is another one.
void NeedThisServer(ProcedureCall& call) {
  const std::string server = call.Text("@server_name", "(local)");
  const std::string own = call.workspace().instance().server_name();
  if (!SameName(server, "(local)") && !SameName(server, own)) {
    Fail(14262, {"@server_name", server});
  }
}

void TargetJob(ProcedureCall& call, bool targeted) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  NeedThisServer(call);
  if (IsTargeted(change.catalog, job) == targeted) {
    Fail(targeted ? 14269 : 14270,
         {NameOfJob(change.catalog, job), call.Text("@server_name", "(local)")});
  }
  if (targeted) {
    change.catalog.Run("insert into {}sysjobservers values (?1, 0, 5, null, 0, 0, 0)", job);
  } else {
    change.catalog.Run("delete from {}sysjobservers where job_id = ?1", job);
  }
  change.Commit(job);
}

// What the agent is told of the job that the procedure is called for.
JobStart StartOf(ProcedureCall& call, Catalog& agent, const Cell& job) {
  return {.job = std::get<Blob>(job).bytes,
          .name = NameOfJob(agent, job),
          .invoker = "User " + call.workspace().login().name};
}

JobAgent& NeedAgent(ProcedureCall& call) {
  JobAgent* const agent = call.workspace().instance().agent();
  if (agent == nullptr) {
    Fail(22022,
         {"SQLServerAgent is not currently running so it cannot be notified of this action."});
  }
  return *agent;
}

void StartJob(ProcedureCall& call) {
  Catalog catalog = call.workspace().CatalogOf("msdb");
  const Cell job = NeedJob(call, catalog, JobAccess::kChange);
  NeedThisServer(call);
  JobStart start = StartOf(call, catalog, job);
  if (!IsTargeted(catalog, job)) Fail(14256, {start.name, FormatGuid(start.job)});
  if (call.Has("@step_name")) {
    const std::string step = call.Text("@step_name");
    start.first_step = static_cast<int>(catalog.IntegerOf(
        0, "select step_id from {}sysjobsteps where job_id = ?1 and step_name = ?2", job, step));
    if (start.first_step == 0) Fail(14262, {"@step_name", step});
  }
  NeedAgent(call).Start(start);
  call.Inform(14243, {start.name});
}

void StopJob(ProcedureCall& call) {
  Catalog catalog = call.workspace().CatalogOf("msdb");
  const Cell job = NeedJob(call, catalog, JobAccess::kChange);
  NeedThisServer(call);
  const JobStart which = StartOf(call, catalog, job);
  NeedAgent(call).Stop(which);
  call.Inform(14254, {which.name});
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_help_job",
     "@job_id=, @job_name=, @job_aspect=, @job_type=, @owner_login_name=, @subsystem=, "
     "@category_name=, @enabled=, @execution_status=",
     HelpJob},
    {"sp_add_job",
     "@job_name, @enabled=, @description=, @start_step_id=, @category_name=, @category_id=, "
     "@owner_login_name=, @notify_level_eventlog=, @notify_level_email=, @notify_level_netsend=, "
     "@notify_level_page=, @notify_email_operator_name=, @notify_netsend_operator_name=, "
     "@notify_page_operator_name=, @delete_level=",
     AddJob},
    {"sp_update_job",
     "@job_id=, @job_name=, @new_name=, @enabled=, @description=, @start_step_id=, "
     "@category_name=, @owner_login_name=, @notify_level_eventlog=, @notify_level_email=, "
     "@notify_level_netsend=, @notify_level_page=, @notify_email_operator_name=, "
     "@notify_netsend_operator_name=, @notify_page_operator_name=, @delete_level=, "
     "@automatic_post=",
     UpdateJob},
    {"sp_delete_job", "@job_id=, @job_name=, @originating_server=, @delete_history=", DeleteJob},
    {"sp_add_jobserver", "@job_id=, @job_name=, @server_name=, @automatic_post=",
     [](ProcedureCall& call) { TargetJob(call, true); }},
    {"sp_delete_jobserver",
     "@job_id=, @job_name=, @server_name=", [](ProcedureCall& call) { TargetJob(call, false); }},
    {"sp_start_job",
     "@job_name=, @job_id=, @error_flag=, @server_name=, @step_name=, @output_flag=", StartJob},
    {"sp_stop_job", "@job_name=, @job_id=, @originating_server=, @server_name=", StopJob},
};

}  // namespace

std::span<const ProcedureRow> JobProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
