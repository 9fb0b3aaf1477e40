// The procedures about jobs, beside an agent whose clock stands still.
#include "server/types/datetime.h"
#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {

namespace {

struct Case {
  const char* batch;
  const char* expected;
};

class StandingAgent : public JobAgent {
 public:
  // A Tuesday at noon.
  std::int64_t Now() const override { return FromCivil({2005, 3, 1, 12, 0, 0, 0}); }
  void JobsChanged() override { ++changes; }
  void Start(const JobStart& start) override { started = start; }
  void Stop(const JobStart& which) override { stopped = which; }
  std::optional<RunningStep> StepOf(const std::string& job) const override {
    return job == running ? std::optional<RunningStep>({2, "second"}) : std::nullopt;
  }

  int changes = 0;
  JobStart started;
  JobStart stopped;
  std::string running;
};

class JobProceduresTest : public EngineTest {
 protected:
  JobProceduresTest() : client_(Operator()) {
    instance().SetAgent(&agent_);
    client_.Run("use msdb");
  }
  ~JobProceduresTest() override {
    client_.Run("delete msdb..sysjobs where name like 'test%'");
    client_.Run(
        "delete msdb..sysjobservers where job_id not in (select job_id from msdb..sysjobs)");
    instance().SetAgent(nullptr);
  }

  template <std::size_t Count>
  void Answers(const Case (&cases)[Count]) {
    for (const Case& c : cases) EXPECT_EQ(client_.Run(c.batch), c.expected) << c.batch;
  }
  std::string Run(const char* batch) { return client_.Run(batch); }

  StandingAgent agent_;
  Client client_;
};

}  // namespace

TEST_F(JobProceduresTest, AJobIsMadeChangedAndDeleted) {
  constexpr Case kCases[] = {
      {"exec sp_add_job @job_name    = [test],                @enabled     = 0,                "
       "@description = '夜',                @owner_login_name = 'sa'",
       ""},
      {"select name, enabled, description, start_step_id, notify_level_eventlog, version_number "
       "from sysjobs where name = 'test'",
       "test|0|夜|1|2|1"},
      {"exec sp_add_job @job_name = 'TEST'", "error 14261"},
      {"exec sp_add_job @job_name = 'test2', @owner_login_name = 'nobody'", "error 14234"},
      {"exec sp_add_job @job_name = 'test2', @category_name = 'none'", "error 14234"},
      {"exec sp_add_job @job_name = 'test2', @enabled = 2", "error 14266"},
      {"exec sp_add_job @job_name = 'test2', @enabled = 'x'", "error 8114"},
      {"exec sp_add_job @job_name = 'test2', @notify_level_email = 2", "error 50001"},
      {"exec sp_add_job @enabled = 1", "error 201"},
      {"exec sp_update_job @job_name    = [test],                   @enabled     = 1,              "
       "     @description = ''",
       ""},
      {"select enabled, description, version_number from sysjobs where name = 'test'", "1||2"},
      {"exec sp_update_job @job_name = [test], @new_name = '夜間バックアップ'", "error 14261"},
      {"exec sp_update_job @job_name = [test], @new_name = 'test2' select name, enabled from "
       "sysjobs where name like 'test%'",
       "test2|1"},
      {"exec sp_update_job @job_name = [test], @enabled = 1", "error 14262"},
      {"exec sp_update_job @enabled = 1", "error 14294"},
      {"exec sp_help_job @job_name = [nothing]", "error 14262"},
      {"exec sp_delete_job @job_name ='test2'", ""},
      {"exec sp_delete_job @job_name ='test2'", "error 14262"},
  };
  Answers(kCases);
  EXPECT_EQ(agent_.changes, 4);
  client_.Run("exec sp_add_job @job_name = 'test', @enabled = 5");
  EXPECT_EQ(client_.FirstMessage(),
            "The specified '@enabled' is invalid (valid values are: 0, 1).");
}

