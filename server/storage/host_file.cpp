#include "server/storage/host_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "server/types/text.h"

namespace dbkeeper::server {

namespace {

constexpr std::size_t kRandomBytes = 16;

[[noreturn]] void FailWith(int code, const std::string& what) {
  throw std::system_error(code, std::generic_category(), what);
}

int OpenDescriptor(const std::filesystem::path& path, int flags) {
  const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
  if (file < 0) FailWith(errno, path.string());
  return file;
}

}  // namespace

HostFile HostFile::Make(const std::filesystem::path& path) {
  return HostFile(OpenDescriptor(path, O_RDWR | O_CREAT | O_EXCL));
}

HostFile HostFile::MakeOrOpen(const std::filesystem::path& path) {
  return HostFile(OpenDescriptor(path, O_RDWR | O_CREAT));
}

HostFile::~HostFile() {
  if (file_ >= 0) close(file_);
}

HostFile::HostFile(HostFile&& other) noexcept : file_(std::exchange(other.file_, -1)) {}

void HostFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t part = write(file_, bytes.data(), bytes.size());
    if (part < 0 && errno == EINTR) continue;
    if (part < 0) FailWith(errno, "write");
    bytes.remove_prefix(static_cast<std::size_t>(part));
  }
}

void HostFile::Seek(std::int64_t offset) {
  if (lseek(file_, offset, SEEK_SET) < 0) FailWith(errno, "seek");
}

void HostFile::EndHere() {
  const off_t place = lseek(file_, 0, SEEK_CUR);
  if (place < 0 || ftruncate(file_, place) != 0) FailWith(errno, "cut");
}

void HostFile::Sync() {
  if (fsync(file_) != 0) FailWith(errno, "sync");
}

void SyncFolder(const std::filesystem::path& folder) {
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  // Some file systems cannot do this with a folder; then there is nothing better to do.
  static_cast<void>(fsync(file));
  close(file);
}

std::int64_t BytesOf(const std::filesystem::path& file) {
  std::error_code ignored;
  const auto bytes = std::filesystem::file_size(file, ignored);
  return ignored ? 0 : static_cast<std::int64_t>(bytes);
}

void RemoveWithLogs(const std::filesystem::path& path) {
  std::error_code ignored;
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    std::filesystem::remove(path.string() + suffix, ignored);
  }
}

std::string RandomBytes() {
  std::string bytes(kRandomBytes, '\0');
  const ssize_t got = getrandom(bytes.data(), bytes.size(), 0);
  if (got != static_cast<ssize_t>(bytes.size())) FailWith(errno, "random numbers");
  return bytes;
}

std::string RandomName() { return HexDigits(RandomBytes()); }

}  // namespace dbkeeper::server
