#include "app/session/RowView.h"

#include <algorithm>
#include <utility>

#include "app/session/CellText.h"
#include "app/support/Errors.h"
#include "app/support/Messages.h"

namespace dbkeeper {

namespace {

// What a grid shows of a long value, in bytes.
constexpr std::size_t kShownBytes = 1024;

std::optional<std::string_view> ViewOf(const std::optional<std::string>& value) {
  if (value) return *value;
  return std::nullopt;
}

}  // namespace

RowView::RowView(HostLocale& locale) : locale_(locale) {}

RowView::~RowView() = default;

void RowView::Open(std::unique_ptr<RowSource> rows) {
  rows_ = std::move(rows);
  editor_.reset();
  refusal_.clear();
  overlay_.Clear();
  change_ = {};
  failure_ = nullptr;
  detached_ = false;
  current_ = RowCount().Rows > 0 ? 0 : -1;
  state_ = GridState::kBrowse;
  DescribeColumns();
  Changed.Emit(Change::kAll, 0);
}

void RowView::Close() {
  if (rows_ == nullptr) return;
  rows_.reset();
  editor_.reset();
  refusal_.clear();
  overlay_.Clear();
  change_ = {};
  failure_ = nullptr;
  detached_ = false;
  current_ = -1;
  state_ = GridState::kClosed;
  columns_.clear();
  Changed.Emit(Change::kAll, 0);
}

void RowView::Detach() {
  if (!Active()) return;
  if (state_ == GridState::kInsert) overlay_.Remove(current_);
  rows_->Detach();
  detached_ = true;
  editor_.reset();
  change_ = {};
  state_ = GridState::kBrowse;
  current_ = std::min(current_, RowCount().Rows - 1);
  DescribeColumns();
  Changed.Emit(Change::kRows, 0);
  Changed.Emit(Change::kState, 0);
}

void RowView::AllowEditing(std::unique_ptr<RowEditor> editor) {
  editor_ = std::move(editor);
  refusal_ = editor_->Refusal();
  DescribeColumns();
  Changed.Emit(Change::kState, 0);
}

void RowView::ForbidEditing(std::string reason) {
  Cancel();
  editor_.reset();
  refusal_ = std::move(reason);
  DescribeColumns();
  Changed.Emit(Change::kState, 0);
}

void RowView::DescribeColumns() {
  columns_.clear();
  for (const Field& field : Fields()) {
    columns_.push_back(ColumnOf(field));
    columns_.back().Editable = CanEdit() && editor_->Writable(columns_.size() - 1);
  }
}

const std::vector<Field>& RowView::Fields() const {
  if (rows_ == nullptr) throw SessionError("The rows are not open.");
  return rows_->Fields();
}

GridRowCount RowView::RowCount() const {
  if (rows_ == nullptr) return {};
  return {rows_->KnownRows() + overlay_.Extra(), rows_->CountIsExact()};
}

void RowView::FetchMore() {
  if (rows_ != nullptr) FetchTo(RowCount().Rows);
}

void RowView::FetchTo(std::int64_t row) {
  const GridRowCount before = RowCount();
  if (row < before.Rows || before.Exact) return;
  rows_->FetchTo(row - overlay_.Extra());
  if (!(RowCount() == before)) Changed.Emit(Change::kRows, 0);
}

bool RowView::IsBeingChanged(std::int64_t row) const {
  return row == current_ && (state_ == GridState::kEdit || state_ == GridState::kInsert);
}

std::optional<std::string_view> RowView::Value(std::int64_t row, std::size_t field) {
  return IsBeingChanged(row) ? ViewOf(change_.after[field]) : StoredValue(row, field);
}

std::optional<std::string_view> RowView::StoredValue(std::int64_t row, std::size_t field) {
  const RowOverlay::Place place = overlay_.At(row);
  return place.values != nullptr ? ViewOf((*place.values)[field])
                                 : rows_->Value(place.source_row, field);
}

RowValues RowView::ValuesOf(std::int64_t row) {
  RowValues values(Fields().size());
  for (std::size_t field = 0; field < values.size(); ++field) {
    if (const auto value = Value(row, field)) values[field] = std::string(*value);
  }
  return values;
}

std::string_view RowView::StoredText(std::int64_t row, std::size_t field) {
  const auto value = StoredValue(row, field);
  return value ? ShownText(Fields()[field], *value, shown_, locale_) : std::string_view();
}

GridCell RowView::Cell(std::int64_t row, std::size_t column) {
  if (rows_ == nullptr || row < 0 || row >= RowCount().Rows || column >= columns_.size()) return {};
  try {
    const auto value = Value(row, column);
    if (!value) return {.Text = {}, .Null = true};
    const std::string_view text = ShownText(Fields()[column], *value, shown_, locale_, kShownBytes);
    return {.Text = text, .Null = false, .Shortened = value->size() > kShownBytes};
  } catch (const std::exception&) {
    // Nobody is told of anything while a view paints; it calls Check() afterwards.
    if (failure_ == nullptr) failure_ = std::current_exception();
    rows_->Detach();
    return {};
  }
}

std::string RowView::WholeText(std::int64_t row, std::size_t column) {
  const auto value = Value(row, column);
  return value ? EditText(Fields()[column], *value) : std::string();
}

void RowView::Check() {
  if (failure_ == nullptr) return;
  const std::exception_ptr failure = std::exchange(failure_, nullptr);
  Detach();
  std::rethrow_exception(failure);
}

void RowView::SetState(GridState state) {
  state_ = state;
  Changed.Emit(Change::kState, 0);
}

void RowView::SetCurrent(std::int64_t row) {
  current_ = row;
  Changed.Emit(Change::kCurrent, row);
}

void RowView::MoveTo(std::int64_t row) {
  if (rows_ == nullptr) return;
  const std::int64_t left = current_;
  const std::int64_t before = RowCount().Rows;
  Leave();
  // A new row that was dropped had moved those behind it.
  if (row > left) row -= before - RowCount().Rows;
  FetchTo(row);
  SetCurrent(std::clamp<std::int64_t>(row, RowCount().Rows > 0 ? 0 : -1, RowCount().Rows - 1));
}

void RowView::First() { MoveTo(0); }

void RowView::Prior() { MoveTo(current_ - 1); }

void RowView::Next() { MoveTo(current_ + 1); }

void RowView::Last() {
  if (rows_ == nullptr) return;
  Leave();
  const GridRowCount before = RowCount();
  rows_->FetchLast();
  if (!(RowCount() == before)) Changed.Emit(Change::kRows, 0);
  MoveTo(RowCount().Rows - 1);
}

void RowView::RequireEditable() const {
  if (CanEdit()) return;
  throw RowError(refusal_.empty() ? std::string(messages::kReadOnlyRows) : refusal_);
}

void RowView::BeginChange(GridState state, RowValues before, RowValues after) {
  change_ = {std::move(before), std::move(after), std::vector<bool>(Fields().size(), false)};
  SetState(state);
}

void RowView::Insert() {
  RequireEditable();
  Leave();
  const RowValues nothing(Fields().size());
  const std::int64_t row = std::max<std::int64_t>(current_, 0);
  overlay_.Insert(row, nothing);
  current_ = row;
  BeginChange(GridState::kInsert, nothing, nothing);
  Changed.Emit(Change::kRows, 0);
  Changed.Emit(Change::kCurrent, row);
}

void RowView::Edit() {
  RequireEditable();
  if (state_ != GridState::kBrowse || current_ < 0) return;
  RowValues values = ValuesOf(current_);
  BeginChange(GridState::kEdit, values, values);
}

void RowView::Delete() {
  RequireEditable();
  if (current_ < 0) return;
  if (state_ == GridState::kInsert) return Cancel();
  Cancel();
  editor_->Delete(ValuesOf(current_));
  overlay_.Remove(current_);
  current_ = std::min(current_, RowCount().Rows - 1);
  Changed.Emit(Change::kRows, 0);
  Changed.Emit(Change::kCurrent, current_);
}

bool RowView::AnythingGiven() const {
  return std::find(change_.assigned.begin(), change_.assigned.end(), true) !=
         change_.assigned.end();
}

void RowView::Leave() {
  if (state_ == GridState::kInsert && !AnythingGiven()) {
    Cancel();
  } else {
    Post();
  }
}

void RowView::Post() {
  if (state_ != GridState::kEdit && state_ != GridState::kInsert) return;
  if (state_ == GridState::kInsert) {
    overlay_.Replace(current_, editor_->Insert(change_));
  } else if (AnythingGiven()) {
    overlay_.Replace(current_, editor_->Update(change_));
  }
  change_ = {};
  SetState(GridState::kBrowse);
  Changed.Emit(Change::kRow, current_);
}

void RowView::Cancel() {
  if (state_ == GridState::kInsert) {
    overlay_.Remove(current_);
    change_ = {};
    current_ = std::min(current_, RowCount().Rows - 1);
    SetState(GridState::kBrowse);
    Changed.Emit(Change::kRows, 0);
    Changed.Emit(Change::kCurrent, current_);
  } else if (state_ == GridState::kEdit) {
    change_ = {};
    SetState(GridState::kBrowse);
    Changed.Emit(Change::kRow, current_);
  }
}

void RowView::Refresh() {
  Cancel();
  if (!Reopen) return;
  const std::int64_t row = current_;
  Reopen();
  if (rows_ != nullptr && row > 0) MoveTo(row);
}

void RowView::SetCell(std::size_t column, const std::optional<std::string>& typed) {
  const Field& field = Fields().at(column);
  SetValue(column, typed ? TypedValue(field, *typed, locale_) : std::nullopt);
}

void RowView::SetValue(std::size_t field, std::optional<std::string> value) {
  RequireEditable();
  if (current_ < 0) return;
  if (!editor_->Writable(field)) {
    throw RowError(messages::Fill(messages::kReadOnlyField, Fields()[field].name));
  }
  if (state_ == GridState::kBrowse) Edit();
  change_.after[field] = std::move(value);
  change_.assigned[field] = true;
  Changed.Emit(Change::kRow, current_);
}

}  // namespace dbkeeper
