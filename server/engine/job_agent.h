// What the procedures about jobs ask of the agent that runs them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace dbkeeper::server {

// Values of run_status in sysjobhistory and of last_run_outcome.
struct RunStatus {
  static constexpr int kFailed = 0;
  static constexpr int kSucceeded = 1;
  static constexpr int kCancelled = 3;
  static constexpr int kInProgress = 4;
};

// A job that is to run; jobs are told apart by the bytes of their job_id.
struct JobStart {
  std::string job;
  std::string name;
  int first_step = 0;   // 0: the one the job says
  std::string invoker;  // "User sa", "Schedule 3 (nightly)"
};

struct RunningStep {
  int id = 0;  // 0: none has begun
  std::string name;
};

// Thread safe.
class JobAgent {
 public:
  virtual ~JobAgent() = default;
  // The time by the agent's clock, in the engine's form; schedules are kept by it.
  virtual std::int64_t Now() const = 0;
  // Jobs, their schedules or their assignment are no longer what they were.
  virtual void JobsChanged() = 0;
  // Throws SqlError 22022 when the job runs already, or does not run.
  virtual void Start(const JobStart& start) = 0;
  virtual void Stop(const JobStart& which) = 0;
  // None when the job does not run.
  virtual std::optional<RunningStep> StepOf(const std::string& job) const = 0;
};

}  // namespace dbkeeper::server
