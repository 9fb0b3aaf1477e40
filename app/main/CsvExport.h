// The main list as a CSV file.
#pragma once

#include <string>

#include "app/support/Host.h"
#include "controls/ListView.h"

namespace dbkeeper {

// The file's bytes in the ANSI code page: a line of captions, then a line for each row, shorter
// where a row has fewer sub-items than there are columns. Every value stands in double quotes;
// nothing inside is escaped. Throws FileError that names character, row and column where the code
// page lacks a character.
std::string CsvBytes(const ListView& list, CodePage& code_page);

}  // namespace dbkeeper
