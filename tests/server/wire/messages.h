// Messages of a client, byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "server/wire/bytes.h"
#include "server/wire/code_page.h"

namespace dbkeeper::server {

inline std::string Packet(std::uint8_t kind, std::string_view payload, std::uint8_t status = 1) {
  const std::size_t length = payload.size() + 8;
  std::string packet{static_cast<char>(kind),
                     static_cast<char>(status),
                     static_cast<char>(length >> 8),
                     static_cast<char>(length),
                     0,
                     0,
                     1,
                     0};
  return packet.append(payload);
}

inline std::string Utf16(std::string_view text) {
  std::string units;
  AppendUtf16(text, units);
  return units;
}

// The payload of a login; fields in the order of the packet: host, user, password, program, server,
// extension, library, language, database.
inline std::string LoginMessage(const std::vector<std::string>& fields) {
  constexpr std::size_t kData = 36 + 4 * 9 + 6 + 8;
  ByteWriter head;
  std::string data;
  head.U32(0x71000001);
  for (int i = 0; i < 7; ++i) head.U32(0);
  for (std::size_t i = 0; i < 9; ++i) {
    std::string units = i < fields.size() ? Utf16(fields[i]) : "";
    head.U16(static_cast<std::uint16_t>(kData + data.size()));
    head.U16(static_cast<std::uint16_t>(units.size() / 2));
    if (i == 2) {
      for (char& c : units) {
        const auto byte = static_cast<unsigned char>(c);
        c = static_cast<char>((byte << 4 | byte >> 4) ^ 0xA5);
      }
    }
    data += units;
  }
  head.Raw(std::string(14, '\0'));
  ByteWriter message;
  message.U32(static_cast<std::uint32_t>(kData + data.size()));
  message.Raw(head.bytes());
  message.Raw(data);
  return message.bytes();
}

// The packet with which the fake engine's one user comes in.
inline std::string TesterLogin() {
  return Packet(16, LoginMessage({"host", "tester", "Secret_1"}));
}

inline std::string Batch(std::string_view text) { return Packet(1, Utf16(text)); }

}  // namespace dbkeeper::server
