#include "server/wire/bulk_load.h"

#include <algorithm>
#include <cstdint>

#include "server/wire/value_reader.h"

namespace dbkeeper::server {
namespace {

constexpr std::uint8_t kColumnMetadata = 0x81;
constexpr std::uint8_t kRow = 0xD1;
constexpr std::uint8_t kDone = 0xFD;
constexpr std::size_t kMostColumns = 1024;

// Reads INSERT BULK word by word.
class Words {
 public:
  explicit Words(std::string_view text) : text_(text) {}

  // A name in brackets or quotes, a run of other characters, or one of ( ) , . alone; empty at the
  // end.
  std::string_view Next() {
    at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
    const std::size_t start = at_;
    if (at_ == text_.size()) return {};
    const char first = text_[at_];
    if (first == '[' || first == '"') {
      const char close = first == '[' ? ']' : '"';
      at_ = text_.find(close, at_ + 1);
      // A doubled closing mark stands for itself.
      while (at_ < text_.size() && at_ + 1 < text_.size() && text_[at_ + 1] == close) {
        at_ = text_.find(close, at_ + 2);
      }
      at_ = at_ >= text_.size() ? text_.size() : at_ + 1;
    } else if (kAlone.find(first) != std::string_view::npos) {
      ++at_;
    } else {
      at_ = std::min(text_.find_first_of(" \t\r\n(),.[\"", at_), text_.size());
    }
    return text_.substr(start, at_ - start);
  }

  bool Accept(std::string_view lower_case) {
    const std::size_t start = at_;
    const std::string_view word = Next();
    const bool same =
        std::equal(word.begin(), word.end(), lower_case.begin(), lower_case.end(),
                   [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
    if (!same) at_ = start;
    return same;
  }

 private:
  static constexpr std::string_view kAlone = "(),.";
  std::string_view text_;
  std::size_t at_ = 0;
};

// Passes on what goes wrong, and nothing else.
class ErrorsOnly : public ResultSink {
 public:
  explicit ErrorsOnly(WireSink& sink) : sink_(sink) {}
  void OnColumns(const std::vector<ResultColumn>& /*columns*/) override {}
  bool OnRow(const RowView& /*row*/) override { return true; }
  void OnStatementEnd(const StatementEnd& end) override { failed_ = failed_ || end.failed; }
  void OnMessage(const ServerMessage& message) override {
    if (!message.IsError()) return;
    failed_ = true;
    sink_.OnMessage(message);
  }
  void OnDatabaseChanged(const std::string& /*from*/, const std::string& /*to*/) override {}
  void OnReturnStatus(int /*status*/) override {}
  bool failed() const { return failed_; }

 private:
  WireSink& sink_;
  bool failed_ = false;
};

std::vector<WireType> ReadColumns(ByteReader& in) {
  if (in.U8() != kColumnMetadata) throw WireError("a bulk load does not tell its columns");
  const std::size_t count = in.U16();
  if (count == 0 || count > kMostColumns) throw WireError("a bulk load has too many columns");
  std::vector<WireType> columns;
  for (std::size_t i = 0; i < count; ++i) {
    in.Skip(4);  // user type and flags
    columns.push_back(ReadTypeInfo(in));
    if (IsLarge(columns.back().type.id)) in.Skip(std::size_t{in.U16()} * 2);  // name of the table
    in.Skip(std::size_t{in.U8()} * 2);  // name, known from the statement
  }
  return columns;
}

std::string InsertText(const BulkTarget& target) {
  std::string names;
  std::string values;
  for (std::size_t i = 0; i < target.columns.size(); ++i) {
    names += (i == 0 ? "" : ", ") + target.columns[i];
    values += (i == 0 ? "@b" : ", @b") + std::to_string(i + 1);
  }
  return "insert into " + target.table + " (" + names + ") values (" + values + ")";
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
  Words words(text);
  if (!words.Accept("insert") || !words.Accept("bulk")) return std::nullopt;
  BulkTarget target;
  std::string_view word;
  for (word = words.Next(); !word.empty() && word != "("; word = words.Next()) {
    target.table.append(word);
  }
  int depth = 1;
  bool expect_name = true;
  while (depth > 0 && !(word = words.Next()).empty()) {
    if (word == "(") ++depth;
    if (word == ")") --depth;
    if (expect_name && depth > 0) target.columns.emplace_back(word);
    expect_name = word == "," && depth == 1;
  }
  if (target.table.empty() || target.columns.empty()) return std::nullopt;
  return target;
}

void RunBulkLoad(const BulkTarget& target, MessageReader& in, const CodePage932& code_page,
                 Session& session, WireSink& sink) {
  const std::vector<WireType> types = ReadColumns(in);
  if (types.size() != target.columns.size()) throw WireError("a bulk load has other columns");
  const std::string text = InsertText(target);
  std::vector<RpcParameter> values(types.size());
  for (std::size_t i = 0; i < values.size(); ++i) values[i].name = "@b" + std::to_string(i + 1);

  ErrorsOnly errors(sink);
  Transaction transaction(session, errors);
  StatementEnd end;
  end.rows = 0;
  // Some clients end in a DONE, and some just end.
  while (!in.AtEnd()) {
    const std::uint8_t token = in.U8();
    if (token == kDone) break;
    if (token != kRow) throw WireError("a bulk load has something that is no row");
    for (std::size_t i = 0; i < values.size(); ++i) {
      ReadValue(in, types[i], ValuePlace::kRow, code_page, values[i]);
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
