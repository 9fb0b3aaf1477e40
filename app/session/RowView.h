// The one view of rows that both grids show: rows of a source, the changes that a person made to
// them, a current row, and the editing of one row at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/RowEditor.h"
#include "app/session/RowOverlay.h"
#include "app/session/RowSource.h"
#include "app/support/Host.h"
#include "controls/DataGrid.h"

namespace dbkeeper {

class RowView : public GridSource {
 public:
  explicit RowView(HostLocale& locale);
  ~RowView() override;

  // Shows rows and stands on the first one; they are read-only until AllowEditing. Changes not
  // yet written are dropped.
  void Open(std::unique_ptr<RowSource> rows);
  void Close();
  // False also once Detach was called.
  bool Active() const { return rows_ != nullptr && !detached_; }
  // Asks the server for nothing any more; the rows at hand stay to be read.
  void Detach();
  // How Refresh gets the rows again: it calls Open of this view. Without it Refresh does nothing.
  std::function<void()> Reopen;

  // Lets rows be written by `editor`; its refusal is shown where it has one.
  void AllowEditing(std::unique_ptr<RowEditor> editor);
  void ForbidEditing(std::string reason = "");

  const std::vector<Field>& Fields() const;
  // A value of a row in the form of the connection's port, alive until the next call; absence is a
  // null. Throws ServerError.
  std::optional<std::string_view> Value(std::int64_t row, std::size_t field);
  // Whether a row is one that was not written yet.
  bool IsNew(std::int64_t row) const { return row == current_ && state_ == GridState::kInsert; }
  // The whole text that the grid shows for a value, unshortened and without what is being changed;
  // empty for a null. Alive until the next call.
  std::string_view StoredText(std::int64_t row, std::size_t field);
  // As SetCell, with the value in the form of the port (binary as hexadecimal digits).
  void SetValue(std::size_t field, std::optional<std::string> value);

  const std::vector<GridColumn>& Columns() const override { return columns_; }
  GridRowCount RowCount() const override;
  void FetchMore() override;
  GridCell Cell(std::int64_t row, std::size_t column) override;
  std::string WholeText(std::int64_t row, std::size_t column) override;
  void Check() override;
  bool HasFailure() const override { return failure_ != nullptr; }
  GridState State() const override { return state_; }
  std::int64_t CurrentRow() const override { return current_; }
  void MoveTo(std::int64_t row) override;
  void First() override;
  void Prior() override;
  void Next() override;
  void Last() override;
  bool CanEdit() const override { return editor_ != nullptr && refusal_.empty(); }
  const std::string& EditRefusal() const override { return refusal_; }
  void Insert() override;
  void Delete() override;
  void Edit() override;
  void Post() override;
  void Cancel() override;
  void Refresh() override;
  void SetCell(std::size_t column, const std::optional<std::string>& typed) override;

  // Ends a change because the current row is left: it is written, but a new row into which nobody
  // has typed is dropped. Only Post writes such a one.
  void Leave();

 private:
  bool AnythingGiven() const;
  std::optional<std::string_view> StoredValue(std::int64_t row, std::size_t field);
  void DescribeColumns();
  void FetchTo(std::int64_t row);
  void SetState(GridState state);
  void SetCurrent(std::int64_t row);
  // Throws RowError where rows cannot be written.
  void RequireEditable() const;
  void BeginChange(GridState state, RowValues before, RowValues after);
  bool IsBeingChanged(std::int64_t row) const;
  RowValues ValuesOf(std::int64_t row);
  std::string_view Shown(const Field& field, std::string_view value, std::size_t limit);

  HostLocale& locale_;
  std::unique_ptr<RowSource> rows_;
  std::unique_ptr<RowEditor> editor_;
  RowOverlay overlay_;
  std::vector<GridColumn> columns_;
  std::string refusal_;
  GridState state_ = GridState::kClosed;
  bool detached_ = false;
  std::int64_t current_ = -1;
  RowChange change_;  // of the current row, in the states kEdit and kInsert
  std::exception_ptr failure_;
  std::string shown_;  // behind the texts that are not the source's own
};

}  // namespace dbkeeper
