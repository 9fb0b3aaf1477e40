#include "app/main/ErrorLog.h"

#include <array>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

#include "app/support/DateText.h"
#include "app/support/Errors.h"
#include "app/support/Files.h"

namespace dbkeeper {

namespace fs = std::filesystem;

namespace {

// The name that the log lists an error under.
std::string ClassNameOf(const std::exception& error) {
  if (const auto* own = dynamic_cast<const Error*>(&error)) return own->ClassName();
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "bad_alloc";
  if (dynamic_cast<const std::system_error*>(&error) != nullptr) return "system_error";
  if (dynamic_cast<const std::logic_error*>(&error) != nullptr) return "logic_error";
  if (dynamic_cast<const std::runtime_error*>(&error) != nullptr) return "runtime_error";
  return "exception";
}

std::string LogTextOf(const std::exception& error) {
  const auto* const own = dynamic_cast<const Error*>(&error);
  return own != nullptr ? own->LogText() : error.what();
}

// More than one run can write with boxes that a person must close.
constexpr std::size_t kLongestLog = 64 << 20;

}  // namespace

ErrorLog::ErrorLog(fs::path folder, const Host& host)
    : file_(std::move(folder) / "error.log"), host_(host) {}

void ErrorLog::Discard() {
  std::error_code ignored;  // what cannot be removed shows itself when something is written
  fs::remove(file_, ignored);
}

void ErrorLog::Append(const std::exception& error) {
  const DateTimeValue now = host_.clock.Now();
  std::error_code problem;
  std::string bytes = fs::exists(file_, problem) ? ReadFile(file_, kLongestLog) : std::string();
  const std::array<std::string, 3> lines = {
      "Error Time Stamp: " + FormatDateTime(now, "hh:nn am/pm") + " on " +
          FormatDateTime(now, "mm/dd/yy"),
      "Error Class: " + ClassNameOf(error), "Error Message: " + LogTextOf(error)};
  for (const std::string& line : lines) {
    bytes += ToAnsiWithNumbers(host_.code_page, line) + "\r\n";
  }
  ReplaceFile(host_.disk, file_, bytes);
}

}  // namespace dbkeeper
