// A whole result, read once and kept compactly: in memory up to a budget, beyond it in a temporary
// file that nobody else can open and that ends with the store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <list>
#include <memory>
#include <vector>

#include "app/session/RowBlock.h"
#include "app/session/RowSource.h"

namespace dbkeeper {

class RowStore : public RowSource {
 public:
  static constexpr std::size_t kDefaultBudget = std::size_t{64} << 20;

  // `budget` bytes of rows are kept in memory.
  explicit RowStore(std::vector<Field> fields, std::size_t budget = kDefaultBudget);
  ~RowStore() override;

  // Reads the rows that are left in the reader's present result. Throws ServerError, or FileError
  // when the temporary file cannot be written; the rows before a failure are there.
  void ReadAll(RowReader& reader);
  // The reader's present row.
  void Append(const RowReader& reader);

  std::size_t MemoryUsed() const { return memory_used_; }
  std::uint64_t FileUsed() const { return file_used_; }

  const std::vector<Field>& Fields() const override { return fields_; }
  std::int64_t KnownRows() const override;
  bool CountIsExact() const override { return true; }
  void FetchTo(std::int64_t) override {}
  void FetchLast() override {}
  std::optional<std::string_view> Value(std::int64_t row, std::size_t field) override;
  void Detach() override {}

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  // Rows next to each other, either in memory or at a place in the file.
  struct Chunk {
    std::int64_t first_row = 0;
    RowBlock rows;
    bool sealed = false;
    std::uint64_t place = 0;
    std::size_t bytes = 0;  // in the file; 0 when it is kept in memory
  };

  RowBlock& OpenBlock();
  // Closes the open chunk once it is full.
  void Settle();
  void Seal(Chunk& chunk);
  void WriteOut(Chunk& chunk);
  std::size_t ChunkOf(std::int64_t row);
  RowBlock& Loaded(std::size_t index);

  const std::vector<Field> fields_;
  const std::size_t budget_;
  std::deque<Chunk> chunks_;  // the last one is open for more rows
  std::int64_t sealed_rows_ = 0;
  std::size_t memory_used_ = 0;
  std::uint64_t file_used_ = 0;
  std::unique_ptr<std::FILE, CloseFile> file_;
  std::size_t last_chunk_ = 0;        // where the row asked for last stands
  std::list<std::size_t> read_back_;  // chunks of the file now in memory, the newest first
  std::size_t read_back_bytes_ = 0;
};

}  // namespace dbkeeper
