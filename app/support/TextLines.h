// The lines of a text file whatever its encoding.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper {

// The lines of a text file in UTF-8 or UTF-16 with a mark, or in UTF-8 or the ANSI code page
// without. Throws FileError when it cannot be read, is longer than 32 MiB, or is no such text.
std::vector<std::string> ReadTextLines(const std::filesystem::path& file, CodePage& code_page);

}  // namespace dbkeeper
