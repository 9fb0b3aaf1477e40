// The program as its starter sees it: how it begins, who gets in, how it ends.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

#include "tests/server/e2e/server_process.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

class Program : public testing::Test {
 protected:
  TemporaryFolder folder_;
  ServerProcess server_{folder_.path() / "data"};
};

TEST_F(Program, LetsInWhoItWasTold) {
  const std::uint16_t port = server_.port();
  EXPECT_NO_THROW(OdbcClient(port, "tester", "Secret_1"));
  EXPECT_NO_THROW(OdbcClient(port, "operator", "one-time"));
  const struct {
    const char* user;
    const char* password;
  } cases[] = {
      {"tester", "secret_1"}, {"tester", ""},   {"nobody", "Secret_1"}, {"sa", ""},
      {"operator", "two"},    {"operator", ""},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.user);
    try {
      const OdbcClient client(port, each.user, each.password);
      ADD_FAILURE() << "is in";
    } catch (const OdbcError& error) {
      EXPECT_EQ(error.native(), 18456);
    }
  }
}

TEST_F(Program, FilesOutsideItsFolderAreForItsUserAlone) {
  OdbcClient client(server_.port(), "tester", "Secret_1");
  const std::string outside = (folder_.path() / "outside").string();
  std::filesystem::create_directory(outside);
  client.Execute("backup database master to disk = '" + outside + "/master.bak'");
  client.Execute("create database d on (name = d, filename = '" + outside +
                 "/d.mdf') log on (name = l, filename = '" + outside + "/d.ldf')");
  int files = 0;
  for (const auto& file : std::filesystem::directory_iterator(outside)) {
    ++files;
    EXPECT_EQ(file.status().permissions() & std::filesystem::perms(0077),
              std::filesystem::perms::none)
        << file.path();
  }
  EXPECT_GE(files, 3);
}

TEST(ProgramWords, HelpAndVersionAnswerAndEnd) {
  const ToolResult help = RunTool(std::string(DBKEEPER_SERVER) + " --help");
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.output.find("--data DIR"), std::string::npos);
  const ToolResult version = RunTool(std::string(DBKEEPER_SERVER) + " --version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output.find("dbkeeper-server "), 0U);
  EXPECT_NE(RunTool(std::string(DBKEEPER_SERVER) + " --nothing").status, 0);
}

TEST_F(Program, IsReadByClientsThatOthersWrote) {
  const std::string port = std::to_string(server_.port());
  const ToolResult tsql =
      RunTool("TDSVER=7.1 tsql -H 127.0.0.1 -p " + port + " -U tester -P Secret_1 -o q",
              "select name, dbid from master.dbo.sysdatabases order by dbid\ngo\nexit\n");
  EXPECT_EQ(tsql.status, 0);
  const ToolResult isql = RunTool(
      "isql -b -d, -k 'DRIVER=/usr/lib/x86_64-linux-gnu/odbc/libtdsodbc.so;"
      "SERVER=127.0.0.1;PORT=" +
          port + ";UID=tester;PWD=Secret_1;TDS_Version=7.1'",
      "select name, dbid from master.dbo.sysdatabases order by dbid\n");
  EXPECT_EQ(isql.status, 0);
  EXPECT_NE(tsql.output.find("master\t1\ntempdb\t2\nmodel\t3\nmsdb\t4\n"), std::string::npos)
      << tsql.output;
  EXPECT_NE(isql.output.find("master,1\ntempdb,2\nmodel,3\nmsdb,4\n"), std::string::npos)
      << isql.output;
}

TEST_F(Program, EndsWithItsInput) {
  server_.port();
  server_.CloseInput();
  const int status = server_.Wait();
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(Program, EndsWhenItIsAskedToTerminate) {
  const OdbcClient client(server_.port(), "tester", "Secret_1");
  server_.Signal(SIGTERM);
  const int status = server_.Wait();
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(Program, EndsWhenAClientShutsItDown) {
  const OdbcClient client(server_.port(), "tester", "Secret_1");
  try {
    client.Execute("shutdown");
  } catch (const OdbcError&) {
    // The connection may be gone before the answer is read.
  }
  const int status = server_.Wait();
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(Program, ClosesTheConnectionOfAKilledSession) {
  const OdbcClient victim(server_.port(), "tester", "Secret_1");
  const std::string spid = *victim.Query("select @@spid")[0][0];
  const OdbcClient other(server_.port(), "tester", "Secret_1");
  other.Execute("kill " + spid);
  EXPECT_THROW(victim.Query("select 1"), OdbcError);
  EXPECT_NO_THROW(other.Query("select 1"));
}

TEST_F(Program, StopsAStatementAtAnAttention) {
  using Clock = std::chrono::steady_clock;
  const OdbcClient client(server_.port(), "tester", "Secret_1");
  const std::string endless =
      "select count(*) from master.dbo.syscolumns a, master.dbo.syscolumns b, "
      "master.dbo.syscolumns c, master.dbo.syscolumns d";
  Clock::time_point asked;
  std::thread canceller([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    asked = Clock::now();
    SQLCancel(client.statement());
  });
  EXPECT_THROW(client.Execute(endless), OdbcError);
  canceller.join();
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - asked);
  RecordProperty("milliseconds", static_cast<int>(took.count()));
  EXPECT_EQ(client.Query("select 1"), std::vector<OdbcRow>{{"1"}});
}

}  // namespace
}  // namespace dbkeeper::server
