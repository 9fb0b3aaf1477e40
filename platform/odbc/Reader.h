// The rows of a batch, straight from the wire or, once another statement wanted it, from a store.
#pragma once

#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/RowStore.h"
#include "platform/odbc/BoundRows.h"
#include "platform/odbc/Driver.h"

namespace dbkeeper::odbc {

class Reader : public RowReader, public WireUser {
 public:
  // Takes a statement that stands on a result with rows, and the wire.
  explicit Reader(std::shared_ptr<Statement> statement);
  // Cancels what is left of the batch.
  ~Reader() override;

  const std::vector<Field>& Fields() const override { return fields_; }
  bool Next() override;
  bool IsNull(std::size_t field) const override;
  std::string_view Text(std::size_t field) const override;
  std::size_t Fill(RowBlock& block, std::size_t bytes) override;
  bool NextResult() override;

  void LeaveWire() override;

 private:
  enum class Place { kBeforeRows, kOnWireRow, kOnKeptRow, kBehindRows };
  // What was left of one result when the wire was left, and the failures behind its rows.
  struct KeptResult {
    explicit KeptResult(const std::vector<Field>& fields) : rows(fields) {}

    RowStore rows;
    std::deque<std::exception_ptr> failures;
  };

  // Reads what `other`, on the same statement, has not fetched yet.
  Reader(const Reader& other, Place place);

  void BeginResult();
  bool NextOnWire();
  bool NextKept();
  bool NextResultKept();
  void ThrowKeptFailure();
  std::optional<std::string_view> KeptValue(std::size_t field) const;
  // Runs the batch on to its next result with rows; false at its end. Throws ServerError, and can
  // be called again then.
  bool GoToRows();
  void RequireRow() const;

  std::shared_ptr<Statement> statement_;
  std::vector<Field> fields_;
  std::unique_ptr<BoundRows> block_;
  std::size_t row_ = 0;  // in the block
  Place place_ = Place::kBeforeRows;
  bool on_next_result_ = false;  // the statement stands on the next result with rows already
  bool batch_ended_ = false;
  bool left_wire_ = false;
  mutable std::deque<KeptResult> kept_;  // the present result in front
  std::int64_t kept_row_ = -1;
  mutable std::vector<std::string> scratch_;
};

}  // namespace dbkeeper::odbc
