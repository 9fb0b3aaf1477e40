#include "app/session/Connection.h"

#include <utility>

namespace dbkeeper {

namespace {

std::string JoinTexts(const std::vector<ServerMessage>& messages) {
  std::string joined;
  for (const ServerMessage& message : messages) {
    if (!joined.empty()) joined += "\r\n";
    joined += message.text;
  }
  return joined;
}

}  // namespace

ServerError::ServerError(std::vector<ServerMessage> messages)
    : Error(JoinTexts(messages)), messages_(std::move(messages)) {}

void RowReader::AddRow(RowBlock& block) const {
  for (std::size_t field = 0; field < Fields().size(); ++field) {
    if (IsNull(field)) {
      block.AddNull();
    } else {
      block.AddCell(Text(field));
    }
  }
  block.EndRow();
}

std::size_t RowReader::Fill(RowBlock& block, std::size_t bytes) {
  std::size_t added = 0;
  for (; block.Bytes() < bytes && Next(); ++added) AddRow(block);
  return added;
}

}  // namespace dbkeeper
