// Steps of jobs in msdb: shown, added, changed, deleted. They are numbered from 1 without a gap.
#include "server/procedures/job_call.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr std::int64_t kGoToStep = 4;

// What a step does when its command has succeeded or failed.
struct StepEnd {
  std::int64_t action = 0;  // 1 quit with success, 2 quit with failure, 3 next step, 4 go to step
  std::int64_t step = 0;
};

struct JobStep {
  std::int64_t id = 0;
  std::string name;
  std::string subsystem = "TSQL";
  std::string command;
  std::string database = "master";
  std::int64_t success_code = 0;
  StepEnd on_success{.action = 1};
  StepEnd on_fail{.action = 2};
  std::int64_t flags = 0;
  std::int64_t priority = 0;
};

std::int64_t LastStep(Catalog& agent, const Cell& job) {
  return agent.IntegerOf(0, "select max(step_id) from {}sysjobsteps where job_id = ?1", job);
}

// Throws 14262.
JobStep ReadStep(ProcedureCall& call, Catalog& agent, const Cell& job) {
  const std::int64_t id = call.Integer("@step_id");
  SqliteStatement row = agent.Prepare(
      "select step_name, subsystem, command, coalesce(database_name, 'master'), "
      "cmdexec_success_code, on_success_action, on_success_step_id, on_fail_action, "
      "on_fail_step_id, flags, os_run_priority from {}sysjobsteps where job_id = ?1 and step_id = "
      "?2",
      job, id);
  if (!row.Step()) Fail(14262, {"@step_id", std::to_string(id)});
  return {.id = id,
          .name = row.Text(0),
          .subsystem = row.Text(1),
          .command = row.Text(2),
          .database = row.Text(3),
          .success_code = row.Integer(4),
          .on_success = {row.Integer(5), row.Integer(6)},
          .on_fail = {row.Integer(7), row.Integer(8)},
          .flags = row.Integer(9),
          .priority = row.Integer(10)};
}

// Puts what the procedure was given over what is there.
void TakeGiven(ProcedureCall& call, JobStep& step) {
  constexpr int kCommandLimit = 3200;
  // No step is tried again, writes its output to a file, or runs as somebody else or elsewhere.
  RefuseGiven(call, {"@retry_attempts", "@output_file_name", "@additional_parameters",
                     "@database_user_name", "@server"});
  step.name = TextUpTo(call, "@step_name", kNameLimit, step.name);
  step.subsystem = call.Text("@subsystem", step.subsystem);
  step.command = TextUpTo(call, "@command", kCommandLimit, step.command);
  step.database = TextUpTo(call, "@database_name", kNameLimit, step.database);
  step.success_code = call.Integer("@cmdexec_success_code", step.success_code);
  step.on_success.action = call.Integer("@on_success_action", step.on_success.action);
  step.on_success.step = call.Integer("@on_success_step_id", step.on_success.step);
  step.on_fail.action = call.Integer("@on_fail_action", step.on_fail.action);
  step.on_fail.step = call.Integer("@on_fail_step_id", step.on_fail.step);
  step.flags = call.Integer("@flags", step.flags);
  step.priority = call.Integer("@os_run_priority", step.priority);
}

// Throws 14266, 14235; a step that is not there yet is only warned of, since it may come.
void CheckEnd(ProcedureCall& call, const JobStep& step, const StepEnd& end, std::int64_t last,
              std::string_view action, std::string_view next) {
  NeedOneOf(action, end.action, "1, 2, 3, 4");
  if (end.action != kGoToStep) return;
  if (end.step < 1 || end.step == step.id) Fail(14235, {next, std::to_string(step.id)});
  if (end.step > last) call.Inform(14236, {next});
}

