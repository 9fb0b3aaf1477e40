#include "controls/DataGrid.h"

namespace dbkeeper {

bool DataGrid::Editable(std::size_t column) const {
  const GridSource* const source = Source();
  return !ReadOnly && Enabled && source != nullptr && source->CanEdit() &&
         column < source->Columns().size() && source->Columns()[column].Editable;
}

void DataGrid::UserMoveTo(std::int64_t row, int column) {
  if (Source() == nullptr) return;
  CurrentColumn = column;
  if (row != Source()->CurrentRow()) Source()->MoveTo(row);
}

void DataGrid::UserBeginEdit(std::size_t column) {
  if (Editable(column) && Source()->State() == GridState::kBrowse) Source()->Edit();
}

void DataGrid::UserSetCell(std::size_t column, const std::optional<std::string>& typed) {
  if (Editable(column)) Source()->SetCell(column, typed);
}

void DataGrid::UserCancel() {
  if (Source() != nullptr) Source()->Cancel();
}

}  // namespace dbkeeper
