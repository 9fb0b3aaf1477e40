#include "platform/host/SystemRandom.h"

#include <chrono>
#include <random>

namespace dbkeeper::host {

namespace {

constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15;

std::uint64_t Mix(std::uint64_t value) {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

}  // namespace

SystemRandom::SystemRandom() : state_(std::random_device{}()) { Seed(); }

// The clock alone would give neighbouring calls the same numbers: a counter and the numbers so far
// are mixed in.
void SystemRandom::Seed() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  state_ = Mix(state_ + static_cast<std::uint64_t>(now)) + ++seedings_ * kStep;
}

std::uint64_t SystemRandom::Next() { return Mix(state_ += kStep); }

// What the limit does to the odds is less than its part in 2 to the 32nd, which no one can see.
std::int64_t SystemRandom::Below(std::int64_t limit) {
  constexpr std::int64_t kHalf = std::int64_t{1} << 32;
  if (limit < kHalf) {
    return static_cast<std::int64_t>((Next() >> 32) * static_cast<std::uint64_t>(limit) >> 32);
  }
  return static_cast<std::int64_t>(Next() % static_cast<std::uint64_t>(limit));
}

}  // namespace dbkeeper::host
