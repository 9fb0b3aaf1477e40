#include "app/support/FileReplacement.h"

#include <array>
#include <string>
#include <utility>

#include "app/support/Files.h"
#include "app/support/Messages.h"

namespace dbkeeper {

namespace fs = std::filesystem;

namespace {

constexpr auto kOwnerOnly = fs::perms::owner_read | fs::perms::owner_write;
constexpr auto kAsTheMachineGives = kOwnerOnly | fs::perms::group_read | fs::perms::group_write |
                                    fs::perms::others_read | fs::perms::others_write;
// More than any honest chain of links has.
constexpr int kMostLinks = 40;

struct Reason {
  std::errc code;
  std::string_view words;
};

constexpr std::array<Reason, 9> kReasons = {{
    {std::errc::no_space_on_device, "ディスクの空き容量がありません。"},
    {std::errc::file_too_large, "ファイルの大きさの上限を超えました。"},
    {std::errc::permission_denied, "書き込む権限がありません。"},
    {std::errc::operation_not_permitted, "書き込む権限がありません。"},
    {std::errc::read_only_file_system, "読取専用のディスクです。"},
    {std::errc::no_such_file_or_directory, "フォルダーがありません。"},
    {std::errc::filename_too_long, "ファイル名が長すぎます。"},
    {std::errc::is_a_directory, messages::kNoPlainFile},
    {std::errc::io_error, "ディスクの入出力エラーです。"},
}};

FileError CannotWriteBecause(const fs::path& file, std::string_view reason) {
  return FileError(messages::Fill(messages::kCannotWrite, PathText(file)) + "\r\n" +
                   std::string(reason));
}

// What the links lead to, which need not be there.
fs::path WithoutLinks(fs::path file) {
  std::error_code problem;
  for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(file, problem)); ++i) {
    const fs::path next = fs::read_symlink(file, problem);
    if (problem) break;
    file = file.parent_path() / next;
  }
  return file;
}

}  // namespace

FileError CannotWrite(const fs::path& file, const std::error_code& reason) {
  for (const Reason& known : kReasons) {
    if (reason == known.code) return CannotWriteBecause(file, known.words);
  }
  return CannotWriteBecause(file, reason.message());
}

FileReplacement::FileReplacement(Disk& disk, fs::path file)
    : disk_(disk), file_(std::move(file)), target_(WithoutLinks(file_)) {
  std::error_code problem;
  old_ = fs::status(target_, problem);
  if (fs::exists(old_)) {
    if (!fs::is_regular_file(old_)) throw CannotWriteBecause(file_, messages::kNoPlainFile);
    const bool writable = (old_.permissions() & fs::perms::owner_write) != fs::perms::none;
    if (!writable) throw CannotWriteBecause(file_, messages::kWriteProtected);
  }
  Restart();
}

FileReplacement::~FileReplacement() { Drop(); }

void FileReplacement::Write(std::string_view bytes) {
  try {
    fresh_->Write(bytes);
  } catch (const std::system_error& error) {
    throw CannotWrite(file_, error.code());
  }
}

void FileReplacement::Restart() {
  Drop();
  try {
    // Nobody may read of a private file while it is written.
    fresh_ = disk_.CreateFresh(target_.parent_path(),
                               fs::exists(old_) ? kOwnerOnly : kAsTheMachineGives);
  } catch (const std::system_error& error) {
    throw CannotWrite(file_, error.code());
  }
}

void FileReplacement::Commit() {
  try {
    fresh_->Sync();
    if (fs::exists(old_)) fs::permissions(fresh_->Path(), old_.permissions());
    fs::rename(fresh_->Path(), target_);
  } catch (const std::system_error& error) {
    throw CannotWrite(file_, error.code());
  }
  fresh_.reset();
}

void FileReplacement::Drop() {
  if (fresh_ == nullptr) return;
  const fs::path path = fresh_->Path();
  fresh_.reset();
  std::error_code ignored;
  fs::remove(path, ignored);
}

}  // namespace dbkeeper
