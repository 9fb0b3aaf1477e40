// The machine and its desktop.
#pragma once

#include "app/support/Host.h"

namespace dbkeeper::host {

class DesktopShell : public Shell {
 public:
  // The program's own file, and the version that it gives as that file's.
  DesktopShell(std::filesystem::path executable, std::string version)
      : executable_(std::move(executable)), version_(std::move(version)) {}

  void Open(const std::string& target) override;
  void Run(const std::string& command, const std::string& arguments, WindowState window) override;
  std::string ComputerName() override;
  std::string UserName() override;
  std::string TemporaryFolder() override;
  std::optional<std::string> FileVersion(const std::filesystem::path& file) override;
  std::filesystem::path Executable() override { return executable_; }

 private:
  std::filesystem::path executable_;
  std::string version_;
};

}  // namespace dbkeeper::host