TEST_F(JobProceduresTest, StepsAreNumberedWithoutAGap) {
  static constexpr const char* kSteps =
      "select step_id, step_name, on_success_action, on_success_step_id, on_fail_action, "
      "on_fail_step_id from sysjobsteps s join sysjobs j on j.job_id = s.job_id where j.name = "
      "'test' order by step_id";
  constexpr Case kCases[] = {
      {"exec sp_add_job @job_name = 'test'", ""},
      {"exec sp_add_jobstep    @job_name            = [test],                       @step_name     "
       "      = 'one',                       @subsystem           = 'TSQL',                       "
       "@on_success_action   = 3,                       @on_success_step_id  = 1,                  "
       "     @on_fail_action      = 2,                       @on_fail_step_id     = 1,             "
       "          @command             = 'print ''it''''s''\r\n'",
       ""},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'two', @command = 'select 1', "
       "@on_success_action = 4, @on_success_step_id = 3, @on_fail_action = 4, @on_fail_step_id = 1",
       "message 14236"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'three', @subsystem = 'cmdexec', "
       "@on_fail_action = 4, @on_fail_step_id = 2",
       ""},
      {kSteps, "1|one|3|1|2|1\n2|two|4|3|4|1\n3|three|1|0|4|2"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'zero', @step_id = 1", ""},
      {kSteps, "1|zero|1|0|2|0\n2|one|3|2|2|2\n3|two|4|4|4|2\n4|three|1|0|4|3"},
      {"exec sp_delete_jobstep @job_name = [test], @step_id = '3'", ""},
      {kSteps, "1|zero|1|0|2|0\n2|one|3|2|2|2\n3|three|1|0|2|0"},
      {"exec sp_update_jobstep @job_name = [test], @step_id = '3', @step_name = 'last', "
       "@subsystem = 'TSQL', @on_success_action = 1, @on_success_step_id = 1, @on_fail_action = 2, "
       "@on_fail_step_id = 1, @command = 'print 3'",
       ""},
      {"select step_name, subsystem, command, database_name from sysjobsteps where step_name = "
       "'last'",
       "last|TSQL|print 3|master"},
      {"exec sp_update_jobstep @job_name = [test], @step_id = '4', @step_name = 'x'",
       "error 14262"},
      {"exec sp_help_jobstep @job_name = [test], @step_id = 4", "error 14262"},
      {"exec sp_delete_jobstep @job_name = [test], @step_id = 4", "error 14266"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'last'", "error 14261"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'x', @step_id = 5", "error 14266"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'x', @subsystem = 'LogReader'",
       "error 14234"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'x', @on_fail_action = 0",
       "error 14266"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'x', @on_fail_action = 4, "
       "@on_fail_step_id = 4",
       "error 14235"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'x', @database_name = 'nothing'",
       "error 14262"},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'x', @retry_attempts = 3",
       "error 50001"},
      {"exec sp_add_jobstep @job_name = 'nothing', @step_name = 'x'", "error 14262"},
      {kSteps, "1|zero|1|0|2|0\n2|one|3|2|2|2\n3|last|1|1|2|1"},
      {"exec sp_delete_jobstep @job_name = [test], @step_id = 0", ""},
      {kSteps, ""},
  };
  Answers(kCases);
  client_.Run("exec sp_add_jobstep @job_name = 'test', @step_name = 'x', @command = 'it''s\r\n'");
  const std::string shown = client_.Run("exec sp_help_jobstep @job_name = [test], @step_id = 1");
  EXPECT_TRUE(shown.starts_with("1|x|TSQL|it's\r\n|0|0|1|0|2|0|NULL|master|")) << shown;
}

