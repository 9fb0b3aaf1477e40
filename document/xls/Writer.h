// Writes a workbook of the binary format that spreadsheet programs since 1997 read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/xls/CompoundFile.h"
#include "document/xls/SharedStrings.h"
#include "document/xls/SheetNames.h"
#include "document/xls/StyleTable.h"
#include "document/xls/Workbook.h"

namespace dbkeeper::xls {

// Sheets are taken one after another and kept as the bytes they will be, so that a big workbook
// never stands in memory as a model. What the format has no room for is left out and marked with
// "…", never written in a way that would damage the file.
class Writer {
 public:
  explicit Writer(const Style& normal);

  StyleId AddStyle(const Style& style) { return styles_.Add(style); }

  // A name for a sheet that is added later, so that links to it can be made before.
  std::string AddName(std::string_view wanted) { return names_.Add(wanted); }

  // A sheet under a name of AddName. Rows that do not fit go on in further sheets, each beginning
  // with the rows that are repeated in print. Throws std::length_error where there is no place for
  // another sheet.
  void AddSheet(Sheet sheet);

  // The file. Throws std::length_error when it is longer than the format allows, before anything
  // is written.
  void Write(const ByteSink& sink);

 private:
  struct SheetEntry {
    std::string name;
    std::optional<RowRange> repeated;
    std::string records;
    // Where in the part before the sheets the position of this one stands.
    std::size_t position_at = 0;
  };

  void AddPart(const Sheet& sheet);
  // The part of the stream before the sheets.
  Bytes Globals();
  void AddRepeatedRows(Bytes& out) const;

  StyleTable styles_;
  SheetNames names_;
  SharedStrings texts_;
  std::vector<SheetEntry> sheets_;
};

}  // namespace dbkeeper::xls
