// Rows of a result, fetched a block at a time into bound columns.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/session/RowBlock.h"
#include "platform/odbc/Driver.h"
#include "platform/odbc/FieldTypes.h"

namespace dbkeeper::odbc {

// Binds the columns of the statement's present result, in place of an earlier block, which keeps
// the rows it has but cannot fetch any more.
class BoundRows {
 public:
  explicit BoundRows(Statement& statement);
  BoundRows(const BoundRows&) = delete;
  BoundRows& operator=(const BoundRows&) = delete;

  std::vector<Field> Fields() const;
  // The most rows of one fetch.
  std::size_t Capacity() const { return capacity_; }

  // Fetches the rows that follow, none at the end. A failure behind some rows gives these rows;
  // it is thrown by the next fetch. Throws ServerError.
  std::size_t FetchNext();
  // Fetches up to `count` rows, at most the capacity, from row `first` (from 0) of a scrolling
  // cursor.
  std::size_t FetchAt(std::int64_t first, std::size_t count);
  // Fetches the last row; none when there are no rows.
  std::size_t FetchLast();

  // The failure that the next fetch would throw.
  std::optional<ServerError> TakeFailure() { return std::exchange(failure_, std::nullopt); }

  std::size_t Rows() const { return rows_; }
  bool IsNull(std::size_t row, std::size_t field) const {
    return columns_[field].indicators[row] == SQL_NULL_DATA;
  }
  // `scratch` may hold the text, so the view lives as long as both.
  std::string_view Text(std::size_t row, std::size_t field, std::string& scratch) const {
    const Column& column = columns_[field];
    const SQLLEN length = column.indicators[row];
    if (length == SQL_NULL_DATA) return {};
    if (column.type.in_pieces) return column.long_text;
    return TextOfValue(
        column.type.c_type,
        {column.values.get() + row * column.type.width, static_cast<std::size_t>(length)}, scratch);
  }

  // Adds a row to those of `block`.
  void AddRow(std::size_t row, RowBlock& block);

 private:
  struct Column {
    ColumnType type;
    std::unique_ptr<char[]> values;
    std::unique_ptr<SQLLEN[]> indicators;
    std::string long_text;
  };

  void Bind();
  std::size_t Fetch(SQLSMALLINT orientation, SQLLEN offset);
  void ReadLongValues();
  void ReadInPieces(SQLUSMALLINT number, Column& column);

  Statement& statement_;
  std::vector<Column> columns_;
  std::size_t capacity_ = 1;
  bool has_long_values_ = false;
  SQLULEN fetched_ = 0;
  std::size_t rows_ = 0;
  std::optional<ServerError> failure_;
  std::string scratch_;
};

}  // namespace dbkeeper::odbc
