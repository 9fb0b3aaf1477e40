#include "platform/odbc/BoundRows.h"

#include <algorithm>
#include <utility>

namespace dbkeeper::odbc {

namespace {

// Blocks of wide rows hold fewer of them, so that a thousand columns of 8000 bytes fit as well.
constexpr std::size_t kMostRows = 100;
constexpr std::size_t kBlockBytes = 1 << 20;
constexpr std::size_t kPieceBytes = 64 << 10;

}  // namespace

BoundRows::BoundRows(Statement& statement) : statement_(statement) {
  std::size_t row_bytes = 1;
  for (ColumnType& type : DescribeColumns(statement)) {
    row_bytes += type.width;
    has_long_values_ = has_long_values_ || type.in_pieces;
    columns_.push_back({.type = std::move(type), .values = {}, .indicators = {}, .long_text = {}});
  }
  // Only the row that was fetched last can be read in pieces.
  capacity_ = has_long_values_ ? 1 : std::clamp<std::size_t>(kBlockBytes / row_bytes, 1, kMostRows);
  Bind();
}

void BoundRows::Bind() {
  statement_.Check("SQLFreeStmt", SQLFreeStmt(statement_.Handle(), SQL_UNBIND));
  statement_.SetAttribute(SQL_ATTR_ROW_ARRAY_SIZE, capacity_);
  statement_.SetPointer(SQL_ATTR_ROWS_FETCHED_PTR, &fetched_);
  SQLUSMALLINT number = 0;
  for (Column& column : columns_) {
    ++number;
    column.indicators = std::make_unique<SQLLEN[]>(capacity_);
    if (column.type.in_pieces) continue;
    // Left as it comes: the pages that no value reaches are never touched.
    column.values = std::make_unique_for_overwrite<char[]>(capacity_ * column.type.width);
    statement_.Check(
        "SQLBindCol",
        SQLBindCol(statement_.Handle(), number, column.type.c_type, column.values.get(),
                   static_cast<SQLLEN>(column.type.width), column.indicators.get()));
  }
}

std::vector<Field> BoundRows::Fields() const {
  std::vector<Field> fields;
  fields.reserve(columns_.size());
  for (const Column& column : columns_) fields.push_back(column.type.field);
  return fields;
}

std::size_t BoundRows::FetchNext() { return Fetch(SQL_FETCH_NEXT, 0); }

std::size_t BoundRows::FetchAt(std::int64_t first, std::size_t count) {
  statement_.SetAttribute(SQL_ATTR_ROW_ARRAY_SIZE, std::min(count, capacity_));
  return Fetch(SQL_FETCH_ABSOLUTE, first + 1);
}

std::size_t BoundRows::FetchLast() {
  statement_.SetAttribute(SQL_ATTR_ROW_ARRAY_SIZE, 1);
  return Fetch(SQL_FETCH_LAST, 0);
}

std::size_t BoundRows::Fetch(SQLSMALLINT orientation, SQLLEN offset) {
  rows_ = 0;
  if (const auto failure = TakeFailure()) throw ServerError(*failure);
  fetched_ = 0;
  try {
    const SQLRETURN code = statement_.Check(
        "SQLFetchScroll", SQLFetchScroll(statement_.Handle(), orientation, offset));
    rows_ = code == SQL_NO_DATA ? 0 : fetched_;
  } catch (const ServerError& error) {
    if (fetched_ == 0 || fetched_ > capacity_) throw;
    failure_ = error;
    rows_ = fetched_;
  }
  if (has_long_values_ && rows_ > 0) ReadLongValues();
  return rows_;
}

void BoundRows::AddRow(std::size_t row, RowBlock& block) {
  for (std::size_t field = 0; field < columns_.size(); ++field) {
    if (IsNull(row, field)) {
      block.AddNull();
    } else {
      block.AddCell(Text(row, field, scratch_));
    }
  }
  block.EndRow();
}

void BoundRows::ReadLongValues() {
  SQLUSMALLINT number = 0;
  for (Column& column : columns_) {
    ++number;
    if (column.type.in_pieces) ReadInPieces(number, column);
  }
}

void BoundRows::ReadInPieces(SQLUSMALLINT number, Column& column) {
  const bool binary = column.type.c_type == SQL_C_BINARY;
  std::string bytes;
  column.long_text.clear();
  column.indicators[0] = 0;
  for (;;) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kPieceBytes);
    SQLLEN left = 0;
    const SQLRETURN code = statement_.Check(
        "SQLGetData", SQLGetData(statement_.Handle(), number, column.type.c_type,
                                 bytes.data() + before, static_cast<SQLLEN>(kPieceBytes), &left));
    if (code == SQL_NO_DATA) {
      bytes.resize(before);
      break;
    }
    if (left == SQL_NULL_DATA) {
      column.indicators[0] = SQL_NULL_DATA;
      return;
    }
    const std::size_t room = kPieceBytes - (binary ? 0 : 1);
    const bool more = left == SQL_NO_TOTAL || static_cast<std::size_t>(left) > room;
    bytes.resize(before + (more ? room : static_cast<std::size_t>(left)));
    if (!more) break;
  }
  if (binary) {
    TextOfValue(SQL_C_BINARY, bytes, column.long_text);
  } else {
    column.long_text = std::move(bytes);
  }
}

}  // namespace dbkeeper::odbc
