// Whole files: read with a bound, replaced by write-and-rename, and the text of the program's own
// files.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper {

// The bytes of a file. Throws FileError when it cannot be read, is no plain file, or is longer than
// `limit` bytes.
std::string ReadFile(const std::filesystem::path& file, std::size_t limit);

// Puts the bytes in the place of the file, which is the old one or the new one at every moment.
// Throws FileError; a file that is write-protected stays as it is.
void ReplaceFile(Disk& disk, const std::filesystem::path& file, std::string_view bytes);

// A text file's bytes in the ANSI code page. Throws FileError that names the first character that
// the code page lacks.
std::string ToAnsi(CodePage& code_page, std::string_view text);

// The same for a text that must be written all the same: a character that the code page lacks is
// written by its number, as "<U+1F600>".
std::string ToAnsiWithNumbers(CodePage& code_page, std::string_view text);

// The lines of a text, ended by CR LF, LF or the end.
std::vector<std::string> SplitLines(std::string_view text);

// A path as UTF-8 text, and back.
std::string PathText(const std::filesystem::path& path);
std::filesystem::path PathOf(std::string_view text);

}  // namespace dbkeeper
