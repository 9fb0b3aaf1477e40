// Statements on files fail with two messages: what went wrong, then what was given up.
#pragma once

#include <string>
#include <system_error>

#include "server/types/messages.h"

namespace dbkeeper::server {

// What a failure of a file is told as: a message whose places are the system's words and number.
struct ErrorChain {
  ResultSink& sink;
  ServerMessage last;
  int file_error;
};

// Runs `work`. Tells its error, and throws SqlError with the chain's last message. What the server
// does not support, and an interruption, stand alone.
template <typename Work>
void RunChained(const ErrorChain& chain, Work work) {
  constexpr int kUnsupported = 50001;
  constexpr int kInterrupted = 3617;
  ServerMessage first;
  try {
    work();
    return;
  } catch (const SqlError& error) {
    first = error.message();
    if (first.number == kUnsupported || first.number == kInterrupted) throw;
  } catch (const std::system_error& error) {
    first = MakeMessage(chain.file_error, {error.what(), std::to_string(error.code().value())});
  }
  chain.sink.OnMessage(first);
  throw SqlError(chain.last);
}

}  // namespace dbkeeper::server
