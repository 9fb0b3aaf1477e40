// The accounts of this computer, which stand for those of Windows.
#pragma once

#include <string_view>

namespace dbkeeper::server {

enum class HostAccount { kNone, kUser, kGroup };

// What "COMPUTER\name" is on the computer of that name, without regard to case; "BUILTIN\..." are
// the groups that every computer has. Nothing is known of other computers and of domains.
HostAccount FindHostAccount(std::string_view name, std::string_view computer);

}  // namespace dbkeeper::server
