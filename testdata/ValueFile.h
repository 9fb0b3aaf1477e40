// A text file with a value on each line, read once and kept as it was then.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper {

class ValueFile {
 public:
  // Throws FileError when the file cannot be read or holds what the ANSI code page lacks.
  ValueFile(const std::filesystem::path& file, CodePage& code_page);

  std::int64_t Count() const { return static_cast<std::int64_t>(lines_.size()); }
  // The line of that number from 0, in the ANSI code page; behind the last one the last one, and of
  // an empty file an empty text.
  std::string_view Line(std::int64_t number) const;

 private:
  std::vector<std::string> lines_;
};

}  // namespace dbkeeper
