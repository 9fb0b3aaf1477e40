#include "server/wire/packet.h"

#include <gtest/gtest.h>

#include "tests/server/wire/memory_channel.h"
#include "tests/server/wire/messages.h"

namespace dbkeeper::server {
namespace {

TEST(MessageReader, JoinsThePacketsOfAMessage) {
  const std::string bytes =
      Packet(1, "ab", 0) + Packet(1, "", 0) + Packet(1, "cd") + Packet(3, "x");
  MemoryChannel channel(bytes);
  MessageReader reader(channel);
  EXPECT_EQ(reader.Next(), PacketKind::kBatch);
  EXPECT_EQ(reader.ReadAll(100), "abcd");
  EXPECT_FALSE(reader.cancelled());
  EXPECT_EQ(reader.Next(), PacketKind::kRpc);
  EXPECT_EQ(reader.ReadAll(100), "x");
  EXPECT_EQ(reader.Next(), std::nullopt);
}

TEST(MessageReader, SkipsWhatWasNotRead) {
  const std::string bytes = Packet(7, "abc", 0) + Packet(7, "def") + Packet(1, "next");
  MemoryChannel channel(bytes);
  MessageReader reader(channel);
  reader.Next();
  EXPECT_EQ(reader.U8(), 'a');
  EXPECT_EQ(reader.Next(), PacketKind::kBatch);
  EXPECT_EQ(reader.ReadAll(100), "next");
}

TEST(MessageReader, ReadsNumbersAcrossPackets) {
  const std::string bytes = Packet(7, "\x01", 0) + Packet(7, "\x02\x03", 0) + Packet(7, "\x04");
  MemoryChannel channel(bytes);
  MessageReader reader(channel);
  reader.Next();
  EXPECT_EQ(reader.U32(), 0x04030201u);
  EXPECT_TRUE(reader.AtEnd());
  EXPECT_THROW(reader.U8(), WireError);
}

TEST(MessageReader, KnowsAMessageThatTheClientBrokeOff) {
  for (const std::string& bytes : {Packet(1, "ab", 0) + Packet(6, ""), Packet(1, "ab", 3)}) {
    MemoryChannel channel(bytes);
    MessageReader reader(channel);
    reader.Next();
    reader.ReadAll(100);
    EXPECT_TRUE(reader.cancelled());
  }
}

TEST(MessageReader, RefusesWhatIsNoPacket) {
  const std::string header_only = Packet(1, "").substr(0, 5);
  const struct {
    const char* what;
    std::string bytes;
  } cases[] = {
      {"half a header", header_only},
      {"an unknown kind", Packet(2, "abc")},
      {"an answer", Packet(4, "abc")},
      {"a length under the header's", std::string("\x01\x01\x00\x07\0\0\0\0", 8)},
      {"a length above the largest", std::string("\x01\x01\xFF\xFF\0\0\0\0", 8)},
      {"a length that does not come", std::string("\x01\x01\x10\x00\0\0\0\0abc", 11)},
      {"a message without its end", Packet(1, "abc", 0)},
      {"a packet of another message", Packet(1, "abc", 0) + Packet(3, "abc")},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    MemoryChannel channel(each.bytes);
    MessageReader reader(channel);
    EXPECT_THROW(
        {
          reader.Next();
          reader.ReadAll(1000);
        },
        WireError);
  }
}

TEST(MessageReader, KeepsNoMoreThanTheLimit) {
  const std::string bytes = Packet(1, std::string(600, 'a'), 0) + Packet(1, std::string(600, 'b'));
  MemoryChannel channel(bytes);
  MessageReader reader(channel);
  reader.Next();
  EXPECT_THROW(reader.ReadAll(1000), MessageTooLong);
}

TEST(ByteReader, RefusesALengthThatCannotBe) {
  ByteReader reader("abc");
  EXPECT_THROW(reader.Raw(ByteReader::kLargestValue + 1), WireError);
  EXPECT_THROW(reader.Raw(4), WireError);
}

TEST(MessageWriter, CutsAnAnswerIntoPackets) {
  MemoryChannel channel("");
  MessageWriter writer(channel);
  writer.SetPacketSize(512);
  const std::string answer(1000, 'x');
  writer.Write(answer);
  writer.Finish();
  const std::string& sent = channel.sent();
  ASSERT_EQ(sent.size(), 1016u);
  EXPECT_EQ(sent.substr(0, 4), std::string("\x04\x00\x02\x00", 4));
  EXPECT_EQ(sent.substr(512, 4), std::string("\x04\x01\x01\xF8", 4));
  EXPECT_EQ(sent[6], 1);
  EXPECT_EQ(sent[518], 2);
}

}  // namespace
}  // namespace dbkeeper::server
