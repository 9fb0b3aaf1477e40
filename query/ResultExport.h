// A result as a text file: fields separated by tabs, lines ended by CR LF, nothing quoted.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "app/session/RowView.h"
#include "app/support/Host.h"

namespace dbkeeper {

// Writes a line of field names and a line for each row, as the grid shows their values. The file is
// in the ANSI code page; where that lacks a character, it is in UTF-8 with a byte order mark, and
// the first such place is given in words. The old file is the new one only once that is whole.
// Throws FileError, and ServerError when a row cannot be read.
std::optional<std::string> ExportResult(RowView& rows, const std::filesystem::path& file,
                                        const Host& host);

}  // namespace dbkeeper
