// The session over the real wire, against a local server of the test's own.
#include "tests/support/LocalServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "platform/odbc/OdbcConnection.h"
#include "tests/platform/odbc/ConnectionContract.h"

namespace dbkeeper {
namespace {

constexpr const char* kWindowsLogin = "Provider=SQLOLEDB;Database=master;Integrated Security=SSPI;";

// One server serves all cases: the first start, which makes the sample databases, takes a while.
class OnLocalServer : public testing::Test {
 protected:
  static void SetUpTestSuite() { shared_server = std::make_unique<LocalServer>(); }
  static void TearDownTestSuite() { shared_server.reset(); }

  static std::unique_ptr<LocalServer> shared_server;
  LocalServer& server_ = *shared_server;
  OdbcConnection connection_{OdbcOptions{}, server_.Endpoint()};
};

std::unique_ptr<LocalServer> OnLocalServer::shared_server;

TEST_F(OnLocalServer, TheContractOfAConnectionHolds) {
  connection_.Open(server_.ConnectionString());
  ExpectConnectionContract(connection_);
}

TEST_F(OnLocalServer, TheOperatorGetsInByWindowsAuthentication) {
  connection_.Open(kWindowsLogin);
  const auto reader = connection_.Query("select name from master.dbo.sysdatabases");
  ASSERT_NE(reader, nullptr);
  EXPECT_TRUE(reader->Next());
}

TEST_F(OnLocalServer, NamesAndPasswordsMayBeJapanese) {
  EXPECT_NO_THROW(connection_.Open(std::string("Provider=SQLOLEDB;Database=master;User ID=") +
                                   LocalServer::kJapaneseLogin +
                                   ";Password=" + LocalServer::kJapanesePassword + ";"));
}

TEST_F(OnLocalServer, AWrongPasswordIsToldInTheServersWords) {
  constexpr int kLoginFailed = 18456;
  try {
    connection_.Open("Provider=SQLOLEDB;Database=master;User ID=tester;Password=wrong;");
    ADD_FAILURE() << "must not get in";
  } catch (const ServerError& error) {
    EXPECT_EQ(error.Number(), kLoginFailed);
    EXPECT_EQ(std::string(error.what()).substr(0, 12), "Login failed");
  }
  EXPECT_FALSE(connection_.IsOpen());
  EXPECT_NO_THROW(connection_.Open(server_.ConnectionString()));
}

TEST_F(OnLocalServer, AServerThatDiesIsNoticedAndCanBeReachedAgain) {
  connection_.Open(kWindowsLogin);
  const auto reader = connection_.Query("select name from master.dbo.sysobjects");
  ASSERT_TRUE(reader->Next());
  server_.Kill();
  EXPECT_THROW(connection_.Execute("select 1"), ServerError);
  EXPECT_FALSE(connection_.IsOpen());
  EXPECT_THROW(connection_.Execute("select 1"), ServerError);
  connection_.Open(kWindowsLogin);
  EXPECT_TRUE(connection_.IsOpen());
  EXPECT_THROW(reader->Next(), SessionError);
  EXPECT_NE(connection_.Query("select 1"), nullptr);
}

TEST_F(OnLocalServer, AShutdownIsAnsweredOrTheServerIsKnownToBeGone) {
  connection_.Open(kWindowsLogin);
  try {
    connection_.Execute("shutdown");
  } catch (const ServerError& error) {
    EXPECT_FALSE(connection_.IsOpen()) << error.what();
  }
  connection_.Close();
  server_.Kill();
  connection_.Open(kWindowsLogin);
  EXPECT_NE(connection_.Query("select 1"), nullptr);
}

TEST_F(OnLocalServer, ReadersOfAClosedConnectionAreHarmless) {
  connection_.Open(kWindowsLogin);
  const auto cursor = connection_.OpenCursor("select name from master.dbo.sysobjects").cursor;
  const auto early = connection_.Query("select name from master.dbo.sysobjects");
  ASSERT_TRUE(early->Next());
  const auto late = connection_.Query("select name from master.dbo.sysobjects");
  ASSERT_TRUE(late->Next());
  connection_.Close();
  EXPECT_FALSE(connection_.IsOpen());
  EXPECT_THROW(early->Next(), SessionError);
  EXPECT_THROW(late->Next(), SessionError);
  EXPECT_THROW(late->NextResult(), SessionError);
  RowBlock block;
  EXPECT_THROW(cursor->Fetch(0, 10, block), SessionError);
}

TEST_F(OnLocalServer, ReadersMayOutliveTheConnection) {
  std::unique_ptr<RowReader> reader;
  {
    OdbcConnection connection(OdbcOptions{}, server_.Endpoint());
    connection.Open(kWindowsLogin);
    reader = connection.Query("select 1");
  }
  EXPECT_THROW(reader->Next(), SessionError);
}

TEST(LocalServerProcess, AProgramThatIsNoServerIsTold) {
  for (const char* program : {"/no/such/program", "/bin/true", "/bin/echo"}) {
    LocalServerProcess process({.program = program, .data_folder = "/tmp"});
    EXPECT_THROW(process.Locate(), SessionError) << program;
    EXPECT_EQ(process.ProcessId(), 0);
  }
}

TEST(LocalServerProcess, AServerThatNeverOpensItsPortIsGivenUp) {
  const std::filesystem::path script =
      std::filesystem::path(testing::TempDir()) / "dbkeeper-silent-server";
  std::ofstream(script) << "#!/bin/sh\nexec cat >/dev/null\n";
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  LocalServerProcess process(
      {.program = script, .data_folder = "/tmp", .start_timeout = std::chrono::milliseconds(200)});
  EXPECT_THROW(process.Locate(), SessionError);
  EXPECT_EQ(process.ProcessId(), 0);
}

}  // namespace
}  // namespace dbkeeper
