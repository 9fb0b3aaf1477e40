// A small driver for the fuzz target: models of random bytes with fixed seeds.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/document/xls/FuzzOne.h"

namespace dbkeeper::xls {
namespace {

TEST(XlsFuzz, AnyModelGivesAFileThatAReaderAccepts) {
  constexpr int kRounds = 60;
  std::mt19937 random(1997);
  for (int round = 0; round < kRounds; ++round) {
    std::vector<std::uint8_t> bytes(random() % 20000);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    EXPECT_NO_THROW(FuzzOne(bytes.data(), bytes.size())) << round;
  }
}

}  // namespace
}  // namespace dbkeeper::xls
