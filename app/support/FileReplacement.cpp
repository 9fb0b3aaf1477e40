#include "app/support/FileReplacement.h"

#include <system_error>
#include <utility>

#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/Messages.h"

namespace dbkeeper {

namespace fs = std::filesystem;

FileReplacement::FileReplacement(fs::path file) : file_(std::move(file)), fresh_(file_) {
  std::error_code problem;
  old_ = fs::status(file_, problem);
  const bool writable = (old_.permissions() & fs::perms::owner_write) != fs::perms::none;
  if (fs::exists(old_) && (!fs::is_regular_file(old_) || !writable)) Fail();
  fresh_ += ".new";
  Restart();
}

FileReplacement::~FileReplacement() {
  if (committed_) return;
  stream_.close();
  std::error_code ignored;
  fs::remove(fresh_, ignored);
}

void FileReplacement::Write(std::string_view bytes) {
  stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream_) Fail();
}

void FileReplacement::Restart() {
  if (stream_.is_open()) stream_.close();
  stream_.clear();
  stream_.open(fresh_, std::ios::binary | std::ios::trunc);
  if (!stream_) Fail();
}

void FileReplacement::Commit() {
  stream_.close();
  if (!stream_) Fail();
  std::error_code problem;
  if (fs::exists(old_)) fs::permissions(fresh_, old_.permissions(), problem);
  fs::rename(fresh_, file_, problem);
  if (problem) Fail();
  committed_ = true;
}

void FileReplacement::Fail() const {
  throw FileError(messages::Fill(messages::kCannotWrite, PathText(file_)));
}

}  // namespace dbkeeper
