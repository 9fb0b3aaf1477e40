#include "server/agent/job_run.h"

#include <exception>
#include <iostream>
#include <memory>
#include <utility>

#include "server/types/text.h"

namespace dbkeeper::server {

namespace {

constexpr int kMessageLimit = 1024;  // of sysjobhistory.message

struct StepEnd {
  int action = 0;
  int step = 0;
};
constexpr int kQuitWithSuccess = 1;
constexpr int kQuitWithFailure = 2;
constexpr int kNextStep = 3;

// Gathers what a step's command says, in the words of the history.
class StepSink : public QuietSink {
 public:
  void OnMessage(const ServerMessage& message) override {
    const bool error = message.IsError();
    if (!text_.empty()) text_ += "  ";
    text_ += message.text + (error ? " [SQLSTATE 42000] (Error " : " [SQLSTATE 01000] (Message ") +
             std::to_string(message.number) + ")";
    if (failed_ && !error) return;
    failed_ = error;
    message_id_ = message.number;
    severity_ = message.severity;
  }

  StepOutcome Outcome(const std::string& owner, bool stopped) const {
    const int status = stopped   ? RunStatus::kCancelled
                       : failed_ ? RunStatus::kFailed
                                 : RunStatus::kSucceeded;
    const std::string end =
        stopped   ? "The step was cancelled (stopped) as the result of a stop job request."
        : failed_ ? "The step failed."
                  : "The step succeeded.";
    std::string message = "Executed as user: " + owner + ". " + text_;
    const int room = kMessageLimit - Utf16Length(end) - Utf16Length(".  ");
    message = std::string(CutText(message, room, TextUnit::kUtf16Unit));
    message += (text_.empty() ? " " : ".  ") + end;
    return {status, message_id_, severity_, std::move(message)};
  }

 private:
  std::string text_;
  bool failed_ = false;
  int message_id_ = 0;
  int severity_ = 0;
};

std::string SentenceOf(int status) {
  return status == RunStatus::kSucceeded ? "The job succeeded." : "The job failed.";
}

}  // namespace

struct JobRun::Step : RunningStep {
  std::string subsystem;
  std::string command;
  std::string database;
  StepEnd on_success;
  StepEnd on_fail;
};

JobRun::JobRun(Instance& instance, const JobAgent& agent, JobStart start)
    : instance_(instance), agent_(agent), start_(std::move(start)) {}

RunningStep JobRun::step() const {
  const std::scoped_lock lock(mutex_);
  return step_;
}

bool JobRun::stopping() const {
  const std::scoped_lock lock(mutex_);
  return !stopped_by_.empty();
}

void JobRun::Stop(const std::string& by) {
  const std::scoped_lock lock(mutex_);
  if (stopped_by_.empty()) stopped_by_ = by;
  if (session_ != nullptr) session_->Interrupt();
}

void JobRun::InterruptAgain() {
  const std::scoped_lock lock(mutex_);
  if (session_ != nullptr) session_->Interrupt();
}

void JobRun::SetStep(const Step& step) {
  const std::scoped_lock lock(mutex_);
  step_ = step;
}

// While it lives a stop interrupts the session.
class JobRun::Interruptible {
 public:
  Interruptible(JobRun& run, Session& session) : run_(run) { Set(&session); }
  ~Interruptible() { Set(nullptr); }
  Interruptible(const Interruptible&) = delete;
  Interruptible& operator=(const Interruptible&) = delete;

