// A server that answers from a table: statements are recorded in order, and each is answered by the
// first answer whose text it holds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/session/Connection.h"

namespace dbkeeper::testing {

// Absent cells are nulls.
using FakeRow = std::vector<std::optional<std::string>>;

struct FakeResult {
  std::vector<Field> fields = {};
  std::vector<FakeRow> rows = {};
  // Raised once the rows are read, or at once when there are no fields.
  std::optional<ServerMessage> error = std::nullopt;
  std::int64_t affected = -1;
  int further_results = 0;                   // behind the rows
  std::vector<ServerMessage> messages = {};  // said while the statement runs
  bool breaks = false;                       // the connection is gone with the error
};

// Text fields of the given names.
inline std::vector<Field> TextFields(const std::vector<std::string>& names) {
  std::vector<Field> fields;
  for (const std::string& name : names) fields.push_back({.name = name, .type_name = "varchar"});
  return fields;
}

class FakeReader : public RowReader {
 public:
  explicit FakeReader(FakeResult result) : result_(std::move(result)) {}

  const std::vector<Field>& Fields() const override { return result_.fields; }
  bool Next() override {
    ++row_;
    if (row_ < result_.rows.size()) return true;
    if (result_.error) throw ServerError({*result_.error});
    return false;
  }
  bool IsNull(std::size_t field) const override { return !result_.rows[row_][field]; }
  std::string_view Text(std::size_t field) const override {
    const auto& cell = result_.rows[row_][field];
    return cell ? std::string_view(*cell) : std::string_view();
  }
  bool NextResult() override { return result_.further_results-- > 0; }

 private:
  FakeResult result_;
  std::size_t row_ = static_cast<std::size_t>(-1);
};

// How the cursors of a server behave, and what they are asked for.
struct FakeCursors {
  bool scroll = true;
  std::vector<std::pair<std::int64_t, std::size_t>> fetches{};  // first row and count
  int counts = 0;
  // The connection breaks when a row from here on is fetched.
  std::optional<std::int64_t> break_at{};
};

class FakeCursor : public PageCursor {
 public:
  FakeCursor(FakeResult result, FakeCursors& cursors, bool& is_open)
      : result_(std::move(result)), cursors_(cursors), is_open_(is_open) {}

  const std::vector<Field>& Fields() const override { return result_.fields; }
  std::size_t Fetch(std::int64_t first, std::size_t count, RowBlock& block) override {
    cursors_.fetches.emplace_back(first, count);
    const auto end = std::min(result_.rows.size(), static_cast<std::size_t>(first) + count);
    if (cursors_.break_at && static_cast<std::int64_t>(end) > *cursors_.break_at) {
      is_open_ = false;
      throw ServerError({{.number = 20006, .text = "Write to the server failed"}});
    }
    const std::size_t start = std::min(static_cast<std::size_t>(first), end);
    for (std::size_t row = start; row < end; ++row) {
      for (const auto& cell : result_.rows[row]) cell ? block.AddCell(*cell) : block.AddNull();
      block.EndRow();
    }
    return end - start;
  }
  std::int64_t CountRows() override {
    ++cursors_.counts;
    return static_cast<std::int64_t>(result_.rows.size());
  }

 private:
  FakeResult result_;
  FakeCursors& cursors_;
  bool& is_open_;
};

class FakeConnection : public Connection {
 public:
  // Later answers go before earlier ones, so a test can override what its fixture prepared.
  void Answer(std::string part_of_sql, FakeResult result) {
    answers_.insert(answers_.begin(), {std::move(part_of_sql), std::move(result)});
  }
  void Fail(std::string part_of_sql, std::string text) {
    Answer(std::move(part_of_sql),
           {.error = ServerMessage{.number = 50000, .severity = 16, .text = std::move(text)}});
  }

  std::vector<std::string> statements;
  std::vector<std::string> opened;
  std::optional<ServerMessage> open_failure;
  std::vector<ServerMessage> messages;
  FakeCursors cursors;

  void Open(const std::string& connection_string) override {
    opened.push_back(connection_string);
    if (open_failure) throw ServerError({*open_failure});
    is_open_ = true;
  }
  void Close() override { is_open_ = false; }
  bool IsOpen() const override { return is_open_; }
  std::unique_ptr<RowReader> Query(const std::string& sql) override {
    FakeResult result = Take(sql);
    if (result.fields.empty()) return nullptr;
    return std::make_unique<FakeReader>(std::move(result));
  }
  std::int64_t Execute(const std::string& sql) override { return Take(sql).affected; }
  ScrolledRows OpenCursor(const std::string& sql) override {
    FakeResult result = Take(sql);
    if (result.fields.empty()) return {};
    if (!cursors.scroll) return {.reader = std::make_unique<FakeReader>(std::move(result))};
    return {.cursor = std::make_unique<FakeCursor>(std::move(result), cursors, is_open_)};
  }
  std::vector<ServerMessage> TakeMessages() override { return std::exchange(messages, {}); }

 private:
  FakeResult Take(const std::string& sql) {
    statements.push_back(sql);
    for (const auto& [part, result] : answers_) {
      if (sql.find(part) == std::string::npos) continue;
      messages.insert(messages.end(), result.messages.begin(), result.messages.end());
      if (result.breaks) is_open_ = false;
      if (result.error && result.fields.empty()) throw ServerError({*result.error});
      return result;
    }
    return {};
  }

  std::vector<std::pair<std::string, FakeResult>> answers_;
  bool is_open_ = false;
};

}  // namespace dbkeeper::testing
