// Writes one row of a table, or none: each statement names its row by the table's key and by every
// original value, runs in a transaction that has locked the row as it was read, and is taken back
// unless it touched exactly one row.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"
#include "app/session/EditedTable.h"
#include "app/session/RowSource.h"

namespace dbkeeper {

// A row being changed: what it was, what it shall be, and which values a person gave.
struct RowChange {
  RowValues before;  // nulls for a new row
  RowValues after;
  std::vector<bool> assigned;
};

class RowEditor {
 public:
  // Prepares to write the rows of a result of `sql`, whose fields are `fields`; asks the server for
  // the columns and the key of its table in the connection's present database. Where the result
  // cannot be written back, Refusal() says why. Throws ServerError, and RowError when the answer
  // cannot be read.
  RowEditor(Connection& connection, std::string_view sql, const std::vector<Field>& fields);

  // In plain words; empty when rows can be written.
  const std::string& Refusal() const { return table_.refusal; }
  // False for a column that is computed, or that the server fills itself.
  bool Writable(std::size_t field) const { return table_.columns[field].writable; }

  // Each writes one row in two batches or throws: ServerError, or RowError when none or several
  // would be touched, or when the server cannot keep a text as it is. Insert and Update give the
  // row as the server holds it now, as far as it can be named.
  RowValues Insert(const RowChange& change);
  RowValues Update(const RowChange& change);
  void Delete(const RowValues& before);

 private:
  std::string Condition(const EditedColumn& column, const std::optional<std::string>& value) const;
  std::string WhereOriginal(const RowValues& before) const;
  // Names the row once it has been written; empty when nothing does.
  std::string WhereNow(const RowChange& change) const;
  // Selects what the condition behind the table's name names, two rows at most, marked by the name
  // of the first field; computed expressions are nulls.
  std::string Select(const std::string& marker, const std::string& condition) const;
  // Throws RowError when the row is not what it was, to the letter.
  void RequireUnchanged(const RowValues& before, const std::vector<RowValues>& now) const;
  RowValues StoredRow(const RowChange& change, const std::vector<RowValues>& now) const;

  Connection& connection_;
  EditedTable table_;
};

}  // namespace dbkeeper
