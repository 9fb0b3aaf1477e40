// The messages of statements and procedures that the engine carries out itself; those of the
// language are in types/messages.h.
#pragma once

#include <initializer_list>
#include <string_view>

#include "server/engine/result_sink.h"

namespace dbkeeper::server {

// The message with its places %1, %2 ... filled from `parts`. Numbers of the language are found
// too.
ServerMessage MessageOf(int number, std::initializer_list<std::string_view> parts = {});

// Throws SqlError with it.
[[noreturn]] void Fail(int number, std::initializer_list<std::string_view> parts = {});

// True for the errors after which the server runs nothing more of the batch.
bool EndsBatch(int number);

}  // namespace dbkeeper::server
