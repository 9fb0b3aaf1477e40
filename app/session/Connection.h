// The port to a database server: one connection, statements on it, and their rows. The one real
// implementation is platform/odbc; the session above it is the only caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/RowBlock.h"
#include "app/support/Errors.h"

namespace dbkeeper {

// A message of the server, an error or not, with the server's own words apart from ours.
struct ServerMessage {
  int number = 0;
  int state = 0;
  int severity = 0;  // 0 where the driver does not tell
  int line = 0;      // 0 where there is none
  std::string text = {};
};

// A statement or a connection failed. Several messages of one failure stay together, in the
// server's order; what() joins their texts by CR LF.
class ServerError : public Error {
 public:
  explicit ServerError(std::vector<ServerMessage> messages);
  const char* ClassName() const override { return "ServerError"; }
  const std::vector<ServerMessage>& Messages() const { return messages_; }
  // Numbers, levels, states and lines of the messages that have them, a line each.
  std::string Places() const;
  // The first message's number.
  int Number() const { return messages_.empty() ? 0 : messages_.front().number; }

 private:
  std::vector<ServerMessage> messages_;
};

// The failure of a statement that held a secret. It is shown as it is, but the log gets the
// server's words without what they quote, which may be a part of the secret.
class ConfidentialError : public ServerError {
 public:
  explicit ConfidentialError(const ServerError& error) : ServerError(error) {}
  std::string LogText() const override;
};

enum class FieldKind { kText, kInteger, kDecimal, kReal, kBit, kDateTime, kBinary, kGuid };

struct Field {
  std::string name = {};
  FieldKind kind = FieldKind::kText;
  std::string type_name = {};  // the server's, such as "varchar"
  std::size_t size = 0;        // characters, digits or bytes
  int scale = 0;
  bool nullable = true;
  bool long_value = false;  // text, ntext, image
};

// Rows read in order. Texts are UTF-8; numbers are exact decimal texts with ".", dates
// "yyyy-mm-dd hh:mm:ss.fff", bits "0" or "1", binary upper-case hexadecimal without a prefix.
class RowReader {
 public:
  virtual ~RowReader() = default;
  virtual const std::vector<Field>& Fields() const = 0;
  // Goes to the next row; false at the end. Throws ServerError.
  virtual bool Next() = 0;
  virtual bool IsNull(std::size_t field) const = 0;
  // The present row's value, empty for a null; lives until the next move.
  virtual std::string_view Text(std::size_t field) const = 0;
  // Adds the rows that follow to `block` until it holds `bytes` or the result ends; gives how many
  // there were, none at the end. Throws ServerError; the rows before a failure have been added.
  virtual std::size_t Fill(RowBlock& block, std::size_t bytes);
  // Adds the present row to `block`.
  void AddRow(RowBlock& block) const;
  // Goes to the next result set of the batch; false when there is none. Rows left unread are
  // skipped.
  virtual bool NextResult() = 0;
};

// Rows of one select behind a server-side cursor, fetched in pages by their place (from 0). A row
// that is deleted while the cursor is open keeps its place, with nulls in it.
class PageCursor {
 public:
  virtual ~PageCursor() = default;
  virtual const std::vector<Field>& Fields() const = 0;
  // Adds up to `count` rows from row `first` on to `block`; gives how many there were. Throws
  // ServerError.
  virtual std::size_t Fetch(std::int64_t first, std::size_t count, RowBlock& block) = 0;
  // Asks the server for the number of rows. Throws ServerError.
  virtual std::int64_t CountRows() = 0;
};

// The rows of a statement that was to open a cursor: behind one, or read in order where the server
// makes none. Neither when the statement gives no rows.
struct ScrolledRows {
  std::unique_ptr<PageCursor> cursor = nullptr;
  std::unique_ptr<RowReader> reader = nullptr;
};

class Connection {
 public:
  virtual ~Connection() = default;
  // Takes an OLE DB style connection string. Throws ServerError; a failed open leaves it closed.
  virtual void Open(const std::string& connection_string) = 0;
  virtual void Close() = 0;
  // False also once the server or the network has been found gone.
  virtual bool IsOpen() const = 0;
  // Runs a batch up to its first result set; null when it gives none. Throws ServerError.
  virtual std::unique_ptr<RowReader> Query(const std::string& sql) = 0;
  // Runs a batch to its end; gives the rows that its last counting statement affected, or -1.
  virtual std::int64_t Execute(const std::string& sql) = 0;
  // Opens a scrolling cursor where the server makes one. Throws ServerError.
  virtual ScrolledRows OpenCursor(const std::string& sql) = 0;
  // The informational messages since the last call, in the server's order.
  virtual std::vector<ServerMessage> TakeMessages() = 0;
};

}  // namespace dbkeeper
