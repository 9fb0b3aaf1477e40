#include "server/wire/login.h"

#include <algorithm>

#include "server/types/text.h"
#include "server/wire/bytes.h"
#include "server/wire/code_page.h"
#include "server/wire/packet.h"

namespace dbkeeper::server {
namespace {

constexpr std::uint8_t kOptionEncryption = 1;
constexpr std::uint8_t kOptionEnd = 0xFF;
constexpr char kEncryptionNotSupported = 2;
constexpr char kEncryptionRequired = 3;

constexpr std::size_t kLongestName = 128;
constexpr std::uint32_t kOldestVersion = 0x70000000;

// The texts of a login packet, in the order of their positions in its head.
enum class Field : std::size_t {
  kHostName,
  kUser,
  kPassword,
  kProgram,
  kServer,
  kExtension,
  kLibrary,
  kLanguage,
  kDatabase,
};

constexpr std::size_t kHead = 36;  // in front of the positions

std::size_t BigEndian16(std::string_view bytes, std::size_t at) {
  if (bytes.size() < at + 2) throw WireError("a login ends early");
  return std::size_t{static_cast<unsigned char>(bytes[at])} << 8 |
         static_cast<unsigned char>(bytes[at + 1]);
}

std::string_view Units(std::string_view message, Field field) {
  ByteReader in(message);
  in.Skip(kHead + 4 * static_cast<std::size_t>(field));
  const std::size_t position = in.U16();
  const std::size_t length = std::size_t{in.U16()};
  if (length > kLongestName) throw WireError("a name in a login is too long");
  if (length == 0) return {};
  if (position + 2 * length > message.size()) throw WireError("a name in a login ends early");
  return message.substr(position, 2 * length);
}

std::string Text(std::string_view message, Field field) {
  return Utf16ToUtf8(Units(message, field));
}

// The password's bytes are no more than turned about.
std::string Password(std::string_view message) {
  std::string units(Units(message, Field::kPassword));
  for (char& byte : units) {
    const unsigned turned = static_cast<unsigned char>(byte) ^ 0xA5u;
    byte = static_cast<char>(turned << 4 | turned >> 4);
  }
  return Utf16ToUtf8(units);
}

}  // namespace

std::string AnswerPreLogin(std::string_view message) {
  constexpr std::size_t kOption = 5;
  for (std::size_t at = 0;; at += kOption) {
    if (at >= message.size()) throw WireError("a pre-login ends early");
    const auto option = static_cast<unsigned char>(message[at]);
    if (option == kOptionEnd) break;
    const std::size_t position = BigEndian16(message, at + 1);
    const std::size_t length = BigEndian16(message, at + 3);
    if (position + length > message.size()) throw WireError("a pre-login ends early");
    if (option == kOptionEncryption && length > 0 && message[position] == kEncryptionRequired) {
      throw WireError("the client insists on encryption");
    }
  }
  constexpr char kVersion[] = {8, 0, 7, static_cast<char>(0xF7), 0, 0};
  std::string answer{0, 0, 11, 0, 6, kOptionEncryption, 0, 17, 0, 1, static_cast<char>(kOptionEnd)};
  answer.append(kVersion, sizeof kVersion);
  answer.push_back(kEncryptionNotSupported);
  return answer;
}

LoginPacket ReadLogin(std::string_view message) {
  ByteReader head(message);
  if (head.U32() > message.size()) throw WireError("a login ends early");
  if (head.U32() < kOldestVersion) throw WireError("the client is too old");
  const std::size_t packet_size = head.U32();
  head.Skip(4);  // the version of the client's library
  LoginPacket login;
  login.packet_size =
      packet_size == 0 ? kDefaultPacket : std::clamp(packet_size, kSmallestPacket, kLargestPacket);
  LoginRequest& request = login.request;
  request.client.process_id = head.U32();
  request.client.host_name = Text(message, Field::kHostName);
  request.client.program_name = Text(message, Field::kProgram);
  request.user = Text(message, Field::kUser);
  request.password = Password(message);
  request.database = Text(message, Field::kDatabase);
  login.language = Text(message, Field::kLanguage);
  return login;
}

}  // namespace dbkeeper::server
