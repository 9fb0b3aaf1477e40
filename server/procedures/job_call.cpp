#include "server/procedures/job_call.h"

#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

bool ListHas(std::string_view values, std::int64_t value) {
  const std::string wanted = std::to_string(value);
  for (std::string_view rest = values; !rest.empty();) {
    const std::string_view one = rest.substr(0, rest.find(','));
    if (one == wanted) return true;
    rest.remove_prefix(std::min(one.size() + 2, rest.size()));
  }
  return false;
}

}  // namespace

Cell SidOf(ProcedureCall& call, const std::string& login) {
  SqliteStatement row = call.sqlite().Prepare(
      "select sid from main.syslogins where name in (?1, 'sa') order by name = ?1 desc", login);
  return row.Step() ? row.Value(0) : Cell();
}

Cell NeedJob(ProcedureCall& call, Catalog& agent, JobAccess access) {
  if (call.Has("@job_id") == call.Has("@job_name")) Fail(14294, {"@job_id", "@job_name"});
  SqliteStatement row =
      agent.Prepare("select job_id, owner_sid from {}sysjobs where job_id = ?1 or name = ?2",
                    call.Value("@job_id"), call.Value("@job_name"));
  const bool found = row.Step();
  const LoginInfo& login = call.workspace().login();
  const bool own = login.sysadmin || (found && row.Value(1) == SidOf(call, login.name));
  if (found && !own && access == JobAccess::kChange) Fail(14525);
  if (!found || !own) {
    Fail(14262, {call.Has("@job_name") ? "@job_name" : "@job_id", call.Text("@job_name")});
  }
  return row.Value(0);
}

void NeedOneOf(std::string_view parameter, std::int64_t value, std::string_view values) {
  if (!ListHas(values, value)) Fail(14266, {parameter, values});
}

void NeedKnown(std::string_view parameter, bool known, std::string_view teller) {
  if (!known) Fail(14234, {parameter, teller});
}

std::string TextUpTo(ProcedureCall& call, std::string_view parameter, int limit,
                     std::string_view otherwise) {
  std::string text = call.Text(parameter, otherwise);
  if (Utf16Length(text) > limit) Fail(8152);
  return text;
}

void RefuseGiven(ProcedureCall& call, std::initializer_list<std::string_view> parameters) {
  for (const std::string_view parameter : parameters) {
    const bool asks = call.Has(parameter) && call.Text(parameter) != "0";
    if (asks) throw Unsupported("the parameter " + std::string(parameter));
  }
}

AgentTime AgentNow(ProcedureCall& call) {
  const JobAgent* const agent = call.workspace().instance().agent();
  return ToAgentTime(agent != nullptr ? agent->Now() : CurrentTime());
}

JobSchedule ScheduleAt(const SqliteStatement& row, int column) {
  const auto at = [&](int i) { return static_cast<int>(row.Integer(column + i)); };
  return {at(0), at(1), at(2), at(3), at(4), at(5), at(6)};
}

void JobChange::Commit(const Cell& job) {
  catalog.Run(
      "update {}sysjobs set date_modified = ?2, version_number = version_number + 1 where job_id = "
      "?1",
      job, CurrentTime());
  scope.Commit();
  JobAgent* const agent = call_.workspace().instance().agent();
  if (agent != nullptr) agent->JobsChanged();
}

}  // namespace dbkeeper::server
