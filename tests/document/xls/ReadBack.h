// What a reader that is not ours finds in a workbook.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "document/xls/Writer.h"

namespace dbkeeper::testing {

using ReadValue = std::variant<double, std::string>;

struct ReadSheet {
  std::string name;
  // By row and column; cells that hold nothing are left out. Dates are texts such as "2004-04-01".
  std::map<std::pair<unsigned, unsigned>, ReadValue> cells;
  unsigned rows = 0;

  // The text of a cell, with numbers as printf's %g shows them; empty where nothing stands.
  std::string Text(unsigned row, unsigned column) const;
};

// Throws std::runtime_error with the reader's number when it does not accept the file.
std::vector<ReadSheet> ReadBack(const std::string& bytes);

std::string BytesOf(xls::Writer& writer);

}  // namespace dbkeeper::testing
