#include "platform/host/PosixDisk.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <random>
#include <system_error>
#include <utility>

namespace dbkeeper::host {

namespace fs = std::filesystem;

namespace {

constexpr mode_t kNewFile = 0666;  // less what the operator's mask takes away

[[noreturn]] void Fail() { throw std::system_error(errno, std::generic_category()); }

class PosixFile : public OutputFile {
 public:
  PosixFile(fs::path path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;
  ~PosixFile() override { close(descriptor_); }

  const fs::path& Path() const override { return path_; }

  void Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
      if (written >= 0) {
        bytes.remove_prefix(static_cast<std::size_t>(written));
      } else if (errno != EINTR) {
        Fail();
      }
    }
  }

  void Sync() override {
    // Pipes and devices have nothing to bring to a medium, and say so.
    if (fsync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) Fail();
  }

 private:
  fs::path path_;
  int descriptor_;
};

std::string FreshName(std::random_device& random) {
  std::array<char, 32> name;
  std::snprintf(name.data(), name.size(), ".dbkeeper-%08x.tmp", random());
  return name.data();
}

}  // namespace

std::unique_ptr<OutputFile> PosixDisk::CreateFresh(const fs::path& folder, fs::perms permissions) {
  std::random_device random;
  for (;;) {
    fs::path path = folder / FreshName(random);
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                static_cast<mode_t>(permissions));
    if (descriptor >= 0) return std::make_unique<PosixFile>(std::move(path), descriptor);
    if (errno != EEXIST && errno != EINTR) Fail();
  }
}

std::unique_ptr<OutputFile> PosixDisk::Overwrite(const fs::path& file) {
  const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFile);
  if (descriptor < 0) Fail();
  return std::make_unique<PosixFile>(file, descriptor);
}

}  // namespace dbkeeper::host
