#include "platform/host/DesktopShell.h"

#include <pwd.h>
#include <unistd.h>

#include <QDesktopServices>
#include <QProcess>
#include <QUrl>
#include <array>
#include <system_error>

namespace dbkeeper::host {

namespace {

// As long as a host name may be, with the end mark.
constexpr std::size_t kHostNameSize = 256;

}  // namespace

void DesktopShell::Open(const std::string& target) {
  const QString text = QString::fromStdString(target);
  if (std::filesystem::path(target).is_absolute()) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(text));
  } else if (text.contains("://")) {
    QDesktopServices::openUrl(QUrl(text));
  } else {
    QProcess::startDetached(text, {});
  }
}

void DesktopShell::Run(const std::string& command, const std::string& arguments,
                       WindowState /*window*/) {
  QProcess::startDetached(QString::fromStdString(command),
                          QProcess::splitCommand(QString::fromStdString(arguments)));
}

std::string DesktopShell::ComputerName() {
  std::array<char, kHostNameSize> name{};
  if (gethostname(name.data(), name.size() - 1) != 0) return {};
  return name.data();
}

std::string DesktopShell::UserName() {
  const passwd* const user = getpwuid(geteuid());
  return user == nullptr ? std::string() : std::string(user->pw_name);
}

std::string DesktopShell::TemporaryFolder() {
  std::error_code none;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(none);
  // An empty last part makes the one separator at the end.
  return (none ? std::filesystem::path("/tmp") : folder) / "";
}

std::optional<std::string> DesktopShell::FileVersion(const std::filesystem::path& file) {
  if (file == executable_) return version_;
  return std::nullopt;
}

}  // namespace dbkeeper::host