void Check(ProcedureCall& call, Catalog& agent, const Cell& job, const JobStep& step) {
  constexpr std::string_view kSubsystems = "TSQL CMDEXEC";
  const std::int64_t last = LastStep(agent, job);
  NeedKnown("@subsystem", HasWord(kSubsystems, step.subsystem), "sp_enum_sqlagent_subsystems");
  CheckEnd(call, step, step.on_success, last, "@on_success_action", "@on_success_step_id");
  CheckEnd(call, step, step.on_fail, last, "@on_fail_action", "@on_fail_step_id");
  if (call.Has("@database_name")) {
    if (!call.workspace().LookUpDatabase(step.database)) {
      Fail(14262, {"@database_name", step.database});
    }
  }
  const bool taken = agent.IntegerOf(0,
                                     "select 1 from {}sysjobsteps where job_id = ?1 and step_name "
                                     "= ?2 and step_id <> ?3",
                                     job, step.name, step.id) != 0;
  if (taken) Fail(14261, {"@step_name", step.name});
}

// Moves the steps from `from` on, and what refers to them, by one place up or down.
void Renumber(Catalog& agent, const Cell& job, std::int64_t from, int by) {
  agent.Run(
      "update {}sysjobsteps set step_id = step_id + ?3 * (step_id >= ?2), on_success_step_id = "
      "on_success_step_id + ?3 * (on_success_step_id >= ?2), on_fail_step_id = on_fail_step_id + "
      "?3 * (on_fail_step_id >= ?2) where job_id = ?1",
      job, from, by);
}

void AddStep(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  const std::int64_t next = LastStep(change.catalog, job) + 1;
  JobStep step;
  step.id = call.Integer("@step_id", next);
  if (step.id < 1 || step.id > next) Fail(14266, {"@step_id", "1.." + std::to_string(next)});
  TakeGiven(call, step);
  // A step behind the last may be referred to already, and stays what they refer to.
  if (step.id < next) Renumber(change.catalog, job, step.id, 1);
  Check(call, change.catalog, job, step);
  change.catalog.Run(
      "insert into {}sysjobsteps values (?1, ?2, ?3, ?4, ?5, ?6, null, ?7, ?8, ?9, ?10, ?11, null, "
      "?12, null, 0, 0, ?13, null, 0, 0, 0, 0, 0)",
      job, step.id, step.name, ToUpperAscii(step.subsystem), step.command, step.flags,
      step.success_code, step.on_success.action, step.on_success.step, step.on_fail.action,
      step.on_fail.step, step.database, step.priority);
  change.Commit(job);
}

void UpdateStep(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  JobStep step = ReadStep(call, change.catalog, job);
  TakeGiven(call, step);
  Check(call, change.catalog, job, step);
  change.catalog.Run(
      "update {}sysjobsteps set step_name = ?3, subsystem = ?4, command = ?5, flags = ?6, "
      "cmdexec_success_code = ?7, on_success_action = ?8, on_success_step_id = ?9, on_fail_action "
      "= ?10, on_fail_step_id = ?11, database_name = ?12, os_run_priority = ?13 where job_id = ?1 "
      "and step_id = ?2",
      job, step.id, step.name, ToUpperAscii(step.subsystem), step.command, step.flags,
      step.success_code, step.on_success.action, step.on_success.step, step.on_fail.action,
      step.on_fail.step, step.database, step.priority);
  change.Commit(job);
}

// Steps that went to the deleted one quit instead; the later ones move up.
void CloseGap(Catalog& agent, const Cell& job, std::int64_t id) {
  agent.Run(
      "update {}sysjobsteps set on_success_action = 1, on_success_step_id = 0 where job_id = ?1 "
      "and on_success_step_id = ?2 and on_success_action = ?3",
      job, id, kGoToStep);
  agent.Run(
      "update {}sysjobsteps set on_fail_action = 2, on_fail_step_id = 0 where job_id = ?1 and "
      "on_fail_step_id = ?2 and on_fail_action = ?3",
      job, id, kGoToStep);
  Renumber(agent, job, id + 1, -1);
  agent.Run(
      "update {}sysjobs set start_step_id = 1 where job_id = ?1 and start_step_id > (select "
      "count(*) from {}sysjobsteps where job_id = ?1)",
      job);
}

