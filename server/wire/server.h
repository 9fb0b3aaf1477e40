// Listens on the loopback address and serves each client on a thread of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

#include "server/engine/session.h"
#include "server/wire/attention.h"
#include "server/wire/connection.h"

namespace dbkeeper::server {

struct ServerOptions {
  std::uint16_t port = 0;  // 0: one that is free
  // The whole time that a client has to get in.
  std::chrono::milliseconds login_timeout{15'000};
  std::size_t most_connections = 5000;
};

class Server {
 public:
  // Opens the port and begins to serve. `factory` outlives the server. Throws std::runtime_error
  // when the port cannot be had.
  Server(SessionFactory& factory, const ServerOptions& options);
  // Interrupts what runs, closes all connections and waits for their threads.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  std::uint16_t port() const { return port_; }

  // Closes the connection of session `spid`, if there is one. May be called from any thread.
  void CloseConnection(int spid);

 private:
  struct Client;

  void Accept();
  void Welcome(int descriptor);
  void RemoveFinished();

  const ServerOptions options_;
  AttentionWatcher watcher_;
  const ConnectionServices services_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<bool> stop_ = false;
  std::mutex mutex_;
  std::list<Client> clients_;
  std::thread thread_;
};

}  // namespace dbkeeper::server
