#include "platform/odbc/Reader.h"

#include <utility>

namespace dbkeeper::odbc {

Reader::Reader(std::shared_ptr<Statement> statement) : statement_(std::move(statement)) {
  statement_->TheLink().TakeWire(*this);
  BeginResult();
}

Reader::Reader(const Reader& other, Place place)
    : statement_(other.statement_),
      fields_(other.fields_),
      place_(place),
      on_next_result_(other.on_next_result_),
      batch_ended_(other.batch_ended_) {
  if (place_ != Place::kBehindRows) BeginResult();
}

Reader::~Reader() { statement_->TheLink().ReturnWire(*this); }

void Reader::BeginResult() {
  block_ = std::make_unique<BoundRows>(*statement_);
  fields_ = block_->Fields();
  scratch_.assign(fields_.size(), {});
  place_ = Place::kBeforeRows;
  on_next_result_ = false;
}

bool Reader::Next() {
  statement_->Handle();  // throws when the connection was closed
  if (place_ == Place::kOnWireRow && row_ + 1 < block_->Rows()) {
    ++row_;
    return true;
  }
  if (place_ == Place::kBehindRows) return false;
  return left_wire_ ? NextKept() : NextOnWire();
}

bool Reader::NextOnWire() {
  place_ = Place::kBehindRows;
  if (block_->FetchNext() > 0) {
    row_ = 0;
    place_ = Place::kOnWireRow;
    return true;
  }
  // Looks beyond the rows at once: a failure there is told to whoever reads to the end, and the
  // statements there that give no rows have run by then.
  on_next_result_ = GoToRows();
  return false;
}

bool Reader::NextKept() {
  if (++kept_row_ < kept_.front().rows.KnownRows()) {
    place_ = Place::kOnKeptRow;
    return true;
  }
  place_ = Place::kBehindRows;
  ThrowKeptFailure();
  return false;
}

std::optional<std::string_view> Reader::KeptValue(std::size_t field) const {
  return kept_.front().rows.Value(kept_row_, field);
}

bool Reader::IsNull(std::size_t field) const {
  RequireRow();
  return place_ == Place::kOnKeptRow ? !KeptValue(field).has_value() : block_->IsNull(row_, field);
}

std::string_view Reader::Text(std::size_t field) const {
  RequireRow();
  return place_ == Place::kOnKeptRow ? KeptValue(field).value_or(std::string_view())
                                     : block_->Text(row_, field, scratch_[field]);
}

std::size_t Reader::Fill(RowBlock& block, std::size_t bytes) {
  if (left_wire_) return RowReader::Fill(block, bytes);
  std::size_t added = 0;
  for (; block.Bytes() < bytes && Next(); ++added) block_->AddRow(row_, block);
  return added;
}

void Reader::RequireRow() const {
  if (place_ == Place::kOnWireRow || place_ == Place::kOnKeptRow) return;
  throw SessionError("The query stands on no row.");
}

bool Reader::NextResult() {
  statement_->Handle();
  place_ = Place::kBehindRows;
  if (left_wire_) return NextResultKept();
  if (!on_next_result_ && !GoToRows()) return false;
  BeginResult();
  return true;
}

bool Reader::NextResultKept() {
  ThrowKeptFailure();
  if (kept_.size() == 1) return false;
  kept_.pop_front();
  fields_ = kept_.front().rows.Fields();
  kept_row_ = -1;
  place_ = Place::kBeforeRows;
  return true;
}

void Reader::ThrowKeptFailure() {
  std::deque<std::exception_ptr>& failures = kept_.front().failures;
  if (failures.empty()) return;
  const std::exception_ptr failure = failures.front();
  failures.pop_front();
  std::rethrow_exception(failure);
}

bool Reader::GoToRows() {
  while (!batch_ended_) {
    const Step step = statement_->NextResult();
    if (step == Step::kRows) return true;
    batch_ended_ = step == Step::kEnd;
  }
  statement_->TheLink().ReturnWire(*this);
  return false;
}

void Reader::LeaveWire() {
  const std::optional<ServerError> failure = block_->TakeFailure();
  // The present block stays as it is, for views into it are out.
  Reader rest(*this, failure ? Place::kBehindRows : place_);
  left_wire_ = true;
  kept_.emplace_back(fields_);
  if (failure) kept_.back().failures.push_back(std::make_exception_ptr(ServerError(*failure)));
  for (bool more = true; more;) {
    try {
      kept_.back().rows.ReadAll(rest);
      more = rest.NextResult();
      if (more) kept_.emplace_back(rest.Fields());
    } catch (const ServerError&) {
      kept_.back().failures.push_back(std::current_exception());
      more = statement_->TheLink().Usable();
    } catch (...) {
      kept_.back().failures.push_back(std::current_exception());
      statement_->Cancel();
      return;
    }
  }
}

}  // namespace dbkeeper::odbc
