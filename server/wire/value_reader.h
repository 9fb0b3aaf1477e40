// Types and values that clients send, in calls and in bulk loads.
#pragma once

#include <cstdint>

#include "server/engine/session.h"
#include "server/types/sql_type.h"
#include "server/wire/bytes.h"
#include "server/wire/code_page.h"
#include "server/wire/wire_types.h"

namespace dbkeeper::server {

// A type that the client announced.
struct WireType {
  SqlType type;
  LengthForm form = LengthForm::kFixed;
  std::uint32_t length = 0;  // in bytes, the longest
};

enum class ValuePlace { kParameter, kRow };

// Throws WireError for a type that there is not.
WireType ReadTypeInfo(ByteReader& in);

// Reads a value, or null, and its type into `value`; throws WireError.
void ReadValue(ByteReader& in, const WireType& type, ValuePlace place, const CodePage932& code_page,
               Parameter& value);

}  // namespace dbkeeper::server