void DeleteStep(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = NeedJob(call, change.catalog, JobAccess::kChange);
  const std::int64_t id = call.Integer("@step_id");
  const std::int64_t last = LastStep(change.catalog, job);
  if (id < 0 || id > last) {
    Fail(14266, {"@step_id", "0 (all steps) .." + std::to_string(last)});
  }
  change.catalog.Run(
      "delete from {}sysjobsteps where job_id = ?1 and step_id in (step_id * (?2 = "
      "0), ?2)",
      job, id);
  if (id != 0) CloseGap(change.catalog, job, id);
  change.Commit(job);
}

constexpr std::string_view kStepColumns =
    "step_id int, step_name sysname, subsystem nvarchar(40), command nvarchar(3200), flags int, "
    "cmdexec_success_code int, on_success_action tinyint, on_success_step_id int, on_fail_action "
    "tinyint, on_fail_step_id int, server sysname, database_name sysname, database_user_name "
    "sysname, retry_attempts int, retry_interval int, os_run_priority int, output_file_name "
    "nvarchar(200), last_run_outcome int, last_run_duration int, last_run_retries int, "
    "last_run_date int, last_run_time int";

void HelpStep(ProcedureCall& call) {
  Catalog agent = call.workspace().CatalogOf("msdb");
  const Cell job = NeedJob(call, agent, JobAccess::kRead);
  if (call.Has("@step_id")) ReadStep(call, agent, job);
  SqliteStatement row = agent.Prepare(
      "select step_id, step_name, subsystem, command, flags, cmdexec_success_code, "
      "on_success_action, on_success_step_id, on_fail_action, on_fail_step_id, server, "
      "database_name, database_user_name, retry_attempts, retry_interval, os_run_priority, "
      "output_file_name, last_run_outcome, last_run_duration, last_run_retries, last_run_date, "
      "last_run_time from {}sysjobsteps where job_id = ?1 and (?2 is null or step_id = ?2) and (?3 "
      "is null or step_name = ?3) order by step_id",
      job, call.Has("@step_id") ? Cell(call.Integer("@step_id")) : Cell(),
      call.Value("@step_name"));
  std::vector<std::vector<Cell>> rows;
  while (row.Step()) rows.push_back(row.Row());
  if (rows.empty() && call.Has("@step_name")) {
    Fail(14262, {"@step_name", call.Text("@step_name")});
  }
  call.Rows(kStepColumns, rows);
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_add_jobstep",
     "@job_id=, @job_name=, @step_id=, @step_name, @subsystem=, @command=, "
     "@additional_parameters=, @cmdexec_success_code=, @on_success_action=, @on_success_step_id=, "
     "@on_fail_action=, @on_fail_step_id=, @server=, @database_name=, @database_user_name=, "
     "@retry_attempts=, @retry_interval=, @os_run_priority=, @output_file_name=, @flags=",
     AddStep},
    {"sp_update_jobstep",
     "@job_id=, @job_name=, @step_id, @step_name=, @subsystem=, @command=, "
     "@additional_parameters=, @cmdexec_success_code=, @on_success_action=, @on_success_step_id=, "
     "@on_fail_action=, @on_fail_step_id=, @server=, @database_name=, @database_user_name=, "
     "@retry_attempts=, @retry_interval=, @os_run_priority=, @output_file_name=, @flags=",
     UpdateStep},
    {"sp_delete_jobstep", "@job_id=, @job_name=, @step_id", DeleteStep},
    {"sp_help_jobstep", "@job_id=, @job_name=, @step_id=, @step_name=, @suffix=", HelpStep},
};

}  // namespace

std::span<const ProcedureRow> JobStepProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
