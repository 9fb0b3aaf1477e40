// A file of this machine, written in order. Failures throw std::system_error.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace dbkeeper::server {

class HostFile {
 public:
  // Makes the file; it must not be there yet.
  static HostFile Make(const std::filesystem::path& path);
  // Makes the file when it is not there; what it holds stays until it is written over.
  static HostFile MakeOrOpen(const std::filesystem::path& path);
  ~HostFile();
  HostFile(HostFile&& other) noexcept;
  HostFile& operator=(HostFile&&) = delete;

  void Write(std::string_view bytes);
  void Seek(std::int64_t offset);
  // Cuts off what lies behind the present place.
  void EndHere();
  // Returns when what was written is on the disk.
  void Sync();

 private:
  explicit HostFile(int file) : file_(file) {}
  int file_;
};

// Makes renames and removals in the folder last.
void SyncFolder(const std::filesystem::path& folder);

// 0 when it is not there.
std::int64_t BytesOf(const std::filesystem::path& file);
// In pages of 8 KB, as the server counts.
inline std::int64_t ServerPages(std::int64_t bytes) { return (bytes + 8191) / 8192; }

// Removes the file when it is there, and what SQLite keeps beside it.
void RemoveWithLogs(const std::filesystem::path& path);

// Sixteen random bytes, and the same as 32 digits for a file's name.
std::string RandomBytes();
std::string RandomName();

}  // namespace dbkeeper::server
