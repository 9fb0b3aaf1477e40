// A channel whose client has sent everything already.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "server/wire/socket.h"

namespace dbkeeper::server {

class MemoryChannel : public Channel {
 public:
  explicit MemoryChannel(std::string_view bytes) : bytes_(bytes) {}

  std::size_t Receive(char* bytes, std::size_t size) override {
    const std::size_t piece = std::min(size, bytes_.size());
    std::memcpy(bytes, bytes_.data(), piece);
    bytes_.remove_prefix(piece);
    return piece;
  }
  void Send(std::string_view bytes) override { sent_.append(bytes); }
  void SetDeadline(std::optional<std::chrono::steady_clock::time_point> /*deadline*/) override {}
  Pending Peek(unsigned char& /*first*/) override { return Pending::kNothing; }
  void Close() override {}

  const std::string& sent() const { return sent_; }

 private:
  std::string_view bytes_;
  std::string sent_;
};

}  // namespace dbkeeper::server
