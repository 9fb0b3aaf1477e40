#include "platform/odbc/RowStore.h"

#include <cstring>

namespace dbkeeper::odbc {

namespace {

constexpr std::size_t kPieceBytes = 256 << 10;
constexpr std::uint32_t kNull = UINT32_MAX;
constexpr std::size_t kLengthBytes = sizeof(std::uint32_t);

}  // namespace

std::string& RowStore::PieceFor(std::size_t bytes) {
  // A row is never split: a new piece is begun before its first cell only.
  const bool full = pieces_.empty() || pieces_.back().bytes.size() + bytes > kPieceBytes;
  if (full && cells_of_row_ == 0) {
    pieces_.emplace_back();
    pieces_.back().bytes.reserve(kPieceBytes);
  }
  return pieces_.back().bytes;
}

void RowStore::CountCell() {
  if (++cells_of_row_ < cells_.size()) return;
  cells_of_row_ = 0;
  ++pieces_.back().rows;
}

void RowStore::AddNull() {
  PieceFor(kLengthBytes).append(reinterpret_cast<const char*>(&kNull), kLengthBytes);
  CountCell();
}

void RowStore::Add(std::string_view text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  std::string& piece = PieceFor(kLengthBytes + text.size());
  piece.append(reinterpret_cast<const char*>(&length), kLengthBytes);
  piece.append(text);
  CountCell();
}

bool RowStore::Next() {
  if (pieces_.empty()) return false;
  if (rows_read_ == pieces_.front().rows) {
    pieces_.pop_front();
    rows_read_ = 0;
    position_ = 0;
    if (pieces_.empty()) return false;
  }
  const std::string& bytes = pieces_.front().bytes;
  for (std::string_view& cell : cells_) {
    std::uint32_t length = 0;
    std::memcpy(&length, bytes.data() + position_, kLengthBytes);
    position_ += kLengthBytes;
    cell = {};
    if (length == kNull) continue;
    cell = std::string_view(bytes).substr(position_, length);
    position_ += length;
  }
  ++rows_read_;
  return true;
}

}  // namespace dbkeeper::odbc
