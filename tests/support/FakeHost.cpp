#include "tests/support/FakeHost.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>
#include <utility>

namespace dbkeeper::testing {

namespace fs = std::filesystem;

class FakeDisk::File : public OutputFile {
 public:
  File(fs::path path, FakeDisk& disk) : path_(std::move(path)), disk_(disk) {
    stream_.open(path_, std::ios::binary | std::ios::trunc);
    if (stream_) return;
    throw std::system_error(std::make_error_code(std::errc::no_such_file_or_directory));
  }
  const fs::path& Path() const override { return path_; }
  void Write(std::string_view bytes) override {
    const std::size_t fit = std::min(bytes.size(), disk_.room.value_or(bytes.size()));
    stream_.write(bytes.data(), static_cast<std::streamsize>(fit)).flush();
    if (disk_.room) *disk_.room -= fit;
    if (stream_ && fit == bytes.size()) return;
    throw std::system_error(std::make_error_code(std::errc::no_space_on_device));
  }
  void Sync() override { ++disk_.synced; }

 private:
  fs::path path_;
  FakeDisk& disk_;
  std::ofstream stream_;
};

std::unique_ptr<OutputFile> FakeDisk::CreateFresh(const fs::path& folder, fs::perms permissions) {
  auto file = std::make_unique<File>(folder / (".fresh" + std::to_string(++files_)), *this);
  fs::permissions(file->Path(), permissions);
  return file;
}

std::unique_ptr<OutputFile> FakeDisk::Overwrite(const fs::path& file) {
  return std::make_unique<File>(file, *this);
}

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
