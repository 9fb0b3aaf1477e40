#include "platform/odbc/Reader.h"

#include <utility>

namespace dbkeeper::odbc {

Reader::Reader(std::unique_ptr<Statement> statement) : statement_(std::move(statement)) {
  statement_->TheLink().TakeWire(*this);
  BeginResult();
}

Reader::~Reader() { statement_->TheLink().ReturnWire(*this); }

void Reader::BeginResult() {
  block_ = std::make_unique<RowBlock>(*statement_);
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
  KeptResult& result = kept_.front();
  if (result.rows.Next()) {
    place_ = Place::kOnKeptRow;
    return true;
  }
  place_ = Place::kBehindRows;
  ThrowKeptFailure();
  return false;
}

bool Reader::IsNull(std::size_t field) const {
  RequireRow();
  return place_ == Place::kOnKeptRow ? kept_.front().rows.IsNull(field)
                                     : block_->IsNull(row_, field);
}

std::string_view Reader::Text(std::size_t field) const {
  RequireRow();
  return place_ == Place::kOnKeptRow ? kept_.front().rows.Text(field)
                                     : block_->Text(row_, field, scratch_[field]);
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
  fields_ = kept_.front().fields;
  place_ = Place::kBeforeRows;
  return true;
}

void Reader::ThrowKeptFailure() {
  std::deque<ServerError>& failures = kept_.front().failures;
  if (failures.empty()) return;
  const ServerError failure = failures.front();
  failures.pop_front();
  throw ServerError(failure);
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
  left_wire_ = true;
  kept_.push_back({fields_, RowStore(fields_.size()), {}});
  if (place_ != Place::kBehindRows) {
    if (const auto failure = block_->TakeFailure()) {
      kept_.back().failures.push_back(*failure);
    } else {
      // The present row stays where it is: views into it are still out.
      RowBlock rest(*statement_);
      KeepRows(rest, kept_.back());
    }
  }
  KeepFollowingResults();
}

void Reader::KeepRows(RowBlock& block, KeptResult& kept) {
  std::string scratch;
  try {
    while (block.FetchNext() > 0) {
      for (std::size_t row = 0; row < block.Rows(); ++row) {
        for (std::size_t field = 0; field < kept.fields.size(); ++field) {
          if (block.IsNull(row, field)) {
            kept.rows.AddNull();
          } else {
            kept.rows.Add(block.Text(row, field, scratch));
          }
        }
      }
    }
  } catch (const ServerError& failure) {
    kept.failures.push_back(failure);
  }
}

void Reader::KeepFollowingResults() {
  while (statement_->TheLink().Usable()) {
    try {
      if (!on_next_result_ && !GoToRows()) return;
      on_next_result_ = false;
      RowBlock block(*statement_);
      KeptResult next{block.Fields(), RowStore(block.Fields().size()), {}};
      KeepRows(block, next);
      kept_.push_back(std::move(next));
    } catch (const ServerError& failure) {
      kept_.back().failures.push_back(failure);
    }
  }
}

}  // namespace dbkeeper::odbc