TEST_F(JobProceduresTest, SchedulesAreCheckedAndTellTheirNextRun) {
  struct ScheduleCase {
    const char* values;
    const char* expected;
  };
  // Added to a job that is on the server, the next run follows as "yyyymmdd|hhmmss".
  constexpr ScheduleCase kCases[] = {
      {"@freq_type         = 1,@active_start_date = 20050302,@active_start_time = 013000",
       "20050302|13000"},
      {"@freq_type         = 1,@active_start_date = 20050301,@active_start_time = 115959", "0|0"},
      {"@freq_type         = 4,@freq_interval     = 1,@freq_subday_type  = 1,@active_start_date = "
       "20050301,@active_start_time = 120000",
       "20050302|120000"},
      {"@freq_type         = 8,@freq_interval     = 34,@freq_subday_type  = "
       "1,@freq_recurrence_factor = 1,@active_start_date = 20050301,@active_start_time = 000000",
       "20050304|0"},
      {"@freq_type         = 16,@freq_interval     = 31,@freq_subday_type  = "
       "1,@freq_recurrence_factor = 1,@active_start_date = 20050401,@active_start_time = 010000",
       "20050531|10000"},
      {"@freq_type         = 32,@freq_subday_type  = 1,@freq_interval     = "
       "2,@freq_relative_interval = 16,@freq_recurrence_factor = 1,@active_start_date = "
       "20050301,@active_start_time = 010000",
       "20050328|10000"},
      {"@freq_type = 4, @freq_interval = 1", "20050302|0"},
      {"@freq_type = 4, @freq_interval = 1, @enabled = 0", "0|0"},
      {"@freq_type = 4, @freq_interval = 1, @active_end_date = 20050301", "0|0"},
      {"@freq_type = 0", "error 14266"},
      {"@freq_type = 2", "error 14266"},
      {"@freq_type = 12", "error 14266"},
      {"@freq_type = 64", "error 50001"},
      {"@freq_type = 4, @freq_interval = 1, @freq_subday_type = 8", "error 50001"},
      {"@freq_type = 4, @freq_interval = 1, @enabled = 3", "error 14266"},
      {"@freq_type = 4", "error 14278"},
      {"@freq_type = 8, @freq_interval = 0, @freq_recurrence_factor = 1", "error 14278"},
      {"@freq_type = 8, @freq_interval = 128, @freq_recurrence_factor = 1", "error 14278"},
      {"@freq_type = 8, @freq_interval = 1", "error 14278"},
      {"@freq_type = 16, @freq_interval = 32, @freq_recurrence_factor = 1", "error 14278"},
      {"@freq_type = 32, @freq_interval = 16, @freq_relative_interval = 16, "
       "@freq_recurrence_factor = 1",
       "error 14278"},
      {"@freq_type = 32, @freq_interval = 5, @freq_relative_interval = 3, @freq_recurrence_factor "
       "= 1",
       "error 14278"},
      {"@freq_type = 1, @active_start_date = 20050230", "error 14266"},
      {"@freq_type = 1, @active_start_time = 246000", "error 14287"},
      {"@freq_type = 1, @active_start_date = 20050302, @active_end_date = 20050301", "error 14288"},
      {"@freq_type = 'x'", "error 8114"},
  };
  client_.Run("exec sp_add_job @job_name = 'test'");
  for (const char* const number : {"first", "second"}) {
    const bool targeted = *number == 's';
    if (targeted) client_.Run("exec sp_add_jobserver @job_name = [test]");
    for (const auto& [values, expected] : kCases) {
      const std::string added = client_.Run(
          "exec sp_add_jobschedule @job_name          = [test],@name              = 'once',"
          "" +
          std::string(values));
      std::string answer = added;
      if (added.empty()) {
        answer = client_.Run("exec sp_help_jobschedule @job_name = [test]");
        // The last two columns.
        answer = answer.substr(answer.rfind('|', answer.rfind('|') - 1) + 1);
        EXPECT_EQ(client_.Run("exec sp_delete_jobschedule @job_name = [test], @name = [once]"), "");
      }
      const bool error = std::string_view(expected).starts_with("error");
      EXPECT_EQ(answer, targeted || error ? expected : "0|0") << values;
    }
  }
  client_.Run("exec sp_add_jobschedule @job_name = 'test', @name = 's', @freq_type = 4");
  EXPECT_EQ(client_.FirstMessage(),
            "Schedule error: @freq_interval must be at least 1 for a daily job.");
}

