// Turns what the engine tells into the tokens of an answer.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "server/types/result_sink.h"
#include "server/wire/bytes.h"
#include "server/wire/packet.h"
#include "server/wire/tokens.h"

namespace dbkeeper::server {

// What an answer is written with; all outlive the sink.
struct AnswerContext {
  MessageWriter& writer;
  const std::string& server_name;
  // Set from another thread when the client does not want the rest.
  const std::atomic<bool>& cancelled;
};

// The answer to one request. Begin it, let the engine tell, and end it with one of the Finish
// calls.
class WireSink : public ResultSink {
 public:
  enum class Kind { kBatch, kProcedure };

  WireSink(const AnswerContext& context, Kind kind) : context_(context), kind_(kind) {}

  void OnColumns(const std::vector<ResultColumn>& columns) override;
  bool OnRow(const RowView& row) override;
  void OnMissingRow() override;
  void OnStatementEnd(const StatementEnd& end) override;
  void OnMessage(const ServerMessage& message) override;
  void OnDatabaseChanged(const std::string& from, const std::string& to) override;
  void OnReturnStatus(int status) override;

  // Output parameters stand behind the return status; a procedure that told none gets `status`.
  void ReturnStatusOnce(int status);
  void ReturnInteger(const std::string& name, std::int64_t value);

  // From here on every row of a result ends in a column that tells whether the row is there, as the
  // rows of a cursor do.
  void AddRowStatus() { row_status_ = true; }

  // Whether an error was told so far.
  bool failed() const { return failed_; }

  // Ends the answer and sends it. More of them may come in one message, one for each call of a
  // batch of remote procedure calls; the last one sends it.
  enum class Position { kLast, kMoreFollow };
  void Finish(Position position = Position::kLast);

 private:
  void ReleaseDone();
  void AppendRowOf(const RowView& row, RowStatus status);
  void Flush();

  const AnswerContext context_;
  const Kind kind_;
  std::vector<ResultColumn> columns_;
  ByteWriter tokens_;
  bool failed_ = false;
  bool error_since_done_ = false;
  bool status_told_ = false;
  bool in_rows_ = false;
  bool row_status_ = false;

  // The end of a statement is held back until it is known whether something follows.
  std::optional<Done> held_;
};

}  // namespace dbkeeper::server
