// The server's messages by number, and the error that carries one.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "server/engine/result_sink.h"
#include "server/types/sql_error.h"

namespace dbkeeper::server {

// The message of `number` with its places %1, %2 ... filled from `arguments`. A number that the
// table does not have gives severity 16 and the arguments as text.
ServerMessage MakeMessage(int number, std::initializer_list<std::string_view> arguments,
                          int line = 1);

// The same as an exception.
SqlError MakeError(int number, std::initializer_list<std::string_view> arguments, int line = 1);

// "The local server does not support X.", number 50001.
SqlError Unsupported(std::string_view construct, int line = 1);

}  // namespace dbkeeper::server
