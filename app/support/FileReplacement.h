// A file that is written piece by piece and takes the place of the old one only when it is whole.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "app/support/Disk.h"
#include "app/support/Errors.h"

namespace dbkeeper {

// That a file cannot be written, and why, in words.
FileError CannotWrite(const std::filesystem::path& file, const std::error_code& reason);

class FileReplacement {
 public:
  // Begins a fresh file in the folder of the old one; a link's is that of what it leads to. Throws
  // FileError when the place is no plain file, is write-protected, or cannot be written.
  FileReplacement(Disk& disk, std::filesystem::path file);
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;
  // Without a Commit the old file stays as it was.
  ~FileReplacement();

  // Throws FileError.
  void Write(std::string_view bytes);
  // Drops what was written. Throws FileError.
  void Restart();
  // Puts the new file, once it is on the medium, in the place of the old one, with the old one's
  // permissions. Throws FileError.
  void Commit();

 private:
  void Drop();

  Disk& disk_;
  std::filesystem::path file_;
  std::filesystem::path target_;  // `file_` without links
  std::filesystem::file_status old_;
  std::unique_ptr<OutputFile> fresh_;
};

}  // namespace dbkeeper
