// The bytes to and from one client, over TCP or (in tests) from memory.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>

namespace dbkeeper::server {

// Used by the client's own thread, but for Peek and Close, which any thread may call.
class Channel {
 public:
  enum class Pending { kNothing, kData, kClosed };

  virtual ~Channel() = default;
  // Receives between 1 and `size` bytes, waiting for them; 0 when the client closed. Throws
  // WireError on a failure and after the deadline.
  virtual std::size_t Receive(char* bytes, std::size_t size) = 0;
  // Throws WireError when the client is gone.
  virtual void Send(std::string_view bytes) = 0;
  // Receiving fails after `deadline`; none waits for ever.
  virtual void SetDeadline(std::optional<std::chrono::steady_clock::time_point> deadline) = 0;
  // Looks, without waiting, whether something came; `first` is then its first byte.
  virtual Pending Peek(unsigned char& first) = 0;
  // Ends the conversation: a waiting Receive or Send gives up.
  virtual void Close() = 0;
};

// A connected TCP socket; owns the descriptor.
class Socket : public Channel {
 public:
  explicit Socket(int descriptor);
  ~Socket() override;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  std::size_t Receive(char* bytes, std::size_t size) override;
  void Send(std::string_view bytes) override;
  void SetDeadline(std::optional<std::chrono::steady_clock::time_point> deadline) override;
  Pending Peek(unsigned char& first) override;
  void Close() override;

 private:
  void WaitUntilReadable() const;

  const int descriptor_;
  std::optional<std::chrono::steady_clock::time_point> deadline_;
};

}  // namespace dbkeeper::server
