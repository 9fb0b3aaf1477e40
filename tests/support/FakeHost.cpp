#include "tests/support/FakeHost.h"

#include <atomic>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace dbkeeper::testing {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::random_device device;
  path_ = fs::temp_directory_path() /
          ("dbkeeper-test-" + std::to_string(device()) + "-" + std::to_string(device()));
  fs::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string FileBytes(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void PutFile(const fs::path& file, std::string_view bytes) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace dbkeeper::testing
