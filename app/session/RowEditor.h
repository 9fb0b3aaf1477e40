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
#include "app/session/RowSource.h"
#include "app/session/SelectSource.h"

namespace dbkeeper {

// A row could not be written though the server raised no error.
class RowError : public Error {
 public:
  using Error::Error;
  const char* ClassName() const override { return "RowError"; }
};

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
  // cannot be written back, Refusal() says why. Throws ServerError.
  RowEditor(Connection& connection, std::string_view sql, const std::vector<Field>& fields);

  // In plain words; empty when rows can be written.
  const std::string& Refusal() const { return refusal_; }
  // False for a column that is computed, or that the server fills itself.
  bool Writable(std::size_t field) const { return columns_[field].writable; }

  // Each writes one row or throws: ServerError, or RowError when none or several would be touched,
  // or when the server cannot keep a text as it is. Insert and Update give the row as the server
  // holds it now, as far as it can be named.
  RowValues Insert(const RowChange& change);
  RowValues Update(const RowChange& change);
  void Delete(const RowValues& before);

 private:
  struct Column {
    Field field;
    std::string name;  // in the table; empty for a computed expression
    bool writable = false;
    bool identity = false;
    bool in_key = false;
    bool comparable = false;  // the server can compare its values
  };

  void ReadTable(const SelectSource& source);
  void MatchColumns(const SelectSource& source);
  void ReadKey(const std::string& catalog, const std::string& table_id);
  bool HasKey() const;
  Column* ColumnNamed(std::string_view name);

  std::string Condition(const Column& column, const std::optional<std::string>& value) const;
  std::string WhereOriginal(const RowValues& before) const;
  // Names the row once it has been written; empty when nothing does.
  std::string WhereNow(const RowChange& change) const;
  // What the condition behind the table's name selects, two rows at most; computed expressions are
  // nulls.
  std::vector<RowValues> ReadRows(const std::string& condition);
  // Locks the row; throws RowError when it is not what it was, to the letter.
  void LockUnchanged(const RowValues& before);
  RowValues ReadBack(const RowChange& change);
  // Runs a statement; gives the identity value that the session was given last. Throws RowError
  // unless it touched one row.
  std::string RequireOneRow(const std::string& statement);

  Connection& connection_;
  std::string table_;  // with its database and owner, so that a later "use" does not change it
  std::vector<Column> columns_;
  std::string refusal_;
};

}  // namespace dbkeeper
