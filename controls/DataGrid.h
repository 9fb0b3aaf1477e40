// The data grid: shows rows by number straight from their source, and lets a person edit them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "controls/Control.h"
#include "controls/ListView.h"
#include "controls/Menu.h"

namespace dbkeeper {

// What a column's cells are, for the way they are shown.
enum class GridCellKind { kText, kNumber, kDate, kBinary };

struct GridColumn {
  std::string Caption;
  std::string TypeHint;  // such as "varchar(20), not null"
  GridCellKind Kind = GridCellKind::kText;
  Alignment Align = Alignment::kLeft;
  bool Editable = false;  // never true for a column that the server fills itself
  bool operator==(const GridColumn&) const = default;
};

// A cell as it is shown.
struct GridCell {
  std::string_view Text;  // UTF-8; lives until the source is asked for another cell or changes
  bool Null = false;
  bool Shortened = false;  // WholeText has more
};

struct GridRowCount {
  std::int64_t Rows = 0;
  bool Exact = true;  // otherwise there are at least so many
  bool operator==(const GridRowCount&) const = default;
};

enum class GridState { kClosed, kBrowse, kEdit, kInsert };

// What a grid shows and a navigator moves in: rows by number from 0, one of them current, and
// at most one of them being changed. A change is written by Post, by moving to another row, or
// dropped by Cancel.
class GridSource {
 public:
  // What observers are told: everything is another, the number of rows or several rows, one row,
  // the current row, or the state.
  enum class Change { kAll, kRows, kRow, kCurrent, kState };

  GridSource() = default;
  GridSource(const GridSource&) = delete;
  GridSource& operator=(const GridSource&) = delete;
  virtual ~GridSource() = default;

  Signal<Change, std::int64_t> Changed;  // the row's number with kRow and kCurrent, otherwise 0

  virtual const std::vector<GridColumn>& Columns() const = 0;
  virtual GridRowCount RowCount() const = 0;
  // Makes more rows known where the count is not exact.
  virtual void FetchMore() = 0;
  // Never throws: a row that cannot be read gives empty cells, and the failure waits for Check().
  virtual GridCell Cell(std::int64_t row, std::size_t column) = 0;
  // The whole value in the form in which it is edited.
  virtual std::string WholeText(std::int64_t row, std::size_t column) = 0;
  // Throws what Cell could not. A view calls it through its guard when it has painted.
  virtual void Check() = 0;
  virtual bool HasFailure() const = 0;

  virtual GridState State() const = 0;
  // -1 when there is no row.
  virtual std::int64_t CurrentRow() const = 0;
  virtual void MoveTo(std::int64_t row) = 0;
  virtual void First() = 0;
  virtual void Prior() = 0;
  virtual void Next() = 0;
  virtual void Last() = 0;

  // Whether rows can be written now.
  virtual bool CanEdit() const = 0;
  // Why rows could not be written in edit mode either; empty when there is no such reason.
  virtual const std::string& EditRefusal() const = 0;
  // A new row in the current one's place, which becomes the current one.
  virtual void Insert() = 0;
  // Deletes the current row, or drops the one being inserted.
  virtual void Delete() = 0;
  virtual void Edit() = 0;
  virtual void Post() = 0;
  virtual void Cancel() = 0;
  // Reads the rows again.
  virtual void Refresh() = 0;
  // Gives a cell of the current row what a person typed, or null, starting to edit the row. Throws
  // ConvertError when the text is no value of the column's type.
  virtual void SetCell(std::size_t column, const std::optional<std::string>& typed) = 0;
};

class DataGrid : public Control {
 public:
  using Control::Control;

  // Null: an empty grid. The source must outlive its place here.
  Property<GridSource*> Source{nullptr};
  Property<bool> ReadOnly{true};
  // The column of the focused cell; -1 when there is none.
  Property<int> CurrentColumn{-1};
  Property<PopupMenu*> Popup{nullptr};

  // Whether a person may edit the cells of a column now.
  bool Editable(std::size_t column) const;

  // A person moved to a cell; leaving a row being changed writes it.
  void UserMoveTo(std::int64_t row, int column);
  // Began to type into a cell of the current row: from then on the row is being changed.
  void UserBeginEdit(std::size_t column);
  // Typed into the cell of the current row, or made it null. Ignored where it is not editable.
  void UserSetCell(std::size_t column, const std::optional<std::string>& typed);
  // Esc and Tab: the changes of the row are dropped.
  void UserCancel();
};

}  // namespace dbkeeper
