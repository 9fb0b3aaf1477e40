// The port to files that are written: what the standard library cannot do with them.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

namespace dbkeeper {

// A file open for writing; its end closes it.
class OutputFile {
 public:
  virtual ~OutputFile() = default;
  virtual const std::filesystem::path& Path() const = 0;
  // All of the bytes, behind those before. Throws std::system_error.
  virtual void Write(std::string_view bytes) = 0;
  // Returns when what was written has reached the medium. Throws std::system_error.
  virtual void Sync() = 0;
};

class Disk {
 public:
  virtual ~Disk() = default;
  // A new file in `folder`, under a name that nothing there had, with at most these permissions.
  // Throws std::system_error.
  virtual std::unique_ptr<OutputFile> CreateFresh(const std::filesystem::path& folder,
                                                  std::filesystem::perms permissions) = 0;
  // The file itself, emptied, or made where there is none. Throws std::system_error.
  virtual std::unique_ptr<OutputFile> Overwrite(const std::filesystem::path& file) = 0;
};

}  // namespace dbkeeper
