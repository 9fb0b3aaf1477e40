// One run of a job: its steps in the order that their ends say, each written down.
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "server/agent/job_history.h"
#include "server/engine/instance.h"
#include "server/engine/job_agent.h"

namespace dbkeeper::server {

class JobRun {
 public:
  // `instance` and `agent`, which tells the time, outlive the run.
  JobRun(Instance& instance, const JobAgent& agent, JobStart start);

  const JobStart& start() const { return start_; }
  // Runs the job to its end. What cannot be written down is told on the standard error.
  void Work();

  // The rest may be called from any thread.
  RunningStep step() const;
  bool stopping() const;
  // Nothing more is begun, and what runs is interrupted; `by` says who wants it: "User sa".
  void Stop(const std::string& by);
  // A stop that came between two statements interrupted none: it is to be told again until the run
  // has ended.
  void InterruptAgain();

 private:
  struct Step;
  class Interruptible;

  void RunSteps(AgentSession& session);
  std::optional<Step> ReadStep(AgentSession& session, int id) const;
  StepOutcome Execute(const Step& step);
  StepOutcome RunTransactSql(const Step& step);
  // How the run goes on: the next step, and the status and the first sentence when there is none.
  struct End {
    int next_step = 0;
    int status = 0;
    std::string beginning;
  };
  static End GoTo(int step);
  End EndAfter(const Step& step, const StepOutcome& outcome) const;
  void SetStep(const Step& step);

  Instance& instance_;
  const JobAgent& agent_;
  const JobStart start_;
  std::string owner_;
  mutable std::mutex mutex_;
  RunningStep step_;
  Session* session_ = nullptr;  // that runs a step's command
  std::string stopped_by_;      // empty: nobody stopped it
};

}  // namespace dbkeeper::server
