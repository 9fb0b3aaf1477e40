// The agent: starts the jobs of msdb that are on the server and enabled when they are due.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "server/engine/instance.h"
#include "server/engine/job_agent.h"
#include "server/types/job_schedule.h"

namespace dbkeeper::server {

// What was due while no agent ran is not made up for. Each job runs on a thread of its own, once at
// a time: what is due while it runs is left out.
class Agent : public JobAgent {
 public:
  // Closes in the history the runs that an earlier agent left open, and begins. `instance` outlives
  // the agent; nobody is in yet.
  explicit Agent(Instance& instance);
  // Stops what runs and waits for it.
  ~Agent() override;
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  // Lets the agent's clock go on from `now`, local time in the engine's form. What lies between is
  // due at once when the clock is put forward.
  void SetClock(std::int64_t now);

  std::int64_t Now() const override;
  void JobsChanged() override;
  void Start(const JobStart& start) override;
  void Stop(const JobStart& which) override;
  std::optional<RunningStep> StepOf(const std::string& job) const override;

 private:
  struct Run;
  // A schedule, and when it is due next.
  struct Due {
    JobStart start;
    JobSchedule schedule;
    AgentTime next;
  };
  using DueSchedules = std::map<std::int64_t, Due>;
  using Lock = std::unique_lock<std::mutex>;

  void CloseCutRuns();
  void Watch();
  // Reads the schedules; one that has not changed stays due when it was.
  void Read(Lock& lock);
  DueSchedules ReadSchedules();
  void StartDue();
  void Begin(const JobStart& start);
  void RemoveFinished(Lock& lock);
  const Run* FindRun(const std::string& job) const;
  // How long there is nothing to do.
  std::chrono::milliseconds Pause() const;

  Instance& instance_;
  std::atomic<std::int64_t> clock_offset_ = 0;
  mutable std::mutex mutex_;
  std::mutex read_mutex_;  // taken before the other
  std::condition_variable wake_;
  bool awake_ = false;  // something has happened since the last look
  bool ending_ = false;
  DueSchedules due_;
  std::list<Run> runs_;
  std::thread thread_;
};

}  // namespace dbkeeper::server
