// A file that is written piece by piece and takes the place of the old one only when it is whole.
#pragma once

#include <filesystem>
#include <fstream>
#include <string_view>

namespace dbkeeper {

class FileReplacement {
 public:
  // Begins a new file beside the old one. Throws FileError when the place is no plain file, is
  // write-protected, or cannot be written.
  explicit FileReplacement(std::filesystem::path file);
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;
  // Without a Commit the old file stays as it was.
  ~FileReplacement();

  // Throws FileError.
  void Write(std::string_view bytes);
  // Drops what was written.
  void Restart();
  // Puts the new file in the place of the old one. Throws FileError.
  void Commit();

 private:
  [[noreturn]] void Fail() const;

  std::filesystem::path file_;
  std::filesystem::path fresh_;
  std::filesystem::file_status old_;
  std::ofstream stream_;
  bool committed_ = false;
};

}  // namespace dbkeeper
