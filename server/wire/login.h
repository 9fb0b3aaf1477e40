// How a conversation begins: what both can do, and who the client is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "server/engine/session.h"
#include "server/wire/packet.h"

namespace dbkeeper::server {

// What a login packet says.
struct LoginPacket {
  LoginRequest request;
  std::size_t packet_size = kDefaultPacket;
  std::string language;
};

// The answer to a pre-login message: the version, and that there is no encryption. Throws
// WireError when the message is none, or when the client insists on encryption.
std::string AnswerPreLogin(std::string_view message);

// Reads the message of a login; every length in it is checked. Throws WireError.
LoginPacket ReadLogin(std::string_view message);

}  // namespace dbkeeper::server
