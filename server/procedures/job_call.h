// What the procedures about jobs share: the job they are called for, checks of their parameters,
// and a change of the agent's tables.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "server/procedures/procedure_call.h"
#include "server/types/job_schedule.h"

namespace dbkeeper::server {

enum class JobAccess { kRead, kChange };

// The job_id of the job that @job_id or @job_name means. Throws 14294 unless one of them is given,
// 14262 when there is none that the login may see, 14525 when it may not change it.
Cell NeedJob(ProcedureCall& call, Catalog& agent, JobAccess access);

// Of the login in master; a login that is let in without standing there has that of sa.
Cell SidOf(ProcedureCall& call, const std::string& login);

// Throws 14266 unless the value is one of the list "0, 1".
void NeedOneOf(std::string_view parameter, std::int64_t value, std::string_view values);

// Throws 14234 unless the value is one of the list "TSQL CMDEXEC"; `teller` is the procedure that
// lists the values.
void NeedKnown(std::string_view parameter, bool known, std::string_view teller);

// A parameter that is a name, or a text of at most so many characters; throws 8152.
std::string TextUpTo(ProcedureCall& call, std::string_view parameter, int limit,
                     std::string_view otherwise = {});
constexpr int kNameLimit = 128;

// Throws 50001 when the parameter asks for what the agent does not do here.
void RefuseGiven(ProcedureCall& call, std::initializer_list<std::string_view> parameters);

// The time by the agent's clock, and by the computer's when no agent runs.
AgentTime AgentNow(ProcedureCall& call);

// The columns of sysjobschedules that tell when a job is due, in order, and their values in a row
// from `column` on.
constexpr std::string_view kScheduleColumns =
    "freq_type, freq_interval, freq_relative_interval, freq_recurrence_factor, active_start_date, "
    "active_end_date, active_start_time";
JobSchedule ScheduleAt(const SqliteStatement& row, int column);

// A change of the agent's tables. Committed, it has raised the job's version, and the agent knows.
class JobChange : public DatabaseChange {
 public:
  explicit JobChange(ProcedureCall& call) : DatabaseChange(call, "msdb"), call_(call) {}
  void Commit(const Cell& job);

 private:
  ProcedureCall& call_;
};

}  // namespace dbkeeper::server
