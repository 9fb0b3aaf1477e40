// Rows by number, wherever they are kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"

namespace dbkeeper {

// The values of one row in the form of the connection's port; absence is a null.
using RowValues = std::vector<std::optional<std::string>>;

class RowSource {
 public:
  RowSource() = default;
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;
  virtual ~RowSource() = default;

  virtual const std::vector<Field>& Fields() const = 0;
  // The rows known so far, and whether there are no others.
  virtual std::int64_t KnownRows() const = 0;
  virtual bool CountIsExact() const = 0;
  // Makes a row known; where there is no such row, all rows. Throws ServerError.
  virtual void FetchTo(std::int64_t row) = 0;
  // Makes the last row known, and with it the exact count. Throws ServerError.
  virtual void FetchLast() = 0;
  // A value of a known row in the form of the port, alive until another row is asked for; absence
  // is a null. Throws ServerError or FileError when the row cannot be read.
  virtual std::optional<std::string_view> Value(std::int64_t row, std::size_t field) = 0;
  // The server is asked for nothing any more: rows that are kept here stay readable, others are
  // read as nulls.
  virtual void Detach() = 0;
};

}  // namespace dbkeeper
