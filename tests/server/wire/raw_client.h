// A client that sends and receives plain bytes over TCP.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace dbkeeper::server {

class RawClient {
 public:
  explicit RawClient(std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      close(socket_);
      throw std::runtime_error("cannot connect");
    }
    const timeval patience{10, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  ~RawClient() { close(socket_); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  // False when the server does not listen any more.
  bool Send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent < 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  // The payload of the next answer; empty when the server closed.
  std::string Answer() const {
    std::string payload;
    for (;;) {
      const std::string header = Receive(8);
      if (header.size() < 8) return payload;
      const auto byte = [&header](std::size_t i) { return static_cast<unsigned char>(header[i]); };
      payload += Receive((std::size_t{byte(2)} << 8 | byte(3)) - 8);
      if (byte(1) == 1) return payload;
    }
  }

  // Whether the server closes; what it still sends is dropped.
  bool WaitForClose() const {
    char bytes[4096];
    for (;;) {
      const ssize_t got = recv(socket_, bytes, sizeof bytes, 0);
      if (got == 0) return true;
      if (got < 0) return errno == ECONNRESET;
    }
  }

 private:
  std::string Receive(std::size_t size) const {
    std::string bytes(size, '\0');
    std::size_t got = 0;
    while (got < size) {
      const ssize_t piece = recv(socket_, bytes.data() + got, size - got, 0);
      if (piece <= 0) break;
      got += static_cast<std::size_t>(piece);
    }
    bytes.resize(got);
    return bytes;
  }

  const int socket_;
};

}  // namespace dbkeeper::server
