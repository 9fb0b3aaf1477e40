// A server killed in the middle of a backup or a restore leaves the state before it or the state
// after it.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

#include "tests/server/e2e/server_process.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

using std::chrono::milliseconds;

constexpr int kRounds = 12;

class BackupKill : public testing::Test {
 protected:
  BackupKill() : data_(folder_.path() / "data") {}

  std::string Path(const std::string& name) const { return (folder_.path() / name).string(); }
  static std::string Number(const OdbcClient& client, const std::string& query) {
    return *client.Query(query)[0][0];
  }
  // Fills the table to some megabytes whose rows all say `mark`.
  static void Fill(const OdbcClient& client, int mark) {
    client.Execute("delete work.dbo.t");
    client.Execute("insert work.dbo.t values (1, " + std::to_string(mark) +
                   ", replicate(N'x', 1000))");
    for (int rows = 1; rows < 2048; rows *= 2) {
      client.Execute("insert work.dbo.t select id + " + std::to_string(rows) +
                     ", mark, text from work.dbo.t");
    }
  }
  void MakeDatabase(const OdbcClient& client) const {
    client.Execute("create database work on(name = d, filename = '" + Path("w.mdf") +
                   "') log on(name = l, filename = '" + Path("w.ldf") + "')");
    client.Execute(
        "create table work.dbo.t (id int not null primary key, mark int, text nvarchar(1000))");
  }
  // Runs the statements again and again until the server is gone.
  void KillWithin(const std::vector<std::string>& statements) {
    ServerProcess server(data_);
    const OdbcClient client(server.port(), "tester", "Secret_1");
    std::thread killer([&] {
      std::this_thread::sleep_for(milliseconds(5 + random_() % 250));
      server.Kill();
    });
    try {
      for (;;) {
        for (const std::string& statement : statements) client.Execute(statement);
      }
    } catch (const OdbcError& error) {
      failure_ = error.what();
    }
    killer.join();
  }
  std::ptrdiff_t Files() const {
    return std::distance(std::filesystem::directory_iterator(folder_.path()), {});
  }

  const TemporaryFolder folder_;
  const std::filesystem::path data_;
  std::mt19937 random_{11};
  std::string failure_;
};

TEST_F(BackupKill, LeavesTheOldOrTheNewDatabaseAndAWholeMedium) {
  const std::string to = "backup database work to disk = '" + Path("b.bak") + "' with format";
  const std::string from = "restore database work from disk = '" + Path("b.bak") + "'";
  {
    ServerProcess server(data_);
    const OdbcClient client(server.port(), "tester", "Secret_1");
    MakeDatabase(client);
    Fill(client, 1);
    client.Execute(to);
    client.Execute("update work.dbo.t set mark = 2");
  }
  const bool backs_up[] = {false, true};
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(round);
    KillWithin({backs_up[round % 2] ? to : from});
    ServerProcess server(data_);
    const OdbcClient client(server.port(), "tester", "Secret_1");
    ASSERT_EQ(Number(client, "select count(*) from work.dbo.t"), "2048") << failure_;
    ASSERT_EQ(Number(client, "select count(distinct mark) from work.dbo.t"), "1");
    client.Execute("restore verifyonly from disk = '" + Path("b.bak") + "'");
    EXPECT_LE(Files(), 6) << "what was unfinished is removed at the start";
    client.Execute("update work.dbo.t set mark = " + std::to_string(round + 3));
  }
}

}  // namespace
}  // namespace dbkeeper::server
