// Writes one row of a table, or none: each statement names its row by the table's key and by every
// original value, runs in a transaction, and is taken back unless it touched exactly one row.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/session/Connection.h"
#include "app/session/RowSource.h"

namespace dbkeeper {

// A row being changed: what it was, what it shall be, and which values a person gave.
struct RowChange {
  RowValues before;  // empty for a new row
  RowValues after;
  std::vector<bool> assigned;
};

class RowEditor {
 public:
  // Prepares to write the rows of a result of `sql`, whose fields are `fields`; asks the server for
  // the columns and the key of its table in the connection's present database. Where the result
  // cannot be written back, Refusal() says why. Throws ServerError.
  RowEditor(Connection& connection, const std::string& sql, const std::vector<Field>& fields);

  // In plain words; empty when rows can be written.
  const std::string& Refusal() const { return refusal_; }
  // False for a column that the server fills itself.
  bool Writable(std::size_t field) const;

  // Each writes one row or throws: ServerError, or RowError when another number of rows than one
  // would be touched. Insert and Update give the row as the server holds it now.
  RowValues Insert(const RowChange& change);
  RowValues Update(const RowChange& change);
  void Delete(const RowValues& before);

 private:
  struct Column {
    std::string name;
    std::string type;
    bool writable = false;
    bool identity = false;
    bool key = false;
    bool compared = false;  // among the original values that name a row
  };

  void ReadColumns();
  void ReadKey();
  std::string WhereOriginal(const RowValues& before) const;

  Connection& connection_;
  std::string table_;  // with its database and owner
  std::vector<Column> columns_;
  std::string refusal_;
};

// A row could not be written though the server raised no error.
class RowError : public Error {
 public:
  using Error::Error;
  const char* ClassName() const override { return "RowError"; }
};

}  // namespace dbkeeper
