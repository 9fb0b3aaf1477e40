#include "server/wire/socket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "server/wire/bytes.h"

namespace dbkeeper::server {

Socket::Socket(int descriptor) : descriptor_(descriptor) {
  // Answers are sent whole, so waiting for more to send only delays them.
  const int on = 1;
  setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

Socket::~Socket() { close(descriptor_); }

void Socket::WaitUntilReadable() const {
  if (!deadline_) return;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        *deadline_ - std::chrono::steady_clock::now());
    pollfd wait{descriptor_, POLLIN, 0};
    const int ready = poll(&wait, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready > 0) return;
    if (ready == 0) throw WireError("the client took too long");
    if (errno != EINTR) throw WireError("waiting for the client failed");
  }
}

std::size_t Socket::Receive(char* bytes, std::size_t size) {
  for (;;) {
    WaitUntilReadable();
    const ssize_t got = recv(descriptor_, bytes, size, 0);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) throw WireError("receiving from the client failed");
  }
}

void Socket::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno != EINTR) {
      throw WireError("sending to the client failed");
    }
  }
}

void Socket::SetDeadline(std::optional<std::chrono::steady_clock::time_point> deadline) {
  deadline_ = deadline;
}

Channel::Pending Socket::Peek(unsigned char& first) {
  const ssize_t got = recv(descriptor_, &first, 1, MSG_PEEK | MSG_DONTWAIT);
  if (got > 0) return Pending::kData;
  if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
    return Pending::kNothing;
  }
  return Pending::kClosed;
}

void Socket::Close() { shutdown(descriptor_, SHUT_RDWR); }

}  // namespace dbkeeper::server
