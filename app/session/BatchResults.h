// The answers to a batch of the program's own, told apart by the name of their first field. What
// else comes between them, from triggers or settings of the connection, is skipped.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"
#include "app/session/RowSource.h"

namespace dbkeeper {

class BatchResults {
 public:
  // Runs the batch up to its first result. Throws ServerError.
  BatchResults(Connection& connection, const std::string& sql);

  // Adds to `rows` those of the next result that has `fields` fields, `marker` the first of them;
  // false when the batch ends without it. Throws ServerError; the rows before a failure are there.
  bool Take(std::string_view marker, std::size_t fields, std::vector<RowValues>& rows);
  // Runs the batch to its end. Throws ServerError.
  void Finish();

 private:
  // Goes to the next result, at first to the first one; false at the end.
  bool GoOn();

  std::unique_ptr<RowReader> reader_;
  bool on_first_ = true;
};

}  // namespace dbkeeper
