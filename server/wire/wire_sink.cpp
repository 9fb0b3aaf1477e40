#include "server/wire/wire_sink.h"

#include <algorithm>
#include <utility>

#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

constexpr std::uint16_t kCommandSelect = 0xC1;
// Tokens gather up to this size before they go to the packets.
constexpr std::size_t kFlushAt = 4096;

// Nulls in the place of a row that is gone.
class NoRow : public RowView {
 public:
  bool IsNull(std::size_t) const override { return true; }
  std::int64_t Integer(std::size_t) const override { return 0; }
  double Real(std::size_t) const override { return 0; }
  std::string_view Bytes(std::size_t) const override { return {}; }
};

}  // namespace

void WireSink::OnColumns(const std::vector<ResultColumn>& columns) {
  ReleaseDone();
  columns_ = columns;
  in_rows_ = true;
  if (!row_status_) return AppendColumns(columns_, tokens_);
  std::vector<ResultColumn> with_status = columns;
  with_status.emplace_back().name = "ROWSTAT";
  AppendColumns(with_status, tokens_);
}

bool WireSink::OnRow(const RowView& row) {
  if (context_.cancelled.load(std::memory_order_relaxed)) return false;
  AppendRowOf(row, RowStatus::kFetched);
  return true;
}

void WireSink::OnMissingRow() { AppendRowOf(NoRow(), RowStatus::kMissing); }

void WireSink::AppendRowOf(const RowView& row, RowStatus status) {
  AppendRow(columns_, row, tokens_);
  if (row_status_) AppendRowStatus(status, tokens_);
  if (tokens_.size() >= kFlushAt) Flush();
}

void WireSink::OnStatementEnd(const StatementEnd& end) {
  ReleaseDone();
  const int status =
      (end.rows >= 0 ? kDoneCount : 0) | (end.failed || error_since_done_ ? kDoneError : 0);
  const bool select = end.is_select || in_rows_;
  held_ = {status, select ? kCommandSelect : std::uint16_t{0}, std::max<std::int64_t>(end.rows, 0)};
  in_rows_ = false;
  error_since_done_ = false;
}

void WireSink::OnMessage(const ServerMessage& message) {
  // What a cancelled statement complains of is not what the client wants to hear.
  if (context_.cancelled.load(std::memory_order_relaxed)) return;
  ReleaseDone();
  if (message.IsError()) failed_ = error_since_done_ = true;
  AppendMessage(message, context_.server_name, tokens_);
}

void WireSink::OnDatabaseChanged(const std::string& from, const std::string& to) {
  ReleaseDone();
  AppendEnvironment(Environment::kDatabase, to, from, tokens_);
  AppendMessage(MakeMessage(5701, {to}), context_.server_name, tokens_);
}

void WireSink::OnReturnStatus(int status) {
  ReleaseDone();
  status_told_ = true;
  AppendReturnStatus(status, tokens_);
}

void WireSink::ReturnStatusOnce(int status) {
  if (!status_told_) OnReturnStatus(status);
}

void WireSink::ReturnInteger(const std::string& name, std::int64_t value) {
  ReleaseDone();
  AppendReturnedInteger(name, value, tokens_);
}

void WireSink::Finish(Position position) {
  const int error = error_since_done_ ? kDoneError : 0;
  if (kind_ == Kind::kProcedure) {
    ReturnStatusOnce(failed_ ? 1 : 0);
    const int more = position == Position::kMoreFollow ? kDoneMore : 0;
    AppendDone(DoneToken::kProcedure, {.status = error | more}, tokens_);
  } else {
    // An error that ended the batch outside any statement still has to end in a DONE.
    if (error != 0) ReleaseDone();
    AppendDone(DoneToken::kBatch, std::exchange(held_, {}).value_or(Done{.status = error}),
               tokens_);
  }
  Flush();
  if (position == Position::kLast) context_.writer.Finish();
}

void WireSink::ReleaseDone() {
  if (!held_) return;
  held_->status |= kDoneMore;
  AppendDone(kind_ == Kind::kProcedure ? DoneToken::kInProcedure : DoneToken::kBatch, *held_,
             tokens_);
  held_.reset();
}

void WireSink::Flush() {
  context_.writer.Write(tokens_.bytes());
  tokens_.Clear();
}

}  // namespace dbkeeper::server