 private:
  void Set(Session* session) {
    const std::scoped_lock lock(run_.mutex_);
    run_.session_ = session;
  }
  JobRun& run_;
};

void JobRun::Work() {
  try {
    AgentSession session(instance_);
    RunSteps(session);
  } catch (const std::exception& error) {
    std::cerr << "job " << start_.name << ": " << error.what() << '\n';
  }
}

std::optional<JobRun::Step> JobRun::ReadStep(AgentSession& session, int id) const {
  const CellRows rows = session.Run(
      "select step_name, subsystem, isnull(command, N''), isnull(database_name, N'master'), "
      "on_success_action, on_success_step_id, on_fail_action, on_fail_step_id from "
      "msdb.dbo.sysjobsteps where job_id = @job and step_id = @step",
      {IdParameter("@job", start_.job), NumberParameter("@step", id)});
  if (rows.empty()) return std::nullopt;
  const std::vector<Cell>& row = rows[0];
  const auto number = [&row](std::size_t i) { return static_cast<int>(NumberOf(row[i])); };
  Step step;
  step.id = id;
  step.name = TextOf(row[0]);
  step.subsystem = TextOf(row[1]);
  step.command = TextOf(row[2]);
  step.database = TextOf(row[3]);
  step.on_success = {number(4), number(5)};
  step.on_fail = {number(6), number(7)};
  return step;
}

void JobRun::RunSteps(AgentSession& session) {
  const CellRows job = session.Run(
      "select j.start_step_id, isnull(l.name, N'') from msdb.dbo.sysjobs j left join "
      "master.dbo.syslogins l on l.sid = j.owner_sid where j.job_id = @job",
      {IdParameter("@job", start_.job)});
  if (job.empty()) return;
  owner_ = TextOf(job[0][1]);
  JobHistory history(session, agent_, start_, instance_.server_name());
  history.BeginRun();
  if (owner_.empty()) {
    history.EndRun(RunStatus::kFailed, "The job failed.  Its owner is no login any more.");
    return;
  }
  End end =
      GoTo(start_.first_step != 0 ? start_.first_step : static_cast<int>(NumberOf(job[0][0])));
  while (end.next_step != 0) {
    const std::optional<Step> step = ReadStep(session, end.next_step);
    if (!step) break;
    SetStep(*step);
    history.BeginStep(*step);
    const StepOutcome outcome = Execute(*step);
    history.EndStep(outcome);
    end = EndAfter(*step, outcome);
  }
  history.EndRun(end.status, end.beginning);
}

JobRun::End JobRun::GoTo(int step) {
  return {step, RunStatus::kFailed,
          "The job failed.  It has no step " + std::to_string(step) + "."};
}

JobRun::End JobRun::EndAfter(const Step& step, const StepOutcome& outcome) const {
  if (outcome.status == RunStatus::kCancelled) {
    const std::scoped_lock lock(mutex_);
    return {0, outcome.status, "The job was stopped prior to completion by " + stopped_by_ + "."};
  }
  const StepEnd& end = outcome.status == RunStatus::kSucceeded ? step.on_success : step.on_fail;
  switch (end.action) {
    case kQuitWithSuccess:
      return {0, RunStatus::kSucceeded, SentenceOf(RunStatus::kSucceeded)};
    case kQuitWithFailure:
      return {0, RunStatus::kFailed, SentenceOf(RunStatus::kFailed)};
    case kNextStep:
      return {step.id + 1, outcome.status, SentenceOf(outcome.status)};
    default:
      return GoTo(end.step);
  }
}

StepOutcome JobRun::Execute(const Step& step) {
  if (SameName(step.subsystem, "TSQL")) return RunTransactSql(step);
  constexpr int kRefused = 50001;
  constexpr int kSeverity = 16;
  return {RunStatus::kFailed, kRefused, kSeverity,
          "The local server runs no commands of the operating system: a step of the subsystem " +
              step.subsystem + " is refused.  The step failed."};
}

StepOutcome JobRun::RunTransactSql(const Step& step) {
  StepSink sink;
  try {
    const std::unique_ptr<Session> session =
        instance_.Admit(owner_,
                        {.host_name = instance_.server_name(),
                         .program_name = "SQLAgent - TSQL JobStep (Job 0x" + HexDigits(start_.job) +
                                         " : Step " + std::to_string(step.id) + ")"},
                        step.database);
    const Interruptible interruptible(*this, *session);
    if (!stopping()) session->RunBatch(step.command, sink);
  } catch (const SqlError& error) {
    sink.OnMessage(error.message());
  }
  return sink.Outcome(owner_, stopping());
}

}  // namespace dbkeeper::server
