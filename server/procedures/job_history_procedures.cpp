// What the agent wrote down of the runs of jobs.
#include <algorithm>

#include "server/procedures/job_call.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// Null without @job_id and @job_name.
Cell WantedJob(ProcedureCall& call, Catalog& agent, JobAccess access) {
  if (!call.Has("@job_id") && !call.Has("@job_name")) return {};
  return NeedJob(call, agent, access);
}

// Conditions, each with the parameter that it compares with.
struct Filter {
  std::string_view parameter;
  std::string_view condition;  // "?" stands for the parameter
};
constexpr Filter kFilters[] = {
    {"@step_id", "h.step_id = ?"},           {"@sql_message_id", "h.sql_message_id = ?"},
    {"@sql_severity", "h.sql_severity = ?"}, {"@start_run_date", "h.run_date >= ?"},
    {"@end_run_date", "h.run_date <= ?"},    {"@start_run_time", "h.run_time >= ?"},
    {"@end_run_time", "h.run_time <= ?"},    {"@minimum_run_duration", "h.run_duration >= ?"},
    {"@run_status", "h.run_status = ?"},     {"@minimum_retries", "h.retries_attempted >= ?"},
};

std::string ConditionsOf(ProcedureCall& call) {
  std::string text;
  for (const auto& [parameter, condition] : kFilters) {
    if (!call.Has(parameter)) continue;
    text += " and " + std::string(condition.substr(0, condition.size() - 1)) +
            std::to_string(call.Integer(parameter));
  }
  return text;
}

struct HistoryForm {
  std::string_view name;
  std::string_view columns;
  const char* values;  // of sysjobhistory h and sysjobs j
  std::string_view condition;
};
constexpr HistoryForm kForms[] = {
    {"SUMMARY",
     "job_id uniqueidentifier, job_name sysname, run_status int, run_date int, run_time int, "
     "run_duration int, operator_emailed nvarchar(20), operator_netsent nvarchar(20), "
     "operator_paged nvarchar(20), retries_attempted int, server nvarchar(30)",
     "j.job_id, j.name, h.run_status, h.run_date, h.run_time, h.run_duration, null, null, null, "
     "h.retries_attempted, h.server",
     " and h.step_id = 0"},
    {"FULL",
     "instance_id int, job_id uniqueidentifier, job_name sysname, step_id int, step_name sysname, "
     "sql_message_id int, sql_severity int, message nvarchar(1024), run_status int, run_date int, "
     "run_time int, run_duration int, operator_emailed nvarchar(20), operator_netsent "
     "nvarchar(20), operator_paged nvarchar(20), retries_attempted int, server nvarchar(30)",
     "h.instance_id, j.job_id, j.name, h.step_id, h.step_name, h.sql_message_id, h.sql_severity, "
     "h.message, h.run_status, h.run_date, h.run_time, h.run_duration, null, null, null, "
     "h.retries_attempted, h.server",
     ""},
};

void HelpHistory(ProcedureCall& call) {
  Catalog agent = call.workspace().CatalogOf("msdb");
  const Cell job = WantedJob(call, agent, JobAccess::kRead);
  const std::string mode = call.Text("@mode", "SUMMARY");
  const auto* const form = std::ranges::find_if(
      kForms, [&](const HistoryForm& known) { return SameName(known.name, mode); });
  if (form == std::end(kForms)) Fail(14266, {"@mode", "SUMMARY, FULL"});
  const LoginInfo& login = call.workspace().login();
  SqliteStatement row = call.sqlite().Prepare(
      std::string("select ") + form->values + " from " + agent.Path("sysjobhistory") + " h join " +
          agent.Path("sysjobs") +
          " j on j.job_id = h.job_id where (?1 is null or j.job_id = ?1) and (?2 or j.owner_sid = "
          "?3) and (?4 is null or h.server = ?4)" +
          std::string(form->condition) + ConditionsOf(call) + " order by h.instance_id" +
          (call.Integer("@oldest_first") == 0 ? " desc" : ""),
      job, login.sysadmin ? 1 : 0, SidOf(call, login.name), call.Value("@server"));
  std::vector<std::vector<Cell>> rows;
  while (row.Step()) rows.push_back(row.Row());
  call.Rows(form->columns, rows);
}

// What runs at the moment stays: its row is how the next start knows that it was cut.
void PurgeHistory(ProcedureCall& call) {
  JobChange change(call);
  const Cell job = WantedJob(call, change.catalog, JobAccess::kChange);
  if (IsNullCell(job)) call.NeedAdministrator();
  change.catalog.Run(
      "delete from {}sysjobhistory where (?1 is null or job_id = ?1) and run_status <> ?2", job,
      RunStatus::kInProgress);
  const std::int64_t purged = call.sqlite().IntegerOf(0, "select changes()");
  change.scope.Commit();
  call.Inform(14226, {std::to_string(purged)});
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_help_jobhistory",
     "@job_id=, @job_name=, @step_id=, @sql_message_id=, @sql_severity=, @start_run_date=, "
     "@end_run_date=, @start_run_time=, @end_run_time=, @minimum_run_duration=, @run_status=, "
     "@minimum_retries=, @oldest_first=, @server=, @mode=",
     HelpHistory},
    {"sp_purge_jobhistory", "@job_name=, @job_id=", PurgeHistory},
};

}  // namespace

std::span<const ProcedureRow> JobHistoryProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
