// The agent runs jobs when they are due by its clock, and writes down what happened.
#include "server/agent/agent.h"

#include <chrono>
#include <optional>
#include <thread>

#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {

namespace {

// On an agent whose clock is put to a minute before noon of 2005-03-01, a Tuesday.
class AgentTest : public EngineTest {
 protected:
  AgentTest() : client_(Operator()) {
    agent_.emplace(instance());
    SetClock(115900);
    client_.Run("use msdb set lock_timeout 60000");
  }
  ~AgentTest() override {
    for (const char* job : {"test", "other", "last"}) {
      client_.Run(std::string("exec sp_delete_job @job_name = '") + job + "'");
    }
  }

  void SetClock(int time, int date = 20050301) { agent_->SetClock(FromAgentTime({date, time})); }

  // Runs what sets a job up and answers nothing.
  void Set(const std::string& batch) { EXPECT_EQ(client_.Run(batch), "") << batch; }
  // A job on the server with one step for each command, all but the last going to the next.
  void MakeJob(const std::string& name, const std::vector<std::string>& steps) {
    Set("exec sp_add_job @job_name = '" + name + "' exec sp_add_jobserver @job_name = '" + name +
        "'");
    for (const std::string& step : steps) {
      // A warning of a step that is yet to come may be said.
      client_.Run("exec sp_add_jobstep @job_name = '" + name + "', @step_name = 's" +
                  std::to_string(++steps_) + "', @on_success_action = 3, " + step);
      EXPECT_FALSE(client_.last().text.starts_with("error")) << step;
    }
  }
  void Schedule(const std::string& job, const std::string& values) {
    Set("exec sp_add_jobschedule @job_name = '" + job + "', @name = 'noon', " + values);
  }

  // Waits until the query answers so; gives the answer.
  std::string WaitFor(const std::string& query, const std::string& expected) {
    constexpr auto kPatience = std::chrono::seconds(60);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    std::string answer = client_.Run(query);
    while (answer != expected && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      answer = client_.Run(query);
    }
    return answer;
  }
  static std::string FinishedRuns(const std::string& job) {
    return "select count(*) from sysjobhistory where step_id = 0 and run_status <> 4 and job_id = "
           "(select job_id from sysjobs where name = '" +
           job + "')";
  }
  // Waits until the job has run so often and does not run.
  void ExpectRuns(const std::string& job, const std::string& count) {
    EXPECT_EQ(WaitFor(FinishedRuns(job), count), count) << job;
    const std::string status = "exec sp_help_job @job_name = '" + job + "'";
    while (client_.Run(status).find("|4|0 (unknown)|") == std::string::npos) {
      std::this_thread::yield();
    }
  }
  std::string History(const std::string& columns) {
    return client_.Run(
        "select " + columns +
        " from sysjobhistory where job_id = (select job_id from sysjobs where name = "
        "'test') order by instance_id");
  }

  std::optional<Agent> agent_;
  Client client_;
  int steps_ = 0;
};

constexpr const char* kRunning =
    "select count(*) from sysjobhistory where step_id = 1 and run_status = 4";
constexpr const char* kDailyAtNoon =
    "@freq_type = 4, @freq_interval = 1, @active_start_date = 20050301, @active_start_time = "
    "120000";

}  // namespace

TEST_F(AgentTest, ADueJobRunsInItsDatabaseAndItsHistoryTellsWhatWasSaid) {
  client_.Run("create database agentwork");
  MakeJob("test", {"@database_name = 'agentwork', @command = 'create table t (name sysname) insert "
                   "t values (db_name()) print ''made'''",
                   "@command = 'select 1 from nowhere'"});
  Schedule("test", kDailyAtNoon);
  SetClock(120000);
  ExpectRuns("test", "1");
  EXPECT_EQ(client_.Run("select name from agentwork..t"), "agentwork");
  EXPECT_EQ(History("step_id, step_name, run_status, run_date, run_time, sql_message_id, "
                    "sql_severity"),
            "1|s1|1|20050301|120000|0|0\n2|s2|0|20050301|120000|208|16\n"
            "0|(Job outcome)|0|20050301|120000|0|0");
  const std::string id = client_.Run("select schedule_id from sysjobschedules where name = 'noon'");
  EXPECT_EQ(History("message"),
            "Executed as user: sa. made [SQLSTATE 01000] (Message 0).  The step succeeded.\n"
            "Executed as user: sa. Invalid object name 'nowhere'. [SQLSTATE 42000] (Error 208).  "
            "The step failed.\n"
            "The job failed.  The Job was invoked by Schedule " +
                id + " (noon).  The last step to run was step 2 (s2).");
  EXPECT_EQ(
      client_.Run("select last_run_outcome, last_run_date, last_run_time from sysjobservers s "
                  "join sysjobs j on j.job_id = s.job_id where name = 'test'"),
      "0|20050301|120000");
  // The next day again.
  SetClock(120000, 20050302);
  ExpectRuns("test", "2");
  client_.Run("use master drop database agentwork use msdb");
}

