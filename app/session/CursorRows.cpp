#include "app/session/CursorRows.h"

#include <algorithm>
#include <utility>

namespace dbkeeper {

namespace {

// Rows of a page: few where a single cell may be megabytes long.
std::size_t PageRowsFor(const std::vector<Field>& fields) {
  constexpr std::size_t kShortRows = 100;
  constexpr std::size_t kLongRows = 20;
  const bool has_long = std::any_of(fields.begin(), fields.end(),
                                    [](const Field& field) { return field.long_value; });
  return has_long ? kLongRows : kShortRows;
}

}  // namespace

CursorRows::CursorRows(std::unique_ptr<PageCursor> cursor, std::size_t budget)
    : cursor_(std::move(cursor)),
      fields_(cursor_->Fields()),
      page_rows_(PageRowsFor(fields_)),
      budget_(budget) {
  Fetch(0);
}

CursorRows::~CursorRows() = default;

void CursorRows::NoteCount(std::int64_t first, std::size_t count) {
  const bool beyond_end = count == 0 && first > known_;
  if (exact_ || beyond_end) return;
  known_ = std::max(known_, first + static_cast<std::int64_t>(count));
  exact_ = count < page_rows_;
}

CursorRows::Page* CursorRows::Have(std::int64_t number) {
  const auto found = std::find_if(pages_.begin(), pages_.end(),
                                  [number](const Page& page) { return page.number == number; });
  if (found == pages_.end()) return cursor_ == nullptr ? nullptr : &Fetch(number);
  pages_.splice(pages_.begin(), pages_, found);
  return &pages_.front();
}

CursorRows::Page& CursorRows::Fetch(std::int64_t number) {
  const std::int64_t first = number * PageSize();
  Page page{.number = number, .rows = {}};
  const std::size_t count = cursor_->Fetch(first, page_rows_, page.rows);
  page.rows.Finish();
  NoteCount(first, count);
  kept_bytes_ += page.rows.Size();
  pages_.push_front(std::move(page));
  DropOldPages();
  return pages_.front();
}

void CursorRows::DropOldPages() {
  while (kept_bytes_ > budget_ && pages_.size() > 2) {
    kept_bytes_ -= pages_.back().rows.Size();
    pages_.pop_back();
  }
}

void CursorRows::FetchTo(std::int64_t row) {
  if (exact_ || cursor_ == nullptr || row < known_) return;
  Fetch(row / PageSize());
  if (row >= known_) FetchLast();
}

void CursorRows::FetchLast() {
  if (exact_ || cursor_ == nullptr) return;
  known_ = cursor_->CountRows();
  exact_ = true;
}

std::optional<std::string_view> CursorRows::Value(std::int64_t row, std::size_t field) {
  if (row < 0 || row >= known_) return std::nullopt;
  Page* const page = Have(row / PageSize());
  if (page == nullptr) return std::nullopt;
  return page->rows.Cell(static_cast<std::size_t>(row % PageSize()), field);
}

void CursorRows::Detach() {
  cursor_.reset();
  exact_ = true;
}

}  // namespace dbkeeper
