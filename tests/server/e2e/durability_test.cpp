// What was acknowledged is there after the server was killed, at whatever moment.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "tests/server/e2e/server_process.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

using std::chrono::milliseconds;

TEST(Durability, HoldsWhatWasAcknowledgedThroughRepeatedKills) {
  constexpr int kRounds = 6;
  const TemporaryFolder folder;
  const auto data = folder.path() / "data";
  {
    ServerProcess server(data);
    const OdbcClient client(server.port(), "tester", "Secret_1");
    client.Execute("create database work");
    client.Execute("create table work.dbo.kept (id int not null primary key, name nvarchar(50))");
  }
  std::mt19937 random(7);
  int acknowledged = 0;
  for (int round = 0; round < kRounds; ++round) {
    ServerProcess server(data);
    const OdbcClient client(server.port(), "tester", "Secret_1");
    // At most the one statement that was running may be there without having been acknowledged.
    const int there = std::stoi(*client.Query("select count(*) from work.dbo.kept")[0][0]);
    ASSERT_GE(there, acknowledged);
    ASSERT_LE(there, acknowledged + 1);
    EXPECT_EQ(client.Query("select isnull(max(id), 0) from work.dbo.kept")[0][0],
              std::to_string(there));
    acknowledged = there;
    const auto delay = milliseconds(20 + random() % 300);
    std::thread killer([&server, delay] {
      std::this_thread::sleep_for(delay);
      server.Kill();
    });
    try {
      for (;;) {
        client.Execute("insert into work.dbo.kept values (" + std::to_string(acknowledged + 1) +
                       ", N'行')");
        ++acknowledged;
      }
    } catch (const OdbcError&) {
      // The server is gone.
    }
    killer.join();
  }
  EXPECT_GT(acknowledged, 0);
}

TEST(Durability, LeavesNothingOfATransactionThatWasNotCommitted) {
  const TemporaryFolder folder;
  const auto data = folder.path() / "data";
  {
    ServerProcess server(data);
    const OdbcClient client(server.port(), "tester", "Secret_1");
    client.Execute("create database work");
    client.Execute("create table work.dbo.t (id int)");
    client.Execute("insert into work.dbo.t values (1)");
    client.Execute("begin tran insert into work.dbo.t values (2)");
  }
  ServerProcess server(data);
  const OdbcClient client(server.port(), "tester", "Secret_1");
  EXPECT_EQ(client.Query("select id from work.dbo.t"), std::vector<OdbcRow>{{"1"}});
}

TEST(Durability, ATornFirstStartIsMadeGood) {
  const auto databases = [](ServerProcess& server) {
    return OdbcClient(server.port(), "tester", "Secret_1")
        .Query("select name, status from master.dbo.sysdatabases order by name");
  };
  const TemporaryFolder whole;
  ServerProcess complete(whole.path() / "data");
  const std::vector<OdbcRow> expected = databases(complete);
  for (const int delay : {2, 10, 30, 80, 200}) {
    SCOPED_TRACE(delay);
    const TemporaryFolder folder;
    {
      ServerProcess torn(folder.path() / "data");
      std::this_thread::sleep_for(milliseconds(delay));
    }
    ServerProcess server(folder.path() / "data");
    EXPECT_EQ(databases(server), expected);
  }
}

}  // namespace
}  // namespace dbkeeper::server
