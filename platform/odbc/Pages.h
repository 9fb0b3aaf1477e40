// Pages of one select: behind a server-side cursor, or of a result that can only be read forward.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/odbc/Driver.h"
#include "platform/odbc/RowBlock.h"

namespace dbkeeper::odbc {

// The cells of one page, in one piece of memory.
class Page {
 public:
  explicit Page(std::size_t fields) : fields_(fields) {}

  void Clear();
  void AddNull() { cells_.push_back({.start = 0, .length = 0, .is_null = true}); }
  void Add(std::string_view text);

  std::size_t Rows() const { return cells_.size() / fields_; }
  bool IsNull(std::size_t row, std::size_t field) const { return CellAt(row, field).is_null; }
  std::string_view Text(std::size_t row, std::size_t field) const;

 private:
  struct Cell {
    std::size_t start;
    std::size_t length;
    bool is_null;
  };
  // Throws SessionError for a row or field that the page does not have.
  const Cell& CellAt(std::size_t row, std::size_t field) const;

  std::size_t fields_;
  std::string text_;
  std::vector<Cell> cells_;
};

// A cursor of the server. Nothing of it is left on the wire between two fetches.
class ScrollingPages : public PageCursor {
 public:
  // Takes a statement that was to open a cursor and stands on a result.
  explicit ScrollingPages(std::shared_ptr<Statement> statement);

  // Whether the server made the cursor. What it cannot make one of, such as a batch, it runs as a
  // plain result, and the driver does not say so before the first fetch.
  bool IsReallyCursor();

  const std::vector<Field>& Fields() const override { return fields_; }
  bool Scrolls() const override { return true; }
  std::int64_t RowCount() const override { return row_count_; }
  std::size_t Fetch(std::int64_t first, std::size_t count) override;
  std::int64_t FetchLast(std::size_t count) override;
  std::size_t PageRows() const override { return page_.Rows(); }
  bool IsNull(std::size_t row, std::size_t field) const override {
    return page_.IsNull(row, field);
  }
  std::string_view Text(std::size_t row, std::size_t field) const override {
    return page_.Text(row, field);
  }

 private:
  void AddBlock();
  // Called before each fetch.
  void UseWire();

  std::shared_ptr<Statement> statement_;
  RowBlock block_;
  std::vector<Field> fields_;
  Page page_;
  std::int64_t row_count_ = -1;
};

// A plain result. A page that lies before one already read cannot be fetched.
class ForwardPages : public PageCursor {
 public:
  explicit ForwardPages(std::unique_ptr<RowReader> reader);

  const std::vector<Field>& Fields() const override { return reader_->Fields(); }
  bool Scrolls() const override { return false; }
  std::int64_t RowCount() const override { return ended_ ? position_ : -1; }
  std::size_t Fetch(std::int64_t first, std::size_t count) override;
  std::int64_t FetchLast(std::size_t count) override;
  std::size_t PageRows() const override { return page_.Rows(); }
  bool IsNull(std::size_t row, std::size_t field) const override {
    return page_.IsNull(row, field);
  }
  std::string_view Text(std::size_t row, std::size_t field) const override {
    return page_.Text(row, field);
  }

 private:
  bool ReadRow(Page& page);

  std::unique_ptr<RowReader> reader_;
  Page page_;
  std::int64_t position_ = 0;  // rows read so far
  bool ended_ = false;
};

}  // namespace dbkeeper::odbc
