#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/FakeHost.h"

namespace dbkeeper::testing {

void ExpectGolden(const std::string& file_name, std::string_view text) {
  const std::filesystem::path file = std::filesystem::path(GOLDEN_FOLDER) / file_name;
  if (std::getenv("DBKEEPER_REWRITE_GOLDEN") != nullptr) return PutFile(file, text);
  EXPECT_EQ(text, FileBytes(file)) << "Set DBKEEPER_REWRITE_GOLDEN to write " << file;
}

}  // namespace dbkeeper::testing
