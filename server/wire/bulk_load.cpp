#include "server/wire/bulk_load.h"

#include <algorithm>
#include <cstdint>

#include "server/sql/parser.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"
#include "server/wire/value_codec.h"

namespace dbkeeper::server {
namespace {

constexpr std::size_t kMostColumns = 1024;

// Passes on what goes wrong, and nothing else.
class ErrorsOnly : public QuietSink {
 public:
  explicit ErrorsOnly(WireSink& sink) : sink_(sink) {}
  void OnStatementEnd(const StatementEnd& end) override { failed_ = failed_ || end.failed; }
  void OnMessage(const ServerMessage& message) override {
    if (!message.IsError()) return;
    failed_ = true;
    sink_.OnMessage(message);
  }
  bool failed() const { return failed_; }

 private:
  WireSink& sink_;
  bool failed_ = false;
};

std::vector<WireType> ReadColumns(ByteReader& in) {
  if (in.U8() != kColumnsToken) throw WireError("a bulk load does not tell its columns");
  const std::size_t count = in.U16();
  if (count == 0 || count > kMostColumns) throw WireError("a bulk load has too many columns");
  std::vector<WireType> columns;
  for (std::size_t i = 0; i < count; ++i) {
    in.Skip(4);  // user type and flags
    columns.push_back(ReadTypeInfo(in));
    if (IsLargeObject(columns.back().type.id))
      in.Skip(std::size_t{in.U16()} * 2);  // name of the table
    in.Skip(std::size_t{in.U8()} * 2);     // name, known from the statement
  }
  return columns;
}

std::string Bracketed(std::string_view name) {
  std::string quoted = "[";
  for (const char c : name) quoted.append(c == ']' ? 2 : 1, c);
  return quoted + ']';
}

std::string InsertText(const BulkTarget& target) {
  std::string table;
  for (const std::string* part : {&target.table.database, &target.table.owner}) {
    if (!part->empty() || !table.empty()) table += part->empty() ? "." : Bracketed(*part) + '.';
  }
  std::string names;
  std::string values;
  for (std::size_t i = 0; i < target.columns.size(); ++i) {
    AppendItem(names, Bracketed(target.columns[i].name));
    AppendItem(values, "@b" + std::to_string(i + 1));
  }
  return "insert into " + table + Bracketed(target.table.name) + " (" + names + ") values (" +
         values + ")";
}

// Rolls back what was not committed when the message turns out to be broken.
class Transaction {
 public:
  Transaction(Session& session, ResultSink& sink) : session_(session), sink_(sink) {
    session_.RunBatch("begin transaction", sink_);
  }
  ~Transaction() {
    if (open_) session_.RunBatch("rollback transaction", sink_);
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit() {
    open_ = false;
    session_.RunBatch("commit transaction", sink_);
  }

 private:
  Session& session_;
  ResultSink& sink_;
  bool open_ = true;
};

}  // namespace

std::optional<BulkTarget> ParseInsertBulk(std::string_view text) {
  // Few batches are, and long ones are not read twice to find that out.
  constexpr std::size_t kHead = 64;
  const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  const std::string head = ToLowerAscii(text.substr(first, kHead));
  if (!head.starts_with("insert") || head.find("bulk") == std::string::npos) return std::nullopt;
  try {
    std::vector<Statement> statements = ParseBatch(text);
    auto* bulk =
        statements.size() == 1 ? std::get_if<InsertBulkStatement>(&statements[0].node) : nullptr;
    if (bulk == nullptr || bulk->columns.empty()) return std::nullopt;
    return std::move(*bulk);
  } catch (const SqlError&) {
    return std::nullopt;  // the engine says what is wrong with it
  }
}

void RunBulkLoad(const BulkTarget& target, MessageReader& in, Session& session, WireSink& sink) {
  const std::vector<WireType> types = ReadColumns(in);
  if (types.size() != target.columns.size()) throw WireError("a bulk load has other columns");
  const std::string text = InsertText(target);
  Parameters values(types.size());
  for (std::size_t i = 0; i < values.size(); ++i) values[i].name = "@b" + std::to_string(i + 1);

  ErrorsOnly errors(sink);
  Transaction transaction(session, errors);
  StatementEnd end;
  end.rows = 0;
  // Some clients end in a DONE, and some just end.
  while (!in.AtEnd()) {
    const std::uint8_t token = in.U8();
    if (token == static_cast<std::uint8_t>(DoneToken::kBatch)) break;
    if (token != kRowToken) throw WireError("a bulk load has something that is no row");
    for (std::size_t i = 0; i < values.size(); ++i) {
      ReadValue(in, types[i], ValuePlace::kRow, values[i]);
    }
    // After the first refused row the rest is only read off.
    if (errors.failed()) continue;
    session.RunParameterized(text, values, errors);
    ++end.rows;
  }
  if (in.cancelled()) return;
  if (!errors.failed()) transaction.Commit();
  end.failed = errors.failed();
  if (end.failed) end.rows = 0;
  sink.OnStatementEnd(end);
}

}  // namespace dbkeeper::server
