// Which table a select reads, told from its text. Only what is surely one table is recognised.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper {

struct SelectSource {
  // The table's name as it is written: up to database, owner and table, an owner left out being
  // empty.
  std::vector<std::string> table;
  // The column of the table that each expression of the list is; absence for anything computed.
  // Empty when the list is all columns.
  std::vector<std::optional<std::string>> columns;
};

// Absence for a join, a group, a union, a distinct list, several statements, and everything else
// whose rows may not be rows of one table.
std::optional<SelectSource> SingleTableOf(std::string_view sql);

}  // namespace dbkeeper
