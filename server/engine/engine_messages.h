// Former names of the messages of types/messages.h.
#pragma once

#include "server/types/messages.h"

namespace dbkeeper::server {

inline ServerMessage MessageOf(int number, std::initializer_list<std::string_view> parts = {}) {
  return MakeMessage(number, parts);
}

}  // namespace dbkeeper::server
