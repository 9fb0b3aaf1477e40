// The main list as a CSV file.
#pragma once

#include "app/support/AnsiTextFile.h"
#include "controls/ListView.h"

namespace dbkeeper {

// Writes a line of captions, then a line for each row, shorter where a row has fewer sub-items than
// there are columns. Every value stands in double quotes; nothing inside is escaped. Throws
// FileError, which names character, row and column where the code page lacks a character.
void WriteCsv(const ListView& list, AnsiTextFile& file);

}  // namespace dbkeeper