TEST_F(JobProceduresTest, AScheduleIsRenamedAndKeepsWhatIsNotGiven) {
  static constexpr const char* kRows =
      "select name, enabled, freq_type, freq_interval, active_start_time from sysjobschedules s "
      "where job_id = (select job_id from sysjobs where name = 'test') order by name";
  constexpr Case kCases[] = {
      {"exec sp_add_job @job_name = 'test'", ""},
      {"exec sp_add_jobschedule @job_name = 'test', @name = 'a', @freq_type = 4, @freq_interval = "
       "2, @active_start_time = 010000",
       ""},
      {"exec sp_add_jobschedule @job_name = 'test', @name = 'b', @freq_type = 1", ""},
      {"exec sp_add_jobschedule @job_name = 'test', @name = 'A', @freq_type = 1", "error 14261"},
      {"exec sp_update_jobschedule @job_name          = [test],@name              = "
       "'a',@new_name          = 'c',@enabled           = 0",
       ""},
      {kRows, "b|1|1|0|0\nc|0|4|2|10000"},
      {"exec sp_update_jobschedule @job_name = [test], @name = 'c', @new_name = 'b'",
       "error 14261"},
      {"exec sp_update_jobschedule @job_name = [test], @name = 'a', @enabled = 1", "error 14262"},
      {"exec sp_update_jobschedule @job_name = [test], @name = 'c', @freq_type = 8, "
       "@freq_recurrence_factor = 1, @freq_interval = 127",
       ""},
      {kRows, "b|1|1|0|0\nc|0|8|127|10000"},
      {"exec sp_help_jobschedule @job_name = [test], @schedule_name = 'd'", "error 14262"},
      {"exec sp_delete_jobschedule @job_name = [test], @name = [d]", "error 14262"},
      {"exec sp_delete_jobschedule @job_name = [test], @name = [c]", ""},
      {kRows, "b|1|1|0|0"},
  };
  Answers(kCases);
}

TEST_F(JobProceduresTest, AJobThatIsOnTheServerIsStartedAndStopped) {
  constexpr Case kCases[] = {
      {"exec sp_add_job @job_name = 'test'", ""},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'one'", ""},
      {"exec sp_add_jobstep @job_name = 'test', @step_name = 'two'", ""},
      {"exec sp_start_job @job_name = 'test'", "error 14256"},
      {"exec sp_add_jobserver @job_name = 'test', @server_name = 'elsewhere'", "error 14262"},
      {"exec sp_add_jobserver @job_name = [test]", ""},
      {"exec sp_start_job @job_name = 'test', @step_name = 'three'", "error 14262"},
      {"exec sp_start_job 'test', @step_name = 'two'", "message 14243"},
      {"exec sp_stop_job 'test'", "message 14254"},
      {"exec sp_start_job 'nothing'", "error 14262"},
  };
  Answers(kCases);
  EXPECT_EQ(agent_.started.name, "test");
  EXPECT_EQ(agent_.started.first_step, 2);
  EXPECT_EQ(agent_.started.invoker, std::string("User ") + kOperator);
  EXPECT_EQ(agent_.stopped.job, agent_.started.job);
  const auto status = [this] {
    const std::string row = Run("exec sp_help_job @job_name = [test]");
    return row.substr(row.find("|5|0|0|0|") + 9);
  };
  EXPECT_TRUE(status().starts_with("4|0 (unknown)|")) << status();
  agent_.running = agent_.started.job;
  EXPECT_TRUE(status().starts_with("1|2 (second)|")) << status();
  instance().SetAgent(nullptr);
  EXPECT_EQ(Run("exec sp_start_job 'test'"), "error 22022");
}

