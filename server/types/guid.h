// Unique identifiers as 16 bytes in the order of the wire.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dbkeeper::server {

// "6F9619FF-8B86-D011-B42D-00C04FC964FF", with or without braces; none for anything else.
std::optional<std::string> ParseGuid(std::string_view text);
std::string FormatGuid(std::string_view bytes);

}  // namespace dbkeeper::server
