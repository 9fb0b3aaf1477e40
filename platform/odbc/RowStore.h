// Rows kept in memory, read once and in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper::odbc {

// Each row is packed behind the other in pieces of some size, and a piece goes when it was read.
class RowStore {
 public:
  explicit RowStore(std::size_t fields) : cells_(fields) {}

  // The cells of one row after the other, row by row.
  void AddNull();
  void Add(std::string_view text);

  // Goes to the next row; false at the end. Only when all rows have been added.
  bool Next();
  bool IsNull(std::size_t field) const { return cells_[field].data() == nullptr; }
  // The present row's value; lives until the next move.
  std::string_view Text(std::size_t field) const { return cells_[field]; }

 private:
  std::string& PieceFor(std::size_t bytes);
  void CountCell();

  struct Piece {
    std::string bytes;
    std::size_t rows = 0;
  };

  std::deque<Piece> pieces_;
  std::size_t cells_of_row_ = 0;
  std::size_t position_ = 0;
  std::size_t rows_read_ = 0;
  std::vector<std::string_view> cells_;
};

}  // namespace dbkeeper::odbc
