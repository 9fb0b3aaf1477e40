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

}  // namespace dbkeeper
