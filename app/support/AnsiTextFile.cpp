#include "app/support/AnsiTextFile.h"

#include <cstddef>
#include <system_error>
#include <utility>

#include "app/support/Errors.h"
#include "app/support/FileReplacement.h"
#include "app/support/Files.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kBytesAtOnce = std::size_t{64} << 10;

}  // namespace

// Where the bytes go.
class AnsiTextFile::Target {
 public:
  virtual ~Target() = default;
  virtual void Write(std::string_view bytes) = 0;
  virtual void Finish() = 0;
  // Whether what is written counts although no Finish comes.
  virtual bool KeepsUnfinished() const = 0;
};

class AnsiTextFile::Replaced : public Target {
 public:
  Replaced(Disk& disk, std::filesystem::path file) : file_(disk, std::move(file)) {}
  void Write(std::string_view bytes) override { file_.Write(bytes); }
  void Finish() override { file_.Commit(); }
  bool KeepsUnfinished() const override { return false; }

 private:
  FileReplacement file_;
};

class AnsiTextFile::Overwritten : public Target {
 public:
  Overwritten(Disk& disk, std::filesystem::path file) : path_(std::move(file)) {
    Try([&] { file_ = disk.Overwrite(path_); });
  }
  void Write(std::string_view bytes) override {
    Try([&] { file_->Write(bytes); });
  }
  void Finish() override {
    Try([&] { file_->Sync(); });
  }
  bool KeepsUnfinished() const override { return true; }

 private:
  template <class Action>
  void Try(Action action) const {
    try {
      action();
    } catch (const std::system_error& error) {
      throw CannotWrite(path_, error.code());
    }
  }

  std::filesystem::path path_;
  std::unique_ptr<OutputFile> file_;
};

AnsiTextFile::AnsiTextFile(const Host& host, std::filesystem::path file, Writing writing)
    : code_page_(host.code_page) {
  if (writing == Writing::kWhole) {
    target_ = std::make_unique<Replaced>(host.disk, std::move(file));
  } else {
    target_ = std::make_unique<Overwritten>(host.disk, std::move(file));
  }
}

AnsiTextFile::~AnsiTextFile() {
  if (bytes_.empty() || !target_->KeepsUnfinished()) return;
  try {
    WriteBytes();
  } catch (const FileError&) {
    // Something else has already ended the writing, and that is what is told.
  }
}

void AnsiTextFile::Add(std::string_view text) { bytes_ += ToAnsi(code_page_, text); }

void AnsiTextFile::AnsiLine(std::string_view bytes) {
  bytes_ += bytes;
  EndLine();
}

void AnsiTextFile::EndLine() {
  bytes_ += "\r\n";
  if (bytes_.size() >= kBytesAtOnce) WriteBytes();
}

void AnsiTextFile::Finish() {
  WriteBytes();
  target_->Finish();
}

void AnsiTextFile::WriteBytes() {
  const std::string bytes = std::exchange(bytes_, {});
  target_->Write(bytes);
}

}  // namespace dbkeeper
