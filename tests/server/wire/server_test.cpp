#include "server/wire/server.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <memory>
#include <random>
#include <thread>

#include "tests/server/wire/fake_engine.h"
#include "tests/server/wire/messages.h"
#include "tests/server/wire/odbc_client.h"
#include "tests/server/wire/raw_client.h"

namespace dbkeeper::server {
namespace {

using std::chrono::milliseconds;

const std::string kAttention = Packet(6, "");
constexpr std::string_view kAttentionDone("\xFD\x20\x00\x00\x00\x00\x00\x00\x00", 9);

std::string RandomBytes(std::size_t size) {
  std::mt19937 random(size);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

ServerOptions ShortLogin() {
  ServerOptions options;
  options.login_timeout = milliseconds(300);
  return options;
}

TEST(Server, DropsClientsThatTalkNonsenseAndServesTheNext) {
  FakeEngine engine;
  Server server(engine, ShortLogin());
  const std::string login = TesterLogin();
  const struct {
    const char* what;
    std::string bytes;
  } cases[] = {
      {"nothing at all", ""},
      {"random bytes", RandomBytes(5000)},
      {"a web browser", "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n"},
      {"half a login", login.substr(0, login.size() / 2)},
      {"a packet that says more than comes", std::string("\x10\x01\x7F\x00\0\0\0\0abc", 11)},
      {"a login of random bytes", Packet(16, RandomBytes(200))},
      {"a batch before the login", Batch("select 1")},
      {"a second login", login + login},
      {"rows without INSERT BULK", login + Packet(7, "abc")},
      {"a call of random bytes", login + Packet(3, RandomBytes(400))},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const RawClient client(server.port());
    client.Send(each.bytes);
    EXPECT_TRUE(client.WaitForClose());
  }
  EXPECT_NO_THROW(OdbcClient(server.port(), "tester", "Secret_1"));
}

TEST(Server, TellsWhyALoginIsRefused) {
  FakeEngine engine;
  Server server(engine, {});
  try {
    const OdbcClient client(server.port(), "tester", "wrong");
    FAIL() << "the client is in";
  } catch (const OdbcError& error) {
    EXPECT_EQ(error.native(), 18456);
  }
}

TEST(Server, AnswersNewerClientsInTheVersionItSpeaks) {
  FakeEngine engine;
  Server server(engine, {});
  for (const char* version : {"7.1", "7.2", "7.3", "7.4"}) {
    SCOPED_TRACE(version);
    const OdbcClient client(server.port(), "tester", "Secret_1",
                            std::string("TDS_Version=") + version);
    EXPECT_NO_THROW(client.Execute("anything"));
  }
  EXPECT_EQ(engine.CallsWith("anything").size(), 4u);
}

TEST(Server, KeepsAThousandIdleClientsAndServesOneMore) {
  rlimit descriptors{};
  getrlimit(RLIMIT_NOFILE, &descriptors);
  descriptors.rlim_cur = descriptors.rlim_max;
  setrlimit(RLIMIT_NOFILE, &descriptors);
  FakeEngine engine;
  Server server(engine, {});
  std::vector<std::unique_ptr<RawClient>> idle;
  for (int i = 0; i < 1000; ++i) {
    idle.push_back(std::make_unique<RawClient>(server.port()));
    ASSERT_TRUE(idle.back()->Send(TesterLogin()));
  }
  for (const auto& client : idle) ASSERT_FALSE(client->Answer().empty());
  EXPECT_EQ(engine.sessions, 1000);
  EXPECT_NO_THROW(OdbcClient(server.port(), "tester", "Secret_1").Execute("one more"));
}

TEST(Server, RefusesARequestThatIsTooLong) {
  FakeEngine engine;
  Server server(engine, {});
  const RawClient client(server.port());
  client.Send(TesterLogin());
  client.Answer();
  const std::string piece = Packet(1, std::string(32'000, ' '), 0);
  for (int i = 0; i < 2200; ++i) ASSERT_TRUE(client.Send(piece));
  client.Send(Packet(1, ""));
  EXPECT_NE(client.Answer().find(Utf16("longer than 64 MB")), std::string::npos);
  EXPECT_TRUE(client.WaitForClose());
  EXPECT_TRUE(engine.calls().empty());
}

TEST(Server, ClosesTheConnectionOfASession) {
  FakeEngine engine;
  Server server(engine, {});
  const RawClient client(server.port());
  client.Send(TesterLogin());
  client.Answer();
  server.CloseConnection(51);
  EXPECT_TRUE(client.WaitForClose());
}

TEST(Attention, StopsAStatementThatSendsRows) {
  FakeEngine engine;
  engine.answer = [](const FakeCall& call, ResultSink& sink) {
    if (call.text != "endless") return sink.OnStatementEnd({});
    sink.OnColumns({Column("a", {TypeId::kInt})});
    while (sink.OnRow(FakeRow({Cell(std::int64_t{1})}))) {
    }
    sink.OnStatementEnd({});
  };
  Server server(engine, {});
  const OdbcClient client(server.port(), "tester", "Secret_1");
  client.Execute("endless");
  for (int i = 0; i < 1000; ++i) client.Check(SQLFetch(client.statement()));
  client.Check(SQLCancel(client.statement()));
  EXPECT_NO_THROW(client.Execute("the next"));
  EXPECT_EQ(engine.CallsWith("the next").size(), 1u);
}

TEST(Attention, InterruptsAStatementThatOnlyWorks) {
  FakeEngine engine;
  engine.answer = [&engine](const FakeCall&, ResultSink& sink) {
    while (engine.interrupts == 0) std::this_thread::sleep_for(milliseconds(1));
    ServerMessage message;
    message.number = 3607;
    message.text = "interrupted";
    sink.OnMessage(message);
    sink.OnStatementEnd({});
  };
  Server server(engine, {});
  const RawClient client(server.port());
  client.Send(TesterLogin());
  client.Answer();
  client.Send(Batch("work"));
  client.Send(kAttention);
  // The statement's own answer says nothing of the interruption; the acknowledgement follows.
  EXPECT_EQ(client.Answer().find(Utf16("interrupted")), std::string::npos);
  EXPECT_EQ(client.Answer(), kAttentionDone);
}

TEST(Attention, OfAnIdleClientIsAcknowledged) {
  FakeEngine engine;
  Server server(engine, {});
  const RawClient client(server.port());
  client.Send(TesterLogin());
  client.Answer();
  client.Send(kAttention);
  EXPECT_EQ(client.Answer(), kAttentionDone);
}

TEST(Attention, AClientThatVanishesInterruptsItsStatement) {
  FakeEngine engine;
  engine.answer = [&engine](const FakeCall&, ResultSink&) {
    while (engine.interrupts == 0) std::this_thread::sleep_for(milliseconds(1));
  };
  Server server(engine, {});
  {
    const RawClient client(server.port());
    client.Send(TesterLogin());
    client.Answer();
    client.Send(Batch("work"));
    while (engine.calls().empty()) std::this_thread::sleep_for(milliseconds(1));
  }
  while (engine.interrupts == 0) std::this_thread::sleep_for(milliseconds(1));
}

TEST(Answer, KeepsNumberStateAndTextOfAnError) {
  FakeEngine engine;
  engine.answer = [](const FakeCall& call, ResultSink& sink) {
    if (call.text != "fail") return sink.OnStatementEnd({});
    ServerMessage message;
    message.number = 208;
    message.text = "Invalid object name '表'.";
    sink.OnMessage(message);
    StatementEnd end;
    end.failed = true;
    sink.OnStatementEnd(end);
  };
  Server server(engine, {});
  const OdbcClient client(server.port(), "tester", "Secret_1");
  try {
    client.Execute("fail");
    FAIL() << "no error";
  } catch (const OdbcError& error) {
    EXPECT_EQ(error.native(), 208);
    EXPECT_NE(std::string(error.what()).find("Invalid object name '表'."), std::string::npos);
  }
}

TEST(Answer, HoldsAllResultsOfABatch) {
  FakeEngine engine;
  engine.answer = [](const FakeCall& call, ResultSink& sink) {
    if (call.text != "three") return sink.OnStatementEnd({});
    Send({{Column("a", {TypeId::kInt})}, {{Cell(std::int64_t{1})}}}, sink);
    StatementEnd update;
    update.rows = 5;
    sink.OnStatementEnd(update);
    Send({{Column("b", {TypeId::kInt})}, {{Cell(std::int64_t{2})}}}, sink);
  };
  Server server(engine, {});
  const OdbcClient client(server.port(), "tester", "Secret_1");
  EXPECT_EQ(client.Query("three"), std::vector<OdbcRow>{{"1"}});
  client.Check(SQLMoreResults(client.statement()));
  SQLLEN rows = 0;
  SQLRowCount(client.statement(), &rows);
  EXPECT_EQ(rows, 5);
  client.Check(SQLMoreResults(client.statement()));
  EXPECT_EQ(client.Rows(), std::vector<OdbcRow>{{"2"}});
  EXPECT_EQ(SQLMoreResults(client.statement()), SQL_NO_DATA);
}

}  // namespace
}  // namespace dbkeeper::server
