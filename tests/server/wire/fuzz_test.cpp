// A small driver for the fuzz target: conversations that are right, mutated with fixed seeds.
#include <gtest/gtest.h>

#include <random>

#include "tests/server/wire/fuzz_one.h"
#include "tests/server/wire/messages.h"

namespace dbkeeper::server {
namespace {

// A call by number, its parameters as they stand on the wire.
std::string Call(std::uint16_t id, std::initializer_list<std::string> parameters) {
  ByteWriter out;
  out.U16(0xFFFF);
  out.U16(id);
  out.U16(0);
  for (const std::string& parameter : parameters) {
    out.U16(0);  // no name, no flags
    out.Raw(parameter);
  }
  return Packet(3, out.bytes());
}

std::string IntParameter(std::uint32_t value) {
  ByteWriter out;
  out.Raw("\x26\x04\x04");
  out.U32(value);
  return out.bytes();
}

std::string TextParameter(std::string_view text) {
  ByteWriter out;
  out.U8(0x63);
  out.U32(0x7FFFFFFF);
  out.Raw(std::string(5, '\0'));
  out.U32(static_cast<std::uint32_t>(2 * text.size()));
  out.Raw(Utf16(text));
  return out.bytes();
}

std::vector<std::string> Conversations() {
  const std::string text = TextParameter("select @a");
  const std::string decimal("\x6C\x11\x26\x04\x05\x01\x10\x20\x30\x40", 10);
  const std::string variant("\x62\x49\x1F\0\0\x06\0\0\0\x38\0\x01\0\0\0", 15);
  return {
      Packet(18, std::string("\x00\x00\x0B\x00\x06\x01\x00\x11\x00\x01\xFF", 11) +
                     std::string(7, '\0')),
      Batch("select 1") + Batch("insert bulk t (a int)") +
          Packet(7, std::string("\x81\x01\0\0\0\0\0\x26\x04\x01\x61\0\xD1\x04\x01\0\0\0\xFD", 19)),
      Call(10, {text, TextParameter("@a int, @b numeric(38,4)"), IntParameter(1), decimal}),
      Call(13, {IntParameter(0), TextParameter("@v sql_variant"), text, variant}) +
          Call(12, {IntParameter(1), variant}) + Call(15, {IntParameter(1)}),
      Call(2, {IntParameter(0), text, IntParameter(1), IntParameter(1), IntParameter(0)}) +
          Call(7, {IntParameter(1), IntParameter(2), IntParameter(0), IntParameter(1)}) +
          Call(1, {IntParameter(1), IntParameter(33), IntParameter(1), text, IntParameter(5)}) +
          Call(9, {IntParameter(1)}) + Packet(6, ""),
  };
}

void Mutate(std::string& bytes, std::mt19937& random) {
  const auto below = [&random](std::size_t n) { return random() % n; };
  for (std::size_t i = 1 + below(4); i > 0 && !bytes.empty(); --i) {
    const std::size_t at = below(bytes.size());
    switch (below(4)) {
      case 0:
        bytes[at] = static_cast<char>(random());
        break;
      case 1:
        bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
        break;
      case 2:
        bytes.erase(at, below(8));
        break;
      default:
        bytes.insert(at, 1 + below(4), static_cast<char>(below(2) == 0 ? 0xFF : 0));
        break;
    }
  }
}

TEST(WireFuzz, NoBytesBringTheServerDown) {
  constexpr int kRounds = 5000;
  std::mt19937 random(20000);
  for (const std::string& conversation : Conversations()) {
    for (int round = 0; round < kRounds; ++round) {
      std::string bytes = conversation;
      if (round > 0) Mutate(bytes, random);
      // Most of the server is behind the login, so that this one is mostly right.
      std::string login = TesterLogin();
      if (round % 10 == 9) Mutate(login, random);
      bytes.insert(0, conversation[0] == 18 ? "" : login);
      FuzzOne(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
  }
}

}  // namespace
}  // namespace dbkeeper::server
