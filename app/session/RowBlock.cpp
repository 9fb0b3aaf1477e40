#include "app/session/RowBlock.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include "app/support/Errors.h"
#include "app/support/Messages.h"

namespace dbkeeper {

namespace {

// Seven bits a byte, the lowest first; the top bit says that more follow.
std::uint64_t ReadLength(std::string_view bytes, std::size_t& at) {
  std::uint64_t length = 0;
  for (int shift = 0; shift < 64 && at < bytes.size(); shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes[at++]);
    length |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
    if (byte < 0x80) break;
  }
  return length;
}

}  // namespace

void RowBlock::AddLength(std::uint64_t length) {
  parsed_row_ = SIZE_MAX;
  while (length >= 0x80) {
    bytes_ += static_cast<char>(0x80 | (length & 0x7F));
    length >>= 7;
  }
  bytes_ += static_cast<char>(length);
}

void RowBlock::EndRow() {
  if (open_row_ > UINT32_MAX) throw std::length_error("rows too long");
  starts_.push_back(static_cast<std::uint32_t>(open_row_));
  open_row_ = bytes_.size();
}

std::optional<std::string_view> RowBlock::Cell(std::size_t row, std::size_t column) {
  if (row >= starts_.size()) return std::nullopt;
  if (row != parsed_row_) {
    parsed_.clear();
    const std::string_view bytes = bytes_;
    const std::size_t end = row + 1 < starts_.size() ? starts_[row + 1] : open_row_;
    for (std::size_t at = starts_[row]; at < end;) {
      const std::uint64_t length = ReadLength(bytes, at);
      if (length == 0) {
        parsed_.emplace_back();
        continue;
      }
      parsed_.emplace_back(bytes.substr(at, length - 1));
      at += length - 1;
    }
    parsed_row_ = row;
  }
  return column < parsed_.size() ? parsed_[column] : std::nullopt;
}

std::size_t RowBlock::Size() const {
  return bytes_.capacity() + starts_.capacity() * sizeof(starts_[0]);
}

void RowBlock::Finish() {
  bytes_.shrink_to_fit();
  starts_.shrink_to_fit();
  parsed_row_ = SIZE_MAX;
}

std::string RowBlock::Write() const {
  const std::uint64_t rows = starts_.size();
  std::string written(sizeof(rows) + rows * sizeof(starts_[0]), '\0');
  std::memcpy(written.data(), &rows, sizeof(rows));
  if (rows > 0) {
    std::memcpy(written.data() + sizeof(rows), starts_.data(), rows * sizeof(starts_[0]));
  }
  return written.append(bytes_, 0, open_row_);
}

RowBlock RowBlock::Read(std::string bytes) {
  RowBlock block;
  std::uint64_t rows = 0;
  const auto fail = [] { throw FileError(std::string(messages::kCannotReadRows)); };
  if (bytes.size() < sizeof(rows)) fail();
  std::memcpy(&rows, bytes.data(), sizeof(rows));
  const std::size_t room = bytes.size() - sizeof(rows);
  if (rows > room / sizeof(block.starts_[0])) fail();
  const std::size_t head = sizeof(rows) + rows * sizeof(block.starts_[0]);
  block.starts_.resize(rows);
  if (rows > 0) {
    std::memcpy(block.starts_.data(), bytes.data() + sizeof(rows), head - sizeof(rows));
  }
  bytes.erase(0, head);
  block.bytes_ = std::move(bytes);
  block.open_row_ = block.bytes_.size();
  return block;
}

}  // namespace dbkeeper
