// What a person has changed in rows that stay as they were read: rows given other values, rows
// taken out, rows put in between.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "app/session/RowSource.h"

namespace dbkeeper {

class RowOverlay {
 public:
  // Where a shown row comes from: a row of the source, or values kept here, which go first.
  struct Place {
    std::int64_t source_row = -1;  // -1 for a row put in
    const RowValues* values = nullptr;
  };

  void Clear() { marks_.clear(); }
  // How many more rows are shown than the source has.
  std::int64_t Extra() const;
  Place At(std::int64_t row) const;

  void Replace(std::int64_t row, RowValues values);
  // The row becomes `row`, and those from there on move down.
  void Insert(std::int64_t row, RowValues values);
  void Remove(std::int64_t row);

 private:
  // What happens at one row of the source.
  struct Mark {
    std::vector<RowValues> put_in_before;
    bool removed = false;
    std::optional<RowValues> replaced;
  };
  struct Found {
    std::int64_t source_row = 0;  // the one at or behind the shown row
    std::size_t put_in = 0;       // with `is_put_in`, which of the rows put in before it
    bool is_put_in = false;
  };
  Found Find(std::int64_t row) const;

  std::map<std::int64_t, Mark> marks_;
};

}  // namespace dbkeeper
