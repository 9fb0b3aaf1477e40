#include "server/wire/login.h"

#include <gtest/gtest.h>

#include "tests/server/wire/messages.h"

namespace dbkeeper::server {
namespace {

TEST(Login, ReadsWhoComesAndFromWhere) {
  const LoginPacket login = ReadLogin(
      LoginMessage({"PC-01", "田中", "ひみつ=;1", "keeper", "srv", "", "lib", "Japanese", "販売"}));
  EXPECT_EQ(login.request.user, "田中");
  EXPECT_EQ(login.request.password, "ひみつ=;1");
  EXPECT_EQ(login.request.database, "販売");
  EXPECT_EQ(login.request.client.host_name, "PC-01");
  EXPECT_EQ(login.request.client.program_name, "keeper");
  EXPECT_EQ(login.language, "Japanese");
  EXPECT_EQ(login.packet_size, 4096u);
}

TEST(Login, RefusesLengthsThatLie) {
  const std::string good = LoginMessage({"host", "user", "word"});
  const struct {
    const char* what;
    std::size_t at;
    std::string bytes;
  } cases[] = {
      {"the whole is longer than what came", 0, "\xFF\xFF"},
      {"the user stands behind the end", 40, "\xF0\xFF"},
      {"the user ends behind the end", 42, "\x7F"},
      {"the password is longer than any name", 46, "\xFF\xFF"},
      {"a version before 7.0", 4, std::string("\0\0\x02\x04", 4)},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    std::string bad = good;
    bad.replace(each.at, each.bytes.size(), each.bytes);
    EXPECT_THROW(ReadLogin(bad), WireError);
  }
  for (std::size_t length = 0; length < good.size(); length += 3) {
    EXPECT_THROW(ReadLogin(good.substr(0, length)), WireError) << length;
  }
}

TEST(Login, KeepsThePacketSizeInItsBounds) {
  const struct {
    std::uint32_t asked;
    std::size_t given;
  } cases[] = {{0, 4096}, {1, 512}, {8192, 8192}, {4'000'000, 32767}};
  for (const auto& each : cases) {
    std::string message = LoginMessage({"host", "user", "word"});
    ByteWriter size;
    size.U32(each.asked);
    message.replace(8, 4, size.bytes());
    EXPECT_EQ(ReadLogin(message).packet_size, each.given);
  }
}

TEST(PreLogin, AnswersThatThereIsNoEncryption) {
  const std::string asked("\x01\x00\x06\x00\x01\xFF\x00", 7);
  const std::string answer = AnswerPreLogin(asked);
  EXPECT_EQ(answer.back(), 2);
  EXPECT_EQ(static_cast<unsigned char>(answer[10]), 0xFF);
}

TEST(PreLogin, RefusesLengthsThatLieAndEncryption) {
  for (const std::string& message :
       {std::string(), std::string("\x00\x00", 2), std::string("\x00\x00\x06\x00\xFF\xFF", 6),
        std::string("\x01\x00\x06\x00\x01\xFF\x03", 7)}) {
    EXPECT_THROW(AnswerPreLogin(message), WireError);
  }
}

}  // namespace
}  // namespace dbkeeper::server
