// One client that sends the given bytes, whatever they are, and closes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dbkeeper::server {

void FuzzOne(const std::uint8_t* data, std::size_t size);

}  // namespace dbkeeper::server
