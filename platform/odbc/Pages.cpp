#include "platform/odbc/Pages.h"

#include <algorithm>
#include <utility>

namespace dbkeeper::odbc {

void Page::Clear() {
  text_.clear();
  cells_.clear();
}

void Page::Add(std::string_view text) {
  cells_.push_back({.start = text_.size(), .length = text.size(), .is_null = false});
  text_ += text;
}

const Page::Cell& Page::CellAt(std::size_t row, std::size_t field) const {
  if (field >= fields_ || row >= Rows()) throw SessionError("The page has no such cell.");
  return cells_[row * fields_ + field];
}

std::string_view Page::Text(std::size_t row, std::size_t field) const {
  const Cell& cell = CellAt(row, field);
  return std::string_view(text_).substr(cell.start, cell.length);
}

ScrollingPages::ScrollingPages(std::shared_ptr<Statement> statement)
    : statement_(std::move(statement)),
      block_(*statement_),
      fields_(block_.Fields()),
      page_(fields_.size()) {}

bool ScrollingPages::IsReallyCursor() {
  UseWire();
  try {
    block_.FetchAt(0, 1);
    return true;
  } catch (const ServerError&) {
    // If it failed for another reason, reading forward will fail for it again.
    return false;
  }
}

void ScrollingPages::UseWire() {
  statement_->TheLink().ClearWire();
  statement_->TheLink().NoteCursorColumns();
}

std::size_t ScrollingPages::Fetch(std::int64_t first, std::size_t count) {
  page_.Clear();
  while (PageRows() < count) {
    UseWire();
    const std::size_t wanted = std::min(count - PageRows(), block_.Capacity());
    const std::size_t rows = block_.FetchAt(first + static_cast<std::int64_t>(PageRows()), wanted);
    AddBlock();
    if (rows == wanted) continue;
    // The first page that comes short, if it lies within the rows, tells where they end.
    if (PageRows() > 0 || first == 0) row_count_ = first + static_cast<std::int64_t>(PageRows());
    break;
  }
  return PageRows();
}

std::int64_t ScrollingPages::FetchLast(std::size_t count) {
  UseWire();
  // The driver does not pass on the number of rows, but it tells the place of the last one.
  const bool any = block_.FetchLast(1) > 0;
  row_count_ =
      any ? static_cast<std::int64_t>(statement_->Attribute(SQL_ATTR_ROW_NUMBER)) : std::int64_t{0};
  const std::int64_t first =
      std::max<std::int64_t>(0, row_count_ - static_cast<std::int64_t>(count));
  Fetch(first, count);
  return first;
}

void ScrollingPages::AddBlock() {
  std::string scratch;
  for (std::size_t row = 0; row < block_.Rows(); ++row) {
    for (std::size_t field = 0; field < fields_.size(); ++field) {
      if (block_.IsNull(row, field)) {
        page_.AddNull();
      } else {
        page_.Add(block_.Text(row, field, scratch));
      }
    }
  }
}

ForwardPages::ForwardPages(std::unique_ptr<RowReader> reader)
    : reader_(std::move(reader)), page_(reader_->Fields().size()) {}

bool ForwardPages::ReadRow(Page& page) {
  if (ended_ || !reader_->Next()) {
    ended_ = true;
    return false;
  }
  ++position_;
  for (std::size_t field = 0; field < reader_->Fields().size(); ++field) {
    if (reader_->IsNull(field)) {
      page.AddNull();
    } else {
      page.Add(reader_->Text(field));
    }
  }
  return true;
}

std::size_t ForwardPages::Fetch(std::int64_t first, std::size_t count) {
  if (first < position_) throw SessionError("These rows can only be read forward.");
  page_.Clear();
  while (position_ < first && !ended_) {
    ReadRow(page_);
    page_.Clear();
  }
  while (PageRows() < count && ReadRow(page_)) {
  }
  return PageRows();
}

std::int64_t ForwardPages::FetchLast(std::size_t count) {
  // Two pages in turn: the last `count` rows always lie in both together.
  Page before(Fields().size());
  page_.Clear();
  const std::int64_t start = position_;
  while (ReadRow(page_)) {
    if (PageRows() < count) continue;
    std::swap(before, page_);
    page_.Clear();
  }
  Page last(Fields().size());
  const std::size_t missing = std::min(count - PageRows(), before.Rows());
  const auto copy = [&last, this](const Page& page, std::size_t from) {
    for (std::size_t row = from; row < page.Rows(); ++row) {
      for (std::size_t field = 0; field < Fields().size(); ++field) {
        if (page.IsNull(row, field)) {
          last.AddNull();
        } else {
          last.Add(page.Text(row, field));
        }
      }
    }
  };
  copy(before, before.Rows() - missing);
  copy(page_, 0);
  page_ = std::move(last);
  return std::max(start, position_ - static_cast<std::int64_t>(PageRows()));
}

}  // namespace dbkeeper::odbc
