#include "server/agent/agent_session.h"

#include <optional>
#include <utility>

#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

Cell CellAt(const RowView& row, std::size_t column, const SqlType& type) {
  if (row.IsNull(column)) return {};
  switch (FamilyOf(type.id)) {
    case TypeFamily::kInteger:
    case TypeFamily::kDateTime:
      return row.Integer(column);
    case TypeFamily::kReal:
      return row.Real(column);
    case TypeFamily::kBinary:
    case TypeFamily::kGuid:
      return Blob{std::string(row.Bytes(column))};
    default:
      return std::string(row.Bytes(column));
  }
}

// Keeps the rows of the last select and the first error.
class KeepingSink : public QuietSink {
 public:
  void OnColumns(const std::vector<ResultColumn>& columns) override {
    columns_ = columns;
    rows_.clear();
  }
  bool OnRow(const RowView& row) override {
    std::vector<Cell>& cells = rows_.emplace_back();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      cells.push_back(CellAt(row, i, columns_[i].type));
    }
    return true;
  }
  void OnMessage(const ServerMessage& message) override {
    if (message.IsError() && !error_) error_ = message;
  }

  CellRows Take() {
    if (error_) throw SqlError(*error_);
    return std::move(rows_);
  }

 private:
  std::vector<ResultColumn> columns_;
  CellRows rows_;
  std::optional<ServerMessage> error_;
};

}  // namespace

AgentSession::AgentSession(Instance& instance)
    : session_(instance.Admit(
          "sa", {.host_name = instance.server_name(), .program_name = "SQLAgent"}, "master")) {
  // A run ends untold when it cannot be written down: others get a minute to finish their writing.
  Run("set lock_timeout 60000");
}

CellRows AgentSession::Run(std::string_view text, const Parameters& parameters) {
  KeepingSink sink;
  session_->RunParameterized(text, parameters, sink);
  return sink.Take();
}

Parameter NumberParameter(std::string name, std::int64_t value) {
  return {std::move(name), kBigIntType, value};
}

Parameter TextParameter(std::string name, std::string value) {
  constexpr int kWidest = 4000;
  return {std::move(name), NVarChar(kWidest), std::move(value)};
}

Parameter IdParameter(std::string name, std::string bytes) {
  return {std::move(name), {.id = TypeId::kUniqueIdentifier}, Blob{std::move(bytes)}};
}

}  // namespace dbkeeper::server
