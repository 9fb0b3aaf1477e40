// Files by the operating system's own calls.
#pragma once

#include <memory>

#include "app/support/Disk.h"

namespace dbkeeper::host {

class PosixDisk : public Disk {
 public:
  std::unique_ptr<OutputFile> CreateFresh(const std::filesystem::path& folder,
                                          std::filesystem::perms permissions) override;
  std::unique_ptr<OutputFile> Overwrite(const std::filesystem::path& file) override;
};

}  // namespace dbkeeper::host