TEST_F(AgentTest, StepsGoOnAsTheirEndsSay) {
  struct Case {
    std::vector<std::string> steps;
    const char* runs;  // "step|status" of each, the job's own last
  };
  const std::string good = "@command = 'print 1'";
  const std::string bad = "@command = 'raiserror(''no'', 16, 1)'";
  const Case cases[] = {
      {{good, good}, "1|1\n2|1\n0|1"},
      {{good + ", @on_fail_action = 3", bad, good}, "1|1\n2|0\n0|0"},
      {{bad + ", @on_fail_action = 3", good}, "1|0\n2|1\n0|1"},
      {{bad + ", @on_fail_action = 1", good}, "1|0\n0|1"},
      {{bad + ", @on_fail_action = 4, @on_fail_step_id = 3", good, good}, "1|0\n3|1\n0|1"},
      {{good, bad + ", @on_fail_action = 3"}, "1|1\n2|0\n0|0"},
      {{"@subsystem = 'CMDEXEC', @command = 'dir'"}, "1|0\n0|0"},
      {{"@database_name = 'agentgone', @command = 'print 1'"}, "1|0\n0|0"},
      {{}, "0|0"},
  };
  client_.Run("create database agentgone");
  for (const Case& c : cases) {
    steps_ = 0;
    MakeJob("test", c.steps);
    if (c.steps.size() == 1 && c.steps[0].find("agentgone") != std::string::npos) {
      client_.Run("drop database agentgone");
    }
    EXPECT_EQ(client_.Run("exec sp_start_job 'test'"), "message 14243");
    ExpectRuns("test", "1");
    EXPECT_EQ(History("step_id, run_status"), c.runs);
    if (c.steps.size() == 1) {
      const std::string message = History("message");
      const bool told = message.find("CMDEXEC is refused") != std::string::npos ||
                        message.find("'agentgone'") != std::string::npos;
      EXPECT_TRUE(told) << message;
    }
    Set("exec sp_delete_job @job_name = 'test'");
  }
}

TEST_F(AgentTest, OnlyEnabledJobsOnTheServerWithEnabledSchedulesAreStarted) {
  MakeJob("test", {"@command = 'print 1'"});
  Schedule("test", std::string(kDailyAtNoon) + ", @enabled = 0");
  MakeJob("other", {"@command = 'print 1'"});
  Schedule("other", kDailyAtNoon);
  MakeJob("last", {"@command = 'print 1'"});
  Schedule("last", kDailyAtNoon);
  Set("exec sp_update_job @job_name = 'other', @enabled = 0");
  SetClock(120000);
  ExpectRuns("last", "1");
  Set("exec sp_update_job @job_name = 'other', @enabled = 1 exec sp_delete_jobserver @job_name = "
      "'other'");
  SetClock(120000, 20050302);
  ExpectRuns("last", "2");
  // On the server again after noon: what has passed is not made up for.
  SetClock(120100, 20050302);
  Set("exec sp_add_jobserver @job_name = 'other' exec sp_update_jobschedule @job_name = 'test', "
      "@name = 'noon', @enabled = 1");
  SetClock(120000, 20050303);
  ExpectRuns("last", "3");
  ExpectRuns("other", "1");
  ExpectRuns("test", "1");
  EXPECT_EQ(
      client_.Run("select distinct run_date from sysjobhistory h join sysjobs j on j.job_id = "
                  "h.job_id where name in ('test', 'other')"),
      "20050303");
}

TEST_F(AgentTest, AJobRunsOnceAtATimeAndCanBeStopped) {
  MakeJob("test", {"@command = 'waitfor delay ''01:00:00'''", "@command = 'print 1'"});
  EXPECT_EQ(client_.Run("exec sp_start_job 'test'"), "message 14243");
  EXPECT_EQ(WaitFor(kRunning, "1"), "1");
  EXPECT_EQ(client_.Run("exec sp_start_job 'test'"), "error 22022");
  EXPECT_NE(client_.Run("exec sp_help_job @job_name = 'test'").find("|1|1 (s1)|"),
            std::string::npos);
  EXPECT_EQ(client_.Run("exec sp_stop_job 'test'"), "message 14254");
  ExpectRuns("test", "1");
  EXPECT_EQ(History("step_id, run_status"), "1|3\n0|3");
  EXPECT_NE(History("message").find("The job was stopped prior to completion by User "),
            std::string::npos);
  EXPECT_EQ(client_.Run("exec sp_stop_job 'test'"), "error 22022");
  EXPECT_EQ(client_.Run("exec sp_start_job 'test', @step_name = 's2'"), "message 14243");
  ExpectRuns("test", "2");
}

TEST_F(AgentTest, AnEndOfTheAgentCancelsWhatRuns) {
  MakeJob("test", {"@command = 'waitfor delay ''01:00:00'''"});
  EXPECT_EQ(client_.Run("exec sp_start_job 'test'"), "message 14243");
  EXPECT_EQ(WaitFor(kRunning, "1"), "1");
  agent_.reset();
  EXPECT_EQ(History("step_id, run_status"), "1|3\n0|3");
  EXPECT_NE(History("message").find("Shutdown Sequence 0"), std::string::npos);
}

}  // namespace dbkeeper::server
