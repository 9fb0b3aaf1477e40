// Rows of a server-side cursor, fetched in pages when they are asked for. A bounded number of pages
// is kept, so that a table of any length costs the same memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "app/session/Connection.h"
#include "app/session/RowBlock.h"
#include "app/session/RowSource.h"

namespace dbkeeper {

class CursorRows : public RowSource {
 public:
  static constexpr std::size_t kDefaultBudget = std::size_t{8} << 20;

  // Fetches the first page; throws ServerError. Pages beyond `budget` bytes are dropped, the
  // longest unused first, but never the last two.
  explicit CursorRows(std::unique_ptr<PageCursor> cursor, std::size_t budget = kDefaultBudget);
  ~CursorRows() override;

  const std::vector<Field>& Fields() const override { return fields_; }
  std::int64_t KnownRows() const override { return known_; }
  bool CountIsExact() const override { return exact_; }
  void FetchTo(std::int64_t row) override;
  void FetchLast() override;
  std::optional<std::string_view> Value(std::int64_t row, std::size_t field) override;
  void Detach() override;

 private:
  struct Page {
    std::int64_t number = 0;
    RowBlock rows;
  };

  std::int64_t PageSize() const { return static_cast<std::int64_t>(page_rows_); }
  // The page, now the latest used; null when it is not here and there is no cursor to ask.
  Page* Have(std::int64_t number);
  Page& Fetch(std::int64_t number);
  void NoteCount(std::int64_t first, std::size_t count);
  void DropOldPages();

  std::unique_ptr<PageCursor> cursor_;
  const std::vector<Field> fields_;
  const std::size_t page_rows_;
  const std::size_t budget_;
  std::list<Page> pages_;  // the latest used first
  std::size_t kept_bytes_ = 0;
  std::int64_t known_ = 0;
  bool exact_ = false;
};

}  // namespace dbkeeper
