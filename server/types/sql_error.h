// A statement refused: the exception that carries the server's own message.
#pragma once

#include <exception>
#include <string>
#include <utility>

#include "server/engine/result_sink.h"

namespace dbkeeper::server {

class SqlError : public std::exception {
 public:
  explicit SqlError(ServerMessage message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.text.c_str(); }
  const ServerMessage& message() const { return message_; }

 private:
  ServerMessage message_;
};

}  // namespace dbkeeper::server
