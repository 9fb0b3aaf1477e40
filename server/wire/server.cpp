#include "server/wire/server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include "server/wire/code_page.h"

namespace dbkeeper::server {
namespace {

constexpr int kBacklog = 512;
// How long to wait when the process has no descriptor left for another client.
constexpr std::chrono::milliseconds kShortage{50};

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

struct Server::Client {
  explicit Client(int descriptor) : socket(descriptor) {}

  Socket socket;
  std::atomic<int> spid = 0;
  std::atomic<bool> finished = false;
  std::thread thread;
};

Server::Server(SessionFactory& factory, const ServerOptions& options)
    : options_(options), services_{factory, watcher_, options.login_timeout} {
  CodePage932::Shared();  // no server without one
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener_ < 0) Fail("no socket");
  const int on = 1;
  setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(options.port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const plain = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener_, plain, size) != 0 || listen(listener_, kBacklog) != 0 ||
      getsockname(listener_, plain, &size) != 0) {
    const int error = errno;
    close(listener_);
    errno = error;
    Fail("the port cannot be opened");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Accept(); });
}

Server::~Server() {
  stop_ = true;
  shutdown(listener_, SHUT_RDWR);
  thread_.join();
  close(listener_);
  {
    const std::lock_guard lock(mutex_);
    for (Client& client : clients_) client.socket.Close();
  }
  for (Client& client : clients_) client.thread.join();
}

void Server::CloseConnection(int spid) {
  const std::lock_guard lock(mutex_);
  for (Client& client : clients_) {
    if (client.spid == spid) client.socket.Close();
  }
}

void Server::Accept() {
  while (!stop_) {
    const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    RemoveFinished();
    if (descriptor >= 0) {
      Welcome(descriptor);
    } else if (!stop_ && errno != EINTR && errno != ECONNABORTED) {
      std::this_thread::sleep_for(kShortage);
    }
  }
}

void Server::Welcome(int descriptor) {
  const std::lock_guard lock(mutex_);
  if (clients_.size() >= options_.most_connections) {
    close(descriptor);
    return;
  }
  Client& client = clients_.emplace_back(descriptor);
  try {
    client.thread = std::thread([this, &client] {
      try {
        Connection(client.socket, services_, [&client](int spid) { client.spid = spid; }).Serve();
      } catch (const std::exception& error) {
        // A fault of ours must not take the other clients along.
        std::cerr << "connection closed: " << error.what() << '\n';
      }
      client.spid = 0;
      client.socket.Close();
      client.finished = true;
    });
  } catch (const std::system_error&) {
    clients_.pop_back();  // no thread to be had: the client is turned away
  }
}

void Server::RemoveFinished() {
  const std::lock_guard lock(mutex_);
  for (auto client = clients_.begin(); client != clients_.end();) {
    if (client->finished) {
      client->thread.join();
      client = clients_.erase(client);
    } else {
      ++client;
    }
  }
}

}  // namespace dbkeeper::server
