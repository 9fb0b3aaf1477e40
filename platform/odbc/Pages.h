// Pages of one select behind a server-side cursor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "app/session/Connection.h"
#include "platform/odbc/BoundRows.h"
#include "platform/odbc/Driver.h"

namespace dbkeeper::odbc {

// Nothing of it is left on the wire between two fetches.
class Pages : public PageCursor {
 public:
  // Takes a statement that was to open a cursor and stands on a result.
  explicit Pages(std::shared_ptr<Statement> statement);

  // Whether the server made the cursor. What it cannot make one of, such as a batch, it runs as a
  // plain result, and the driver does not say so before the first fetch: the first rows are fetched
  // here and kept for whoever asks for them first.
  bool IsReallyCursor();

  const std::vector<Field>& Fields() const override { return fields_; }
  std::size_t Fetch(std::int64_t first, std::size_t count, RowBlock& block) override;
  std::int64_t CountRows() override;

 private:
  // Fetches up to `count` rows into rows_; gives how many there are to take.
  std::size_t FetchAt(std::int64_t first, std::size_t count);
  // Called before each fetch.
  void UseWire();

  std::shared_ptr<Statement> statement_;
  BoundRows rows_;
  std::vector<Field> fields_;
  bool first_rows_fetched_ = false;
};

}  // namespace dbkeeper::odbc
