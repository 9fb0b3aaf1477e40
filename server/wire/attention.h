// Notices, while statements run, that clients do not want to wait for them any more.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <stop_token>
#include <thread>

#include "server/engine/session.h"
#include "server/wire/socket.h"

namespace dbkeeper::server {

// Looks at the channels of all running statements every few milliseconds: an attention, or the end
// of the connection, interrupts the statement. One thread for all connections; it sleeps while
// nothing runs. Outlives its watches.
class AttentionWatcher {
 public:
  AttentionWatcher();

  // A running statement; what it refers to is looked at while the watch lives.
  class Watch {
   public:
    Watch(AttentionWatcher& watcher, Channel& channel, Session& session,
          std::atomic<bool>& cancelled);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

   private:
    friend class AttentionWatcher;
    AttentionWatcher& watcher_;
    Channel& channel_;
    Session& session_;
    std::atomic<bool>& cancelled_;
    std::list<Watch*>::iterator place_;
  };

 private:
  void Run(const std::stop_token& stop);

  std::mutex mutex_;
  std::condition_variable_any wake_;
  std::list<Watch*> watches_;
  bool asleep_ = false;
  std::jthread thread_;  // the last one: it is over before the others go
};

}  // namespace dbkeeper::server
