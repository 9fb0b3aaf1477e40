#include "server/agent/job_history.h"

#include <algorithm>
#include <utility>

#include "server/types/datetime.h"
#include "server/types/job_schedule.h"

namespace dbkeeper::server {

namespace {

constexpr const char* kOutcomeName = "(Job outcome)";

// Seconds as hhmmss, the form of run_duration.
std::int64_t DurationOf(std::int64_t ticks) {
  const std::int64_t seconds = std::max<std::int64_t>(ticks, 0) / kTicksPerSecond;
  return seconds / 3600 * 10000 + seconds / 60 % 60 * 100 + seconds % 60;
}

// What the row of a run in progress says, and the end of what the finished one says.
std::string InvocationOf(std::string_view invoker) {
  return "The Job was invoked by " + std::string(invoker) + ".";
}

std::string LastStepOf(std::int64_t id, std::string_view name) {
  if (id == 0) return "";
  return "  The last step to run was step " + std::to_string(id) + " (" + std::string(name) + ").";
}

void CloseCutRun(AgentSession& session, const std::vector<Cell>& row) {
  const std::int64_t id = NumberOf(row[0]);
  const std::string& job = std::get<Blob>(row[1]).bytes;
  const CellRows steps = session.Run(
      "select top 1 step_id, step_name from msdb.dbo.sysjobhistory where job_id = @job and "
      "instance_id > @id order by instance_id desc",
      {IdParameter("@job", job), NumberParameter("@id", id)});
  std::string message = "The job failed because the server ended while it ran.  " + TextOf(row[2]);
  if (!steps.empty()) message += LastStepOf(NumberOf(steps[0][0]), TextOf(steps[0][1]));
  const Parameters values = {NumberParameter("@id", id), IdParameter("@job", job),
                             TextParameter("@message", std::move(message))};
  session.Run("begin tran");
  session.Run(
      "insert msdb.dbo.sysjobhistory select job_id, 0, step_name, 0, 0, @message, 0, run_date, "
      "run_time, 0, 0, 0, 0, 0, server from msdb.dbo.sysjobhistory where instance_id = @id",
      values);
  session.Run(
      "update msdb.dbo.sysjobservers set last_run_outcome = 0, last_outcome_message = @message, "
      "last_run_date = h.run_date, last_run_time = h.run_time, last_run_duration = 0 from "
      "msdb.dbo.sysjobservers s join msdb.dbo.sysjobhistory h on h.job_id = s.job_id where "
      "h.instance_id = @id",
      values);
  session.Run("delete msdb.dbo.sysjobhistory where instance_id = @id", values);
  session.Run("commit tran");
}

}  // namespace

JobHistory::JobHistory(AgentSession& session, const JobAgent& agent, const JobStart& start,
                       std::string server)
    : session_(session), agent_(agent), start_(start), server_(std::move(server)) {}

JobHistory::Entry JobHistory::Begin(const RunningStep& step, std::string_view message) {
  const std::int64_t now = agent_.Now();
  const AgentTime time = ToAgentTime(now);
  const CellRows rows = session_.Run(
      "insert msdb.dbo.sysjobhistory values (@job, @step, @name, 0, 0, @message, 4, @date, @time, "
      "0, 0, 0, 0, 0, @server) select cast(@@identity as int)",
      {IdParameter("@job", start_.job), NumberParameter("@step", step.id),
       TextParameter("@name", step.name), TextParameter("@message", std::string(message)),
       NumberParameter("@date", time.date), NumberParameter("@time", time.time),
       TextParameter("@server", server_)});
  return {NumberOf(rows[0][0]), now};
}

void JobHistory::BeginRun() { run_ = Begin({0, kOutcomeName}, InvocationOf(start_.invoker)); }

void JobHistory::BeginStep(const RunningStep& step) {
  step_ = step;
  step_entry_ = Begin(step, "");
}

Parameters JobHistory::EndOf(const Entry& entry, const StepOutcome& outcome) const {
  const AgentTime begun = ToAgentTime(entry.begun);
  return {NumberParameter("@id", entry.id),
          IdParameter("@job", start_.job),
          NumberParameter("@step", step_.id),
          NumberParameter("@number", outcome.message_id),
          NumberParameter("@severity", outcome.severity),
          TextParameter("@message", outcome.message),
          NumberParameter("@status", outcome.status),
          NumberParameter("@date", begun.date),
          NumberParameter("@time", begun.time),
          NumberParameter("@duration", DurationOf(agent_.Now() - entry.begun)),
          TextParameter("@name", kOutcomeName),
          TextParameter("@server", server_)};
}

void JobHistory::EndStep(const StepOutcome& outcome) {
  const Parameters values = EndOf(step_entry_, outcome);
  session_.Run(
      "update msdb.dbo.sysjobhistory set sql_message_id = @number, sql_severity = @severity, "
      "message = @message, run_status = @status, run_duration = @duration where instance_id = @id",
      values);
  session_.Run(
      "update msdb.dbo.sysjobsteps set last_run_outcome = @status, last_run_duration = @duration, "
      "last_run_date = @date, last_run_time = @time where job_id = @job and step_id = @step",
      values);
}

void JobHistory::EndRun(int status, std::string_view beginning) {
  const Parameters values =
      EndOf(run_, {.status = status,
                   .message_id = 0,
                   .severity = 0,
                   .message = std::string(beginning) + "  " + InvocationOf(start_.invoker) +
                              LastStepOf(step_.id, step_.name)});
  session_.Run("begin tran");
  session_.Run("delete msdb.dbo.sysjobhistory where instance_id = @id", values);
  // A job that was deleted meanwhile leaves nothing behind.
  session_.Run(
      "insert msdb.dbo.sysjobhistory select @job, 0, @name, 0, 0, @message, @status, @date, @time, "
      "@duration, 0, 0, 0, 0, @server from msdb.dbo.sysjobs where job_id = @job",
      values);
  session_.Run(
      "update msdb.dbo.sysjobservers set last_run_outcome = @status, last_outcome_message = "
      "@message, last_run_date = @date, last_run_time = @time, last_run_duration = @duration where "
      "job_id = @job",
      values);
  session_.Run("commit tran");
}

void JobHistory::CloseCutRuns(AgentSession& session) {
  session.Run(
      "update msdb.dbo.sysjobhistory set run_status = 0, message = 'The server ended while the "
      "step ran.  The step failed.' where run_status = 4 and step_id <> 0");
  const CellRows runs = session.Run(
      "select instance_id, job_id, message from msdb.dbo.sysjobhistory where run_status = 4 order "
      "by instance_id");
  for (const std::vector<Cell>& row : runs) CloseCutRun(session, row);
}

}  // namespace dbkeeper::server
