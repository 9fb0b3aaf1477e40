// The common shape of every list routine: a table of columns, one query, one row per record.
//
// A list routine has the type `ListRoutine` of the workbench. It refills the main list through the
// shared query and throws what the query throws; the rows read so far stay.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "app/workbench/Workbench.h"

namespace dbkeeper {

// Where a cell's text comes from: the row's number (from 1), a field's text, a field's value in
// other words, or two fields with a blank between. No source at all leaves the cell to be filled
// later.
struct RowNumber {};
struct FieldText {
  std::string_view name;
};
struct DecodedField {
  std::string_view name;
  std::string (*decode)(const FieldValue& value);
};
struct FieldPair {
  std::string_view first;
  std::string_view second;
};
struct FilledLater {};
using CellSource = std::variant<RowNumber, FieldText, DecodedField, FieldPair, FilledLater>;

struct CatalogColumn {
  std::string_view caption;
  int width;  // pixels
  Alignment align;
  CellSource source;
  ColumnPicture picture = ColumnPicture::kNone;
};

// Removes rows and columns and adds the columns of the table.
void ResetList(ListView& list, std::span<const CatalogColumn> columns);

// Adds a row for every record of the open query. Columns that are filled later get an empty cell
// only where a filled one follows. A record that `accept` refuses makes no row.
void AppendRows(ListView& list, Query& query, std::span<const CatalogColumn> columns,
                const std::function<bool(const Query&)>& accept = {});

// The whole shape: one bulk update, reset, open, rows, close.
void RunListRoutine(const Workbench& workbench, std::span<const CatalogColumn> columns,
                    const std::string& sql);

}  // namespace dbkeeper
