// error.log beside the executable: the errors of one run.
#pragma once

#include <exception>
#include <filesystem>

#include "app/support/Host.h"

namespace dbkeeper {

class ErrorLog {
 public:
  // `host` outlives the log.
  ErrorLog(std::filesystem::path folder, const Host& host);

  // Removes what an earlier run has left.
  void Discard();
  // Adds three lines: when, which kind of error, and its message. Throws FileError.
  void Append(const std::exception& error);

 private:
  std::filesystem::path file_;
  const Host& host_;
};

}  // namespace dbkeeper
