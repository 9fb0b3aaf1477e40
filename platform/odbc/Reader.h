// The rows of a batch, straight from the wire or, once another statement wanted it, from memory.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/odbc/Driver.h"
#include "platform/odbc/RowBlock.h"
#include "platform/odbc/RowStore.h"

namespace dbkeeper::odbc {

class Reader : public RowReader, public WireUser {
 public:
  // Takes a statement that stands on a result with rows, and the wire.
  explicit Reader(std::unique_ptr<Statement> statement);
  // Cancels what is left of the batch.
  ~Reader() override;

  const std::vector<Field>& Fields() const override { return fields_; }
  bool Next() override;
  bool IsNull(std::size_t field) const override;
  std::string_view Text(std::size_t field) const override;
  bool NextResult() override;

  void LeaveWire() override;

 private:
  // What is left of one result, kept in memory, and the failures behind its rows.
  struct KeptResult {
    std::vector<Field> fields;
    RowStore rows;
    std::deque<ServerError> failures;
  };
  enum class Place { kBeforeRows, kOnWireRow, kOnKeptRow, kBehindRows };

  void BeginResult();
  bool NextOnWire();
  bool NextKept();
  bool NextResultKept();
  void ThrowKeptFailure();
  // Runs the batch on to its next result with rows; false at its end. Throws ServerError, and can
  // be called again then.
  bool GoToRows();
  void KeepRows(RowBlock& block, KeptResult& kept);
  void KeepFollowingResults();
  void RequireRow() const;

  std::unique_ptr<Statement> statement_;
  std::vector<Field> fields_;
  std::unique_ptr<RowBlock> block_;
  std::size_t row_ = 0;
  Place place_ = Place::kBeforeRows;
  bool on_next_result_ = false;  // the statement stands on the next result with rows already
  bool batch_ended_ = false;     // on the wire
  bool left_wire_ = false;
  std::deque<KeptResult> kept_;  // the present result in front
  mutable std::vector<std::string> scratch_;
};

}  // namespace dbkeeper::odbc
