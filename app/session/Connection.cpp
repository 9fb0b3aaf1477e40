#include "app/session/Connection.h"

#include <string>
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

std::string ConfidentialError::LogText() const {
  std::string text;
  for (const ServerMessage& message : Messages()) {
    const std::string& words = message.text;
    const std::size_t first = words.find_first_of("'\"");
    if (!text.empty()) text += "\r\n";
    text += words.substr(0, first);
    // A secret may hold quotes of its own: from the first to the last.
    if (first == std::string::npos) continue;
    const std::size_t last = words.find_last_of("'\"");
    text += words[first] + std::string("***") + (last > first ? words.substr(last) : "");
  }
  return text;
}

std::string ServerError::Places() const {
  std::string lines;
  for (const ServerMessage& message : messages_) {
    if (message.number == 0) continue;
    lines += (lines.empty() ? "番号 " : "\r\n番号 ") + std::to_string(message.number);
    if (message.severity > 0) lines += ", レベル " + std::to_string(message.severity);
    if (message.state > 0) lines += ", 状態 " + std::to_string(message.state);
    if (message.line > 0) lines += ", 行 " + std::to_string(message.line);
  }
  return lines;
}

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
