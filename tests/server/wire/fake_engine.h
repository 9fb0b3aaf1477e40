// An engine that answers what a test tells it to, and notes what it was asked.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "server/engine/session.h"

namespace dbkeeper::server {

class FakeRow : public RowView {
 public:
  explicit FakeRow(const std::vector<Cell>& cells) : cells_(cells) {}
  bool IsNull(std::size_t column) const override { return cells_[column].index() == 0; }
  std::int64_t Integer(std::size_t column) const override {
    return std::get<std::int64_t>(cells_[column]);
  }
  double Real(std::size_t column) const override { return std::get<double>(cells_[column]); }
  std::string_view Bytes(std::size_t column) const override {
    const auto* const blob = std::get_if<Blob>(&cells_[column]);
    return blob != nullptr ? blob->bytes : std::get<std::string>(cells_[column]);
  }

 private:
  const std::vector<Cell>& cells_;
};

struct FakeResult {
  std::vector<ResultColumn> columns;
  std::vector<std::vector<Cell>> rows;
};

// A call that arrived at the engine.
struct FakeCall {
  std::string kind;  // "batch", "parameterized", "procedure", "update", "delete", "insert"
  std::string text;
  Parameters parameters;
};

class FakeEngine : public SessionFactory {
 public:
  using Answer = std::function<void(const FakeCall&, ResultSink&)>;

  // What a call gets; what is set here is asked on the threads of the clients.
  Answer answer = [](const FakeCall&, ResultSink& sink) { sink.OnStatementEnd({}); };
  // What a prepared statement tells of itself.
  std::function<FakeResult(std::string_view)> Described = [](std::string_view) {
    return FakeResult{};
  };
  // What a cursor over any text stands on; without columns there are no cursors.
  FakeResult cursor;
  std::atomic<int> interrupts = 0;
  std::atomic<int> sessions = 0;

  std::string server_name() const override { return "FAKE"; }
  std::unique_ptr<Session> Login(const LoginRequest& request) override;

  void Handle(const FakeCall& call, ResultSink& sink) {
    {
      const std::lock_guard lock(mutex_);
      calls_.push_back(call);
    }
    answer(call, sink);
  }
  std::vector<FakeCall> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }
  // Calls with a text that `part` is in.
  std::vector<FakeCall> CallsWith(std::string_view part) const {
    std::vector<FakeCall> found;
    for (const FakeCall& call : calls()) {
      if (call.text.find(part) != std::string::npos) found.push_back(call);
    }
    return found;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<FakeCall> calls_;
};

// Tells a whole result to `sink`.
inline void Send(const FakeResult& result, ResultSink& sink) {
  sink.OnColumns(result.columns);
  StatementEnd end;
  end.rows = 0;
  end.is_select = true;
  for (const auto& row : result.rows) {
    if (!sink.OnRow(FakeRow(row))) break;
    ++end.rows;
  }
  sink.OnStatementEnd(end);
}

inline ResultColumn Column(std::string name, SqlType type) {
  ResultColumn column;
  column.name = std::move(name);
  column.type = type;
  return column;
}

class FakeCursor : public Cursor {
 public:
  explicit FakeCursor(FakeEngine& engine) : engine_(engine) {}
  const std::vector<ResultColumn>& columns() const override { return engine_.cursor.columns; }
  std::int64_t row_count() const override {
    return static_cast<std::int64_t>(engine_.cursor.rows.size());
  }
  std::int64_t position() const override { return position_; }
  bool updatable() const override { return true; }
  void Fetch(FetchKind kind, std::int64_t row, int count, ResultSink& sink) override {
    switch (kind) {
      case FetchKind::kFirst:
        position_ = 1;
        break;
      case FetchKind::kNext:
        position_ = position_ == 0 ? 1 : position_ + last_count_;
        break;
      case FetchKind::kPrior:
        position_ -= count;
        break;
      case FetchKind::kLast:
        position_ = row_count() - count + 1;
        break;
      case FetchKind::kAbsolute:
        position_ = row;
        break;
      case FetchKind::kRelative:
        position_ += row;
        break;
      case FetchKind::kRefresh:
        break;
    }
    last_count_ = count;
    StatementEnd end;
    end.rows = 0;
    const std::int64_t last = std::min(position_ + count - 1, row_count());
    for (std::int64_t i = std::max<std::int64_t>(position_, 1); i <= last; ++i) {
      sink.OnRow(FakeRow(engine_.cursor.rows[static_cast<std::size_t>(i - 1)]));
      ++end.rows;
    }
    sink.OnStatementEnd(end);
  }
  void Update(int page_row, const Parameters& values, ResultSink& sink) override {
    engine_.Handle({"update", std::to_string(page_row), values}, sink);
  }
  void Delete(int page_row, ResultSink& sink) override {
    engine_.Handle({"delete", std::to_string(page_row), {}}, sink);
  }
  void Insert(const Parameters& values, ResultSink& sink) override {
    engine_.Handle({"insert", "", values}, sink);
  }

 private:
  FakeEngine& engine_;
  std::int64_t position_ = 0;
  int last_count_ = 0;
};

class FakeSession : public Session {
 public:
  explicit FakeSession(FakeEngine& engine) : engine_(engine), spid_(50 + ++engine.sessions) {}
  int spid() const override { return spid_; }
  const std::string& current_database() const override { return database_; }
  void RunBatch(std::string_view text, ResultSink& sink) override {
    engine_.Handle({"batch", std::string(text), {}}, sink);
  }
  void RunParameterized(std::string_view text, const Parameters& parameters,
                        ResultSink& sink) override {
    engine_.Handle({"parameterized", std::string(text), parameters}, sink);
  }
  void Describe(std::string_view text, const Parameters& /*parameters*/,
                ResultSink& sink) override {
    if (engine_.Described(text).columns.empty()) return;
    sink.OnColumns(engine_.Described(text).columns);
    sink.OnStatementEnd({.rows = 0, .is_select = true});
  }
  void RunProcedure(std::string_view name, const Parameters& parameters,
                    ResultSink& sink) override {
    engine_.Handle({"procedure", std::string(name), parameters}, sink);
  }
  std::unique_ptr<Cursor> OpenCursor(std::string_view /*text*/, ResultSink& /*sink*/) override {
    if (engine_.cursor.columns.empty()) return nullptr;
    return std::make_unique<FakeCursor>(engine_);
  }
  void Interrupt() override { ++engine_.interrupts; }

 private:
  FakeEngine& engine_;
  const int spid_;
  const std::string database_ = "master";
};

inline std::unique_ptr<Session> FakeEngine::Login(const LoginRequest& request) {
  if (request.user == "tester" && request.password == "Secret_1") {
    return std::make_unique<FakeSession>(*this);
  }
  LoginRefused refused;
  refused.message.number = 18456;
  refused.message.severity = 14;
  refused.message.text = "Login failed for user '" + request.user + "'.";
  throw refused;
}

}  // namespace dbkeeper::server
