#include "app/session/RowStore.h"

#include <algorithm>
#include <string>
#include <utility>

#include "app/support/Errors.h"
#include "app/support/Messages.h"

namespace dbkeeper {

namespace {

// A chunk is closed once it holds so much; a single row may be longer.
constexpr std::size_t kChunkBytes = std::size_t{256} << 10;
// What is kept of the chunks that were read back from the file.
constexpr std::size_t kReadBackBytes = std::size_t{16} << 20;

[[noreturn]] void FailToWrite() { throw FileError(std::string(messages::kCannotWriteRows)); }
[[noreturn]] void FailToRead() { throw FileError(std::string(messages::kCannotReadRows)); }

}  // namespace

RowStore::RowStore(std::vector<Field> fields, std::size_t budget)
    : fields_(std::move(fields)), budget_(budget) {}

RowStore::~RowStore() = default;

std::int64_t RowStore::KnownRows() const {
  const bool open = !chunks_.empty() && !chunks_.back().sealed;
  return sealed_rows_ + (open ? static_cast<std::int64_t>(chunks_.back().rows.Rows()) : 0);
}

void RowStore::ReadAll(RowReader& reader) {
  while (reader.Fill(OpenBlock(), kChunkBytes) > 0) Settle();
}

void RowStore::Append(const RowReader& reader) {
  reader.AddRow(OpenBlock());
  Settle();
}

RowBlock& RowStore::OpenBlock() {
  if (chunks_.empty() || chunks_.back().sealed) {
    chunks_.emplace_back();
    chunks_.back().first_row = sealed_rows_;
  }
  return chunks_.back().rows;
}

void RowStore::Settle() {
  if (chunks_.back().rows.Bytes() >= kChunkBytes) Seal(chunks_.back());
}

void RowStore::Seal(Chunk& chunk) {
  sealed_rows_ += static_cast<std::int64_t>(chunk.rows.Rows());
  chunk.sealed = true;
  chunk.rows.Finish();
  if (memory_used_ + chunk.rows.Size() > budget_) {
    WriteOut(chunk);
  } else {
    memory_used_ += chunk.rows.Size();
  }
}

void RowStore::WriteOut(Chunk& chunk) {
  // Without a name and for this program alone; it goes when it is closed, or with the program.
  if (file_ == nullptr) file_.reset(std::tmpfile());
  if (file_ == nullptr) FailToWrite();
  const std::string bytes = chunk.rows.Write();
  if (std::fseek(file_.get(), static_cast<long>(file_used_), SEEK_SET) != 0 ||
      std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size() ||
      std::fflush(file_.get()) != 0) {
    FailToWrite();
  }
  chunk.place = file_used_;
  chunk.bytes = bytes.size();
  file_used_ += bytes.size();
  chunk.rows = RowBlock();
}

std::size_t RowStore::ChunkOf(std::int64_t row) {
  const auto holds = [&](std::size_t index) {
    return index < chunks_.size() && chunks_[index].first_row <= row &&
           (index + 1 == chunks_.size() || chunks_[index + 1].first_row > row);
  };
  if (!holds(last_chunk_)) {
    const auto behind =
        std::upper_bound(chunks_.begin(), chunks_.end(), row,
                         [](std::int64_t wanted, const Chunk& c) { return wanted < c.first_row; });
    last_chunk_ = static_cast<std::size_t>(behind - chunks_.begin()) - 1;
  }
  return last_chunk_;
}

RowBlock& RowStore::Loaded(std::size_t index) {
  Chunk& chunk = chunks_[index];
  if (chunk.bytes == 0 || chunk.rows.Rows() > 0) return chunk.rows;
  std::string bytes(chunk.bytes, '\0');
  if (std::fseek(file_.get(), static_cast<long>(chunk.place), SEEK_SET) != 0 ||
      std::fread(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
    FailToRead();
  }
  chunk.rows = RowBlock::Read(std::move(bytes));
  read_back_.push_front(index);
  read_back_bytes_ += chunk.bytes;
  while (read_back_bytes_ > kReadBackBytes && read_back_.size() > 1) {
    Chunk& oldest = chunks_[read_back_.back()];
    read_back_bytes_ -= oldest.bytes;
    oldest.rows = RowBlock();
    read_back_.pop_back();
  }
  return chunk.rows;
}

std::optional<std::string_view> RowStore::Value(std::int64_t row, std::size_t field) {
  if (row < 0 || row >= KnownRows()) return std::nullopt;
  const std::size_t index = ChunkOf(row);
  RowBlock& block = Loaded(index);
  return block.Cell(static_cast<std::size_t>(row - chunks_[index].first_row), field);
}

}  // namespace dbkeeper
