// The texts that a column's fields make: the cells of its row in the list, and its part of the
// statements about it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "controls/ListView.h"

namespace dbkeeper {

// The cells of a column's row.
enum ColumnCell : std::size_t {
  kTypeCell,
  kSizeCell,
  kNullCell,
  kIdentityCell,
  kDefaultCell,
  kCommentCell,
  kNoteCell,
};

// What the fields of the column page hold.
struct ColumnFields {
  std::string name;
  std::string type;
  double size = 0;
  double scale = 0;
  bool nullable = true;
  std::string default_value;
  double identity_start = 0;
  double identity_step = 0;  // 0: no identity
  std::string comment;
  std::string note;
};

// The cells from the type to the comment, and the note where it is shown.
std::vector<std::string> CellsOf(const ColumnFields& fields, bool with_note);

// The fields that a row was filled from.
ColumnFields FieldsOf(const ListItem& row);

// "(size" and ",scale" with the closing bracket, or nothing for a size of 0.
std::string SizeClause(const ColumnFields& fields);

// The lines that add a column to a table.
std::vector<std::string> AddColumnLines(const std::string& table, const ColumnFields& fields);

// The statement that changes a column's type, size and nulls.
std::string AlterColumnText(const std::string& table, const ColumnFields& fields);

// The statement that makes a table of the rows of the list.
std::string CreateTableText(const std::string& table, const std::vector<ListItem>& rows);

}  // namespace dbkeeper
