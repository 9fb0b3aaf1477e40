#include "app/workbench/GridPane.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "app/support/Messages.h"
#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

constexpr int kNavigatorReading = 100;
constexpr int kNavigatorEditing = 250;

// What a question shows of a row.
constexpr std::size_t kToldColumns = 4;
constexpr std::size_t kToldCharacters = 40;

std::string Told(const GridCell& cell) {
  if (cell.Null) return "(null)";
  std::size_t end = 0;
  for (std::size_t i = 0; i < kToldCharacters && end < cell.Text.size(); ++i) {
    end += Utf8Length(cell.Text, end);
  }
  std::string text(cell.Text.substr(0, end));
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c >= 0 && c < ' '; }, ' ');
  return end < cell.Text.size() ? text + " ..." : text;
}

}  // namespace

GridPane::GridPane(GridPaneControls controls, RowView& rows, const Workbench& workbench)
    : controls_(controls), rows_(rows), workbench_(workbench) {
  controls_.grid.Source = &rows_;
  controls_.navigator.Source = &rows_;
  controls_.navigator.ConfirmDelete = [this] { return ConfirmDelete(); };
  FollowSwitch();
}

void GridPane::FollowSwitch() {
  const bool editing = controls_.edit_switch.Down;
  lock_ = editing ? LockType::kOptimistic : LockType::kReadOnly;
  controls_.edit_switch.Caption = editing ? "Ronly" : "Edit";
  controls_.grid.ReadOnly = !editing;
  controls_.navigator.VisibleButtons = editing ? AllNavigatorButtons() : MovingButtons();
  controls_.navigator.Width = editing ? kNavigatorEditing : kNavigatorReading;
  controls_.strip.Width = editing ? controls_.strip_editing : controls_.strip_reading;
}

// The row is named by its first values: nobody deletes one that he has not meant.
bool GridPane::ConfirmDelete() const {
  std::string text(messages::kDeleteRow);
  const auto& columns = rows_.Columns();
  for (std::size_t column = 0; column < std::min(columns.size(), kToldColumns); ++column) {
    text += column == 0 ? "\r\n\r\n" : "\r\n";
    text += columns[column].Caption + " : " + Told(rows_.Cell(rows_.CurrentRow(), column));
  }
  return workbench_.ConfirmCaution(text);
}

}  // namespace dbkeeper
