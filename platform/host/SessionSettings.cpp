#include "platform/host/SessionSettings.h"

#include <charconv>
#include <string>

#include "app/support/Errors.h"

namespace dbkeeper::host {

namespace {

constexpr const char* kSection = "ODBC";

std::string ReadOrEmpty(const SettingsFile& settings, const char* key) {
  try {
    return settings.Read(kSection, key, "");
  } catch (const FileError&) {
    return {};
  }
}

}  // namespace

OdbcOptions ReadOdbcOptions(const SettingsFile& settings) {
  OdbcOptions options;
  options.driver = ReadOrEmpty(settings, "Driver");
  const std::string version = ReadOrEmpty(settings, "TDSVersion");
  if (!version.empty()) options.tds_version = version;
  const std::string timeout = ReadOrEmpty(settings, "LoginTimeout");
  int seconds = 0;
  const auto read = std::from_chars(timeout.data(), timeout.data() + timeout.size(), seconds);
  if (read.ec == std::errc() && seconds > 0) options.login_timeout_seconds = seconds;
  return options;
}

LocalServerOptions LocalServerOf(const std::filesystem::path& program_file) {
  const std::filesystem::path running = std::filesystem::read_symlink("/proc/self/exe");
  LocalServerOptions options = LocalServerBeside(running);
  options.data_folder = LocalServerBeside(program_file).data_folder;
  return options;
}

LocalTarget LocalServerChoice::Locate() {
  const std::string configured = settings_.Read(kSection, "Local", "");
  if (configured.empty()) return started_.Locate();
  return {configured, "", ""};
}

}  // namespace dbkeeper::host
