#include "server/wire/attention.h"

#include "server/wire/packet.h"

namespace dbkeeper::server {
namespace {

constexpr std::chrono::milliseconds kPeriod{20};

}  // namespace

AttentionWatcher::AttentionWatcher()
    : thread_([this](const std::stop_token& stop) { Run(stop); }) {}

void AttentionWatcher::Run(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  while (!stop.stop_requested()) {
    asleep_ = watches_.empty();
    wake_.wait(lock, stop, [this] { return !watches_.empty(); });
    asleep_ = false;
    // The pause comes first: most statements are over before anybody has to look at them.
    wake_.wait_for(lock, stop, kPeriod, [] { return false; });
    for (Watch* watch : watches_) {
      unsigned char first = 0;
      const Channel::Pending pending = watch->channel_.Peek(first);
      const bool attention = pending == Channel::Pending::kData &&
                             first == static_cast<unsigned char>(PacketKind::kAttention);
      if (attention || pending == Channel::Pending::kClosed) {
        // Again at every look, as a batch may have gone on to its next statement.
        watch->cancelled_ = true;
        watch->session_.Interrupt();
      }
    }
  }
}

AttentionWatcher::Watch::Watch(AttentionWatcher& watcher, Channel& channel, Session& session,
                               std::atomic<bool>& cancelled)
    : watcher_(watcher), channel_(channel), session_(session), cancelled_(cancelled) {
  bool wake = false;
  {
    const std::lock_guard lock(watcher_.mutex_);
    place_ = watcher_.watches_.insert(watcher_.watches_.end(), this);
    wake = watcher_.asleep_;
  }
  if (wake) watcher_.wake_.notify_one();
}

AttentionWatcher::Watch::~Watch() {
  const std::lock_guard lock(watcher_.mutex_);
  watcher_.watches_.erase(place_);
}

}  // namespace dbkeeper::server
