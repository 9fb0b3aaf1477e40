#include "platform/odbc/Pages.h"

#include <algorithm>
#include <utility>

namespace dbkeeper::odbc {

Pages::Pages(std::shared_ptr<Statement> statement)
    : statement_(std::move(statement)), rows_(*statement_), fields_(rows_.Fields()) {}

bool Pages::IsReallyCursor() {
  UseWire();
  try {
    rows_.FetchAt(0, rows_.Capacity());
    first_rows_fetched_ = true;
    return true;
  } catch (const ServerError&) {
    // If it failed for another reason, reading forward will fail for it again.
    return false;
  }
}

void Pages::UseWire() {
  statement_->TheLink().ClearWire();
  statement_->TheLink().NoteCursorColumns();
}

std::size_t Pages::FetchAt(std::int64_t first, std::size_t count) {
  if (std::exchange(first_rows_fetched_, false) && first == 0) {
    statement_->Handle();  // throws when the connection was closed
    return std::min(rows_.Rows(), count);
  }
  UseWire();
  return rows_.FetchAt(first, count);
}

std::size_t Pages::Fetch(std::int64_t first, std::size_t count, RowBlock& block) {
  std::size_t added = 0;
  while (added < count) {
    const std::size_t wanted = std::min(count - added, rows_.Capacity());
    const std::size_t fetched = FetchAt(first + static_cast<std::int64_t>(added), wanted);
    for (std::size_t row = 0; row < fetched; ++row) rows_.AddRow(row, block);
    added += fetched;
    if (fetched < wanted) break;
  }
  return added;
}

std::int64_t Pages::CountRows() {
  first_rows_fetched_ = false;
  UseWire();
  // The driver does not pass on the number of rows, but it tells the place of the last one.
  if (rows_.FetchLast() == 0) return 0;
  return static_cast<std::int64_t>(statement_->Attribute(SQL_ATTR_ROW_NUMBER));
}

}  // namespace dbkeeper::odbc
