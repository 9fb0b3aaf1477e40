// The server's messages, all in one table by number, and the error that carries one.
#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace dbkeeper::server {

// An error (severity above 10) or an informational message in the server's form.
struct ServerMessage {
  int number = 0;
  int state = 1;
  int severity = 16;
  int line = 1;
  std::string text;  // UTF-8
  bool IsError() const { return severity > 10; }
};

// A statement refused: the exception that carries the server's own message.
class SqlError : public std::runtime_error {
 public:
  explicit SqlError(ServerMessage message)
      : std::runtime_error(message.text), message_(std::move(message)) {}
  const ServerMessage& message() const { return message_; }

 private:
  ServerMessage message_;
};

// The message of `number`, which the table has, with its places %1, %2 ... filled from `parts`.
ServerMessage MakeMessage(int number, std::initializer_list<std::string_view> parts = {},
                          int line = 1);

// The same as an exception, and thrown.
SqlError MakeError(int number, std::initializer_list<std::string_view> parts = {}, int line = 1);
[[noreturn]] void Fail(int number, std::initializer_list<std::string_view> parts = {});

// Runs `work`; an error of it is given the line.
template <typename Work>
void AtLine(int line, const Work& work) {
  try {
    work();
  } catch (const SqlError& error) {
    ServerMessage message = error.message();
    message.line = line;
    throw SqlError(message);
  }
}

// "The local server does not support X.", number 50001.
SqlError Unsupported(std::string_view construct, int line = 1);

// True for the errors after which the server runs nothing more of the batch.
bool EndsBatch(int number);
// True for those after which it rolls the client's transaction back, too.
bool EndsTransaction(int number);

}  // namespace dbkeeper::server