TEST_F(JobProceduresTest, HistoryIsShownNewestFirstAndPurged) {
  constexpr const char* kHistory =
      "insert sysjobhistory (job_id, step_id, step_name, sql_message_id, sql_severity, message, "
      "run_status, run_date, run_time, run_duration, operator_id_emailed, operator_id_netsent, "
      "operator_id_paged, retries_attempted, server) select job_id, 1, 'one', 0, 0, 'm', 1, "
      "20050301, 10000, 5, 0, 0, 0, 0, 'S' from sysjobs where name = 'test' insert sysjobhistory "
      "(job_id, step_id, step_name, sql_message_id, sql_severity, message, run_status, run_date, "
      "run_time, run_duration, operator_id_emailed, operator_id_netsent, operator_id_paged, "
      "retries_attempted, server) select job_id, 0, '(Job outcome)', 0, 0, 'n', 4, 20050301, "
      "10000, 5, 0, 0, 0, 0, 'S' from sysjobs where name = 'test'";
  client_.Run("exec sp_add_job @job_name = 'test'");
  EXPECT_EQ(client_.Run(kHistory), "(1)\n(1)");
  const auto steps = [this](const char* more) {
    client_.Run(std::string("exec sp_help_jobhistory @job_name = [test]") + more);
    return client_.last().rows;
  };
  EXPECT_EQ(steps(", @mode = 'FULL'"), 2);
  EXPECT_NE(client_.last().text.find("|test|0|(Job outcome)|0|0|n|4|20050301|10000|5|"),
            std::string::npos);
  EXPECT_EQ(client_.last().columns.front().name, "instance_id");
  EXPECT_LT(client_.last().text.find("(Job outcome)"), client_.last().text.find("|one|"));
  EXPECT_EQ(steps(", @mode = 'FULL', @step_id = 1"), 1);
  EXPECT_EQ(steps(", @mode = 'FULL', @start_run_date = 20050302"), 0);
  EXPECT_EQ(steps(""), 1);
  EXPECT_EQ(client_.last().columns.front().name, "job_id");
  EXPECT_EQ(Run("exec sp_help_jobhistory @job_name = [test], @mode = 'HALF'"), "error 14266");
  // What runs stays.
  EXPECT_EQ(Run("exec sp_purge_jobhistory @job_name = [test]"), "message 14226");
  EXPECT_EQ(client_.FirstMessage(), "1 history entries purged.");
  EXPECT_EQ(steps(", @mode = 'FULL'"), 1);
  EXPECT_EQ(Run("exec sp_purge_jobhistory @job_name = [nothing]"), "error 14262");
}

TEST_F(JobProceduresTest, OthersSeeAndChangeOnlyTheirOwnJobs) {
  client_.Run("exec sp_add_job @job_name = 'test'");
  client_.Run("use master exec sp_addlogin 'jobber', 'Jobber#1' use msdb");
  {
    Client other = LogIn("jobber", "Jobber#1", "msdb");
    constexpr Case kCases[] = {
        {"exec sp_help_job @job_name = 'test'", "error 14262"},
        {"exec sp_update_job @job_name = 'test', @enabled = 0", "error 14525"},
        {"exec sp_delete_job @job_name = 'test'", "error 14525"},
        {"exec sp_add_job @job_name = 'test2', @owner_login_name = 'sa'", "error 14515"},
        {"exec sp_add_job @job_name = 'test2'", ""},
        {"exec sp_update_job @job_name = 'test2', @enabled = 0", ""},
        {"exec sp_purge_jobhistory", "error 15247"},
    };
    for (const Case& c : kCases) EXPECT_EQ(other.Run(c.batch), c.expected) << c.batch;
    other.Run("exec sp_help_job");
    EXPECT_EQ(other.last().rows, 1);
    EXPECT_EQ(other.Run("exec sp_delete_job @job_name = 'test2'"), "");
  }
  client_.Run("use master exec sp_droplogin 'jobber'");
}

}  // namespace dbkeeper::server
