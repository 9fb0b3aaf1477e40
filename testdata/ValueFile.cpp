#include "testdata/ValueFile.h"

#include <algorithm>

#include "app/support/Files.h"
#include "app/support/TextLines.h"

namespace dbkeeper {

ValueFile::ValueFile(const std::filesystem::path& file, CodePage& code_page)
    : lines_(ReadTextLines(file, code_page)) {
  for (std::string& line : lines_) line = ToAnsi(code_page, line);
}

std::string_view ValueFile::Line(std::int64_t number) const {
  if (lines_.empty()) return {};
  return lines_[static_cast<std::size_t>(std::min(number, Count() - 1))];
}

}  // namespace dbkeeper
