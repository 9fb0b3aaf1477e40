// Observable values: what a control is made of and what a view or a test watches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace dbkeeper {

namespace detail {
class SlotTable {
 public:
  virtual ~SlotTable() = default;
  virtual void Disconnect(std::uint64_t id) = 0;
};
}  // namespace detail

// Keeps one observer connected for as long as it lives. Outliving the observed value is harmless.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  Subscription(std::weak_ptr<detail::SlotTable> table, std::uint64_t id)
      : table_(std::move(table)), id_(id) {}
  Subscription(Subscription&& other) noexcept
      : table_(std::move(other.table_)), id_(std::exchange(other.id_, 0)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    if (this != &other) {
      Disconnect();
      table_ = std::move(other.table_);
      id_ = std::exchange(other.id_, 0);
    }
    return *this;
  }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() { Disconnect(); }

  void Disconnect() {
    if (const auto table = table_.lock()) table->Disconnect(id_);
    table_.reset();
  }

 private:
  std::weak_ptr<detail::SlotTable> table_;
  std::uint64_t id_ = 0;
};

// A list of observers told in the order in which they connected. While telling, an observer may
// connect or disconnect observers (itself too), emit again, or destroy the signal: one that was
// disconnected is not told any more, one that was connected meanwhile is told from the next time.
template <class... Args>
class Signal {
 public:
  Signal() : slots_(std::make_shared<Slots>()) {}
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;
  ~Signal() { slots_->closed = true; }

  [[nodiscard]] Subscription Connect(std::function<void(Args...)> observer) {
    const std::uint64_t id = ++slots_->last_id;
    slots_->entries.push_back(
        {id, std::make_shared<std::function<void(Args...)>>(std::move(observer))});
    return Subscription(slots_, id);
  }

  void Emit(Args... args) const {
    const std::shared_ptr<Slots> slots = slots_;
    const Telling telling(*slots);
    const std::size_t count = slots->entries.size();
    for (std::size_t i = 0; i < count && !slots->closed; ++i) {
      // A copy of the pointer: the observer may disconnect itself while it runs.
      const auto observer = slots->entries[i].observer;
      if (observer) (*observer)(args...);
    }
  }

 private:
  struct Entry {
    std::uint64_t id;
    std::shared_ptr<std::function<void(Args...)>> observer;  // null once disconnected
  };

  struct Slots : detail::SlotTable {
    void Disconnect(std::uint64_t id) override {
      for (Entry& entry : entries) {
        if (entry.id == id) entry.observer.reset();
      }
      if (telling == 0) Sweep();
    }
    void Sweep() {
      std::erase_if(entries, [](const Entry& entry) { return !entry.observer; });
    }
    std::vector<Entry> entries;
    std::uint64_t last_id = 0;
    int telling = 0;  // depth of nested tellings; entries keep their places meanwhile
    bool closed = false;
  };

  class Telling {
   public:
    explicit Telling(Slots& slots) : slots_(slots) { ++slots_.telling; }
    Telling(const Telling&) = delete;
    Telling& operator=(const Telling&) = delete;
    ~Telling() {
      if (--slots_.telling == 0) slots_.Sweep();
    }

   private:
    Slots& slots_;
  };

  std::shared_ptr<Slots> slots_;
};

// A value that tells its observers when it becomes another one. Setting an equal value does
// nothing. An observer that sets the value again while being told starts a telling of its own;
// every observer's last call therefore carries the present value.
template <class T>
class Property {
 public:
  Property() = default;
  explicit Property(T initial) : value_(std::move(initial)) {}
  Property(const Property&) = delete;
  Property& operator=(const Property& other) {
    Set(other.value_);
    return *this;
  }
  Property& operator=(T value) {
    Set(std::move(value));
    return *this;
  }

  void Set(T value) {
    if (value == value_) return;
    value_ = std::move(value);
    changed_.Emit(value_);
  }

  const T& operator()() const { return value_; }
  operator const T&() const { return value_; }
  bool operator==(const T& other) const { return value_ == other; }

  // Tells `observer` the present value at once, and every later one.
  [[nodiscard]] Subscription Observe(std::function<void(const T&)> observer) {
    observer(value_);
    return changed_.Connect(std::move(observer));
  }

 private:
  T value_{};
  Signal<const T&> changed_;
};

}  // namespace dbkeeper
