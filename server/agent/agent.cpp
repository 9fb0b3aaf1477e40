#include "server/agent/agent.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <system_error>
#include <utility>

#include "server/agent/agent_session.h"
#include "server/agent/job_history.h"
#include "server/agent/job_run.h"
#include "server/types/datetime.h"

namespace dbkeeper::server {

namespace {

using std::chrono::milliseconds;

// The schedules are read again so often, whether or not anybody said that they have changed.
constexpr milliseconds kLongestPause{60'000};
// How often a run that is to stop is told so.
constexpr milliseconds kInsistence{20};

void Complain(const std::exception& error) { std::cerr << "agent: " << error.what() << '\n'; }

}  // namespace

struct Agent::Run {
  Run(Instance& instance, const JobAgent& agent, const JobStart& start)
      : work(instance, agent, start) {}

  JobRun work;
  bool finished = false;
  std::thread thread;
};

Agent::Agent(Instance& instance) : instance_(instance) {
  CloseCutRuns();
  instance_.SetAgent(this);
  thread_ = std::thread([this] { Watch(); });
}

Agent::~Agent() {
  {
    const Lock lock(mutex_);
    ending_ = true;
    awake_ = true;
    for (Run& run : runs_) run.work.Stop("Shutdown Sequence 0");
  }
  wake_.notify_all();
  thread_.join();
  instance_.SetAgent(nullptr);
}

void Agent::CloseCutRuns() {
  try {
    AgentSession session(instance_);
    JobHistory::CloseCutRuns(session);
  } catch (const std::exception& error) {
    Complain(error);
  }
}

std::int64_t Agent::Now() const { return CurrentTime() + clock_offset_; }

void Agent::SetClock(std::int64_t now) {
  {
    Lock lock(mutex_);
    // What was added just before is due by the time that it was then.
    Read(lock);
    if (now < Now()) due_.clear();
    clock_offset_ = now - CurrentTime();
    awake_ = true;
  }
  wake_.notify_all();
}

void Agent::JobsChanged() {
  {
    const Lock lock(mutex_);
    awake_ = true;
  }
  wake_.notify_all();
}

const Agent::Run* Agent::FindRun(const std::string& job) const {
  const auto found = std::ranges::find_if(
      runs_, [&](const Run& run) { return !run.finished && run.work.start().job == job; });
  return found == runs_.end() ? nullptr : &*found;
}

std::optional<RunningStep> Agent::StepOf(const std::string& job) const {
  const Lock lock(mutex_);
  const Run* const run = FindRun(job);
  return run == nullptr ? std::nullopt : std::optional(run->work.step());
}

void Agent::Start(const JobStart& start) {
  const Lock lock(mutex_);
  const Run* const run = FindRun(start.job);
  if (run != nullptr) {
    Fail(22022, {"Request to run job " + start.name + " (from " + start.invoker +
                 ") refused because the job is already running from a request by " +
                 run->work.start().invoker + "."});
  }
  if (!ending_) Begin(start);
}

void Agent::Stop(const JobStart& which) {
  {
    const Lock lock(mutex_);
    const auto run = std::ranges::find_if(runs_, [&](const Run& candidate) {
      return !candidate.finished && candidate.work.start().job == which.job;
    });
    if (run == runs_.end()) {
      Fail(22022, {"Request to stop job " + which.name + " (from " + which.invoker +
                   ") refused because the job is not currently running."});
    }
    run->work.Stop(which.invoker);
    awake_ = true;
  }
  wake_.notify_all();
}

// The mutex is held.
void Agent::Begin(const JobStart& start) {
  Run& run = runs_.emplace_back(instance_, *this, start);
  try {
    run.thread = std::thread([this, &run] {
      run.work.Work();
      {
        const Lock lock(mutex_);
        run.finished = true;
        awake_ = true;
      }
      wake_.notify_all();
    });
  } catch (const std::system_error& error) {
    runs_.pop_back();  // no thread to be had
    Complain(error);
  }
}

void Agent::RemoveFinished(Lock& lock) {
  std::list<Run> finished;
  for (auto run = runs_.begin(); run != runs_.end();) {
    const auto next = std::next(run);
    if (run->finished) finished.splice(finished.end(), runs_, run);
    run = next;
  }
  lock.unlock();
  for (Run& run : finished) run.thread.join();
  lock.lock();
}

Agent::DueSchedules Agent::ReadSchedules() {
  AgentSession session(instance_);
  DueSchedules schedules;
  for (const std::vector<Cell>& row : session.Run(
           "select s.schedule_id, j.job_id, j.name, s.name, s.freq_type, s.freq_interval, "
           "s.freq_relative_interval, s.freq_recurrence_factor, s.active_start_date, "
           "s.active_end_date, s.active_start_time from msdb.dbo.sysjobschedules s join "
           "msdb.dbo.sysjobs j on j.job_id = s.job_id join msdb.dbo.sysjobservers t on t.job_id = "
           "j.job_id where s.enabled = 1 and j.enabled = 1")) {
    const auto number = [&row](std::size_t i) { return static_cast<int>(NumberOf(row[i])); };
    const std::int64_t id = NumberOf(row[0]);
    schedules[id] = {
        .start = {.job = std::get<Blob>(row[1]).bytes,
                  .name = TextOf(row[2]),
                  .invoker = "Schedule " + std::to_string(id) + " (" + TextOf(row[3]) + ")"},
        .schedule = {number(4), number(5), number(6), number(7), number(8), number(9), number(10)},
        .next = {}};
  }
  return schedules;
}

void Agent::Read(Lock& lock) {
  lock.unlock();
  // A list that was read earlier must not come after a later one.
  const std::scoped_lock reading(read_mutex_);
  DueSchedules schedules;
  try {
    schedules = ReadSchedules();
    lock.lock();
  } catch (const std::exception& error) {
    Complain(error);
    lock.lock();
    return;  // what was known stays until the next look
  }
  const AgentTime now = ToAgentTime(Now());
  for (auto& [id, due] : schedules) {
    const auto known = due_.find(id);
    const bool same = known != due_.end() && known->second.schedule == due.schedule;
    due.next = same ? known->second.next : NextRun(due.schedule, now);
  }
  due_ = std::move(schedules);
}

void Agent::StartDue() {
  const AgentTime now = ToAgentTime(Now());
  for (auto& [id, due] : due_) {
    if (due.next.date == 0 || due.next > now) continue;
    due.next = NextRun(due.schedule, now);
    if (FindRun(due.start.job) == nullptr) Begin(due.start);
  }
}

milliseconds Agent::Pause() const {
  const bool stopping = std::ranges::any_of(
      runs_, [](const Run& run) { return !run.finished && run.work.stopping(); });
  if (stopping) return kInsistence;
  const std::int64_t now = Now();
  milliseconds pause = kLongestPause;
  for (const auto& [id, due] : due_) {
    if (due.next.date == 0) continue;
    const std::int64_t ticks = FromAgentTime(due.next) - now;
    const milliseconds until{std::max<std::int64_t>(ticks, 0) * 1000 / kTicksPerSecond + 1};
    pause = std::min(pause, until);
  }
  return pause;
}

void Agent::Watch() {
  Lock lock(mutex_);
  for (;;) {
    awake_ = false;
    for (Run& run : runs_) {
      if (run.work.stopping()) run.work.InterruptAgain();
    }
    RemoveFinished(lock);
    if (ending_ && runs_.empty()) return;
    if (!ending_) Read(lock);
    if (!ending_) StartDue();
    wake_.wait_for(lock, Pause(), [this] { return awake_; });
  }
}

}  // namespace dbkeeper::server
