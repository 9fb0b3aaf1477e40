#include "server/wire/bulk_load.h"

#include <gtest/gtest.h>

#include "server/wire/server.h"
#include "tests/server/wire/fake_engine.h"
#include "tests/server/wire/messages.h"
#include "tests/server/wire/raw_client.h"

namespace dbkeeper::server {
namespace {

TEST(InsertBulk, TellsTableAndColumns) {
  const struct {
    const char* text;
    const char* table;
    std::vector<std::string> columns;
  } cases[] = {
      {"insert bulk t (a int)", "t", {"a"}},
      {"INSERT BULK [my db]..[表 ]](1)] ([a,b)] decimal(10,2), \"c\" varchar(5) COLLATE x) with "
       "(T)",
       "my db..表 ](1)",
       {"a,b)", "c"}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.text);
    const auto target = ParseInsertBulk(each.text);
    ASSERT_TRUE(target.has_value());
    EXPECT_EQ(target->table.Text(), each.table);
    ASSERT_EQ(target->columns.size(), each.columns.size());
    for (std::size_t i = 0; i < each.columns.size(); ++i) {
      EXPECT_EQ(target->columns[i].name, each.columns[i]);
    }
  }
  for (const char* text : {"", "insert", "insert bulk", "insert bulk t", "insert into bulk (a)",
                           "insert bulk [", "insert bulk t ("}) {
    EXPECT_FALSE(ParseInsertBulk(text).has_value()) << text;
  }
}

// The rows 1, 2, ... as a client sends them.
std::string Rows(int count) {
  ByteWriter rows;
  rows.U8(0x81);
  rows.U16(2);
  rows.U32(0);
  rows.Raw("\x26\x04");
  rows.U8(1);
  rows.Raw(Utf16("a"));
  rows.U32(0);
  rows.Raw(std::string_view("\x23\xFF\xFF\xFF\x7F\x11\x04\xD0\x00\x00", 10));
  rows.U16(1);
  rows.Raw(Utf16("t"));
  rows.U8(1);
  rows.Raw(Utf16("b"));
  for (int i = 1; i <= count; ++i) {
    rows.U8(0xD1);
    rows.U8(4);
    rows.U32(static_cast<std::uint32_t>(i));
    rows.U8(16);
    rows.Raw(std::string(24, 'p'));
    rows.U32(4);
    rows.Raw("\x93\xFA\x96\x7B");
  }
  return rows.bytes();
}

std::string End() { return std::string("\xFD\0\0\0\0\0\0\0\0", 9); }

class BulkLoad : public testing::Test {
 protected:
  BulkLoad() {
    client_.Send(TesterLogin());
    client_.Answer();
    client_.Send(Batch("insert bulk t ([a] int, [b] text)"));
    client_.Answer();
  }

  FakeEngine engine_;
  Server server_{engine_, {}};
  RawClient client_{server_.port()};
};

TEST_F(BulkLoad, InsertsEveryRowInOneTransaction) {
  const std::string message = Rows(3) + End();
  // Cut in the middle of a row.
  client_.Send(Packet(7, message.substr(0, 60), 0) + Packet(7, message.substr(60)));
  const std::string answer = client_.Answer();
  EXPECT_EQ(answer, std::string("\xFD\x10\x00\x00\x00\x03\x00\x00\x00", 9));
  const std::vector<FakeCall> calls = engine_.calls();
  ASSERT_EQ(calls.size(), 5u);
  EXPECT_EQ(calls[0].text, "begin transaction");
  EXPECT_EQ(calls[3].text, "insert into [t] ([a], [b]) values (@b1, @b2)");
  EXPECT_EQ(calls[3].parameters[0].value, Cell(std::int64_t{3}));
  EXPECT_EQ(calls[3].parameters[1].value, Cell(std::string("日本")));
  EXPECT_EQ(calls[4].text, "commit transaction");
}

TEST_F(BulkLoad, KeepsNothingWhenARowIsRefused) {
  engine_.answer = [](const FakeCall& call, ResultSink& sink) {
    if (call.kind != "parameterized") return;
    ServerMessage message;
    message.number = 2627;
    message.text = "duplicate";
    sink.OnMessage(message);
  };
  client_.Send(Packet(7, Rows(3)));
  EXPECT_NE(client_.Answer().find(Utf16("duplicate")), std::string::npos);
  ASSERT_EQ(engine_.CallsWith("insert into").size(), 1u);
  EXPECT_EQ(engine_.calls().back().text, "rollback transaction");
}

TEST_F(BulkLoad, KeepsNothingWhenTheClientChangesItsMind) {
  client_.Send(Packet(7, Rows(3), 0) + Packet(6, ""));
  EXPECT_EQ(client_.Answer(), std::string("\xFD\x20\0\0\0\0\0\0\0", 9));
  ASSERT_FALSE(engine_.calls().empty());
  EXPECT_EQ(engine_.calls().back().text, "rollback transaction");
}

TEST_F(BulkLoad, KeepsNothingOfAMessageThatBreaksOff) {
  const std::string rows = Rows(3);
  client_.Send(Packet(7, rows.substr(0, rows.size() - 1)));
  EXPECT_TRUE(client_.WaitForClose());
  ASSERT_FALSE(engine_.calls().empty());
  EXPECT_EQ(engine_.calls().back().text, "rollback transaction");
}

}  // namespace
}  // namespace dbkeeper::server
