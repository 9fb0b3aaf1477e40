// What running a batch gives, as a stream of events: the engine tells, the wire (or a test)
// listens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "server/types/messages.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

struct ResultColumn {
  std::string name;
  SqlType type;
  bool identity = false;
  bool updatable = false;  // a plain column of one base table
  std::string base_table;  // empty for an expression
};

// The present row; cells are as sql_type.h lays them down. Views live until the next row.
class RowView {
 public:
  virtual ~RowView() = default;
  virtual bool IsNull(std::size_t column) const = 0;
  virtual std::int64_t Integer(std::size_t column) const = 0;
  virtual double Real(std::size_t column) const = 0;
  virtual std::string_view Bytes(std::size_t column) const = 0;  // text or blob
};

// How one statement of a batch ended.
struct StatementEnd {
  std::int64_t rows = -1;  // rows sent or affected; -1: the statement counts none
  bool is_select = false;
  bool failed = false;
};

class ResultSink {
 public:
  virtual ~ResultSink() = default;
  virtual void OnColumns(const std::vector<ResultColumn>& columns) = 0;
  // False asks the engine to stop the statement (the client sent an attention or is gone).
  virtual bool OnRow(const RowView& row) = 0;
  // A row of a cursor's page has been deleted since the cursor was opened; its place stays.
  virtual void OnMissingRow() {}
  virtual void OnStatementEnd(const StatementEnd& end) = 0;
  virtual void OnMessage(const ServerMessage& message) = 0;
  virtual void OnDatabaseChanged(const std::string& from, const std::string& to) = 0;
  // An output parameter or the return status of a procedure called as an RPC.
  virtual void OnReturnStatus(int status) = 0;
};

// Keeps nothing of what it is told.
class QuietSink : public ResultSink {
 public:
  void OnColumns(const std::vector<ResultColumn>&) override {}
  bool OnRow(const RowView&) override { return true; }
  void OnStatementEnd(const StatementEnd&) override {}
  void OnMessage(const ServerMessage&) override {}
  void OnDatabaseChanged(const std::string&, const std::string&) override {}
  void OnReturnStatus(int) override {}
};

}  // namespace dbkeeper::server
