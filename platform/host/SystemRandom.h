// Random numbers, another row of them at each start.
#pragma once

#include "app/support/Host.h"

namespace dbkeeper::host {

// One 64-bit state that walks by an odd step, and a mix of it for each number: seeding costs no
// more than a number, which a text of a few random letters would otherwise feel.
class SystemRandom : public RandomSource {
 public:
  SystemRandom();
  void Seed() override;
  std::int64_t Below(std::int64_t limit) override;

 private:
  std::uint64_t Next();

  std::uint64_t state_;
  std::uint64_t seedings_ = 0;
};

}  // namespace dbkeeper::host
