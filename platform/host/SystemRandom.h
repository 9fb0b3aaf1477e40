// Random numbers, another row of them at each start.
#pragma once

#include <random>

#include "app/support/Host.h"

namespace dbkeeper::host {

class SystemRandom : public RandomSource {
 public:
  SystemRandom() : engine_(std::random_device{}()) {}
  std::int64_t Below(std::int64_t limit) override {
    return std::uniform_int_distribution<std::int64_t>(0, limit - 1)(engine_);
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace dbkeeper::host
