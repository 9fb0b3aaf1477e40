// What is written in msdb of a run of a job while it goes on, so that a run that is cut is known.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "server/agent/agent_session.h"
#include "server/engine/job_agent.h"

namespace dbkeeper::server {

// How a step ended; the status is one of RunStatus.
struct StepOutcome {
  int status = 0;
  int message_id = 0;  // the last error's, else the last message's
  int severity = 0;
  std::string message;
};

// One run's rows. A step, and the job as its step 0, is in progress from its beginning on; at its
// end the job's row comes behind those of its steps. Throws SqlError.
class JobHistory {
 public:
  // `agent` is asked for the time.
  JobHistory(AgentSession& session, const JobAgent& agent, const JobStart& start,
             std::string server);

  void BeginRun();
  void BeginStep(const RunningStep& step);
  void EndStep(const StepOutcome& outcome);
  // `beginning` is the first sentence of the job's message: "The job succeeded."
  void EndRun(int status, std::string_view beginning);

  // Closes the runs of a server that ended without closing them.
  static void CloseCutRuns(AgentSession& session);

 private:
  struct Entry {
    std::int64_t id = 0;
    std::int64_t begun = 0;
  };
  Entry Begin(const RunningStep& step, std::string_view message);
  // Parameters of a row's end.
  Parameters EndOf(const Entry& entry, const StepOutcome& outcome) const;

  AgentSession& session_;
  const JobAgent& agent_;
  const JobStart start_;
  const std::string server_;
  Entry run_;
  Entry step_entry_;
  RunningStep step_;
};

}  // namespace dbkeeper::server
