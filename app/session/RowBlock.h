// A run of rows in one piece of memory: each cell its length and its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper {

class RowBlock {
 public:
  RowBlock() = default;

  // The cells of a row are added in order, then the row is ended. A block whose rows begin behind
  // 4 GiB is refused with std::length_error.
  void AddNull() { AddLength(0); }
  void AddCell(std::string_view text) {
    AddLength(text.size() + 1);
    bytes_.append(text);
  }
  void EndRow();

  std::size_t Rows() const { return starts_.size(); }
  // A cell, alive until the block changes or goes; absence is a null. Reading along a row, in
  // either direction, costs no more than the row.
  std::optional<std::string_view> Cell(std::size_t row, std::size_t column);

  std::size_t Bytes() const { return bytes_.size(); }
  // The memory that it takes.
  std::size_t Size() const;
  // Gives back the room kept for growth; no row is added afterwards.
  void Finish();

  // As one text and back. Read throws FileError when the text is no block.
  std::string Write() const;
  static RowBlock Read(std::string bytes);

 private:
  void AddLength(std::uint64_t length);

  std::string bytes_;
  std::vector<std::uint32_t> starts_;  // where each row begins
  std::size_t open_row_ = 0;           // where the row being added begins
  // The cells of the row read last.
  std::size_t parsed_row_ = SIZE_MAX;
  std::vector<std::optional<std::string_view>> parsed_;
};

}  // namespace dbkeeper
