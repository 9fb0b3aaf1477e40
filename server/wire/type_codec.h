// Types and values of the dialect as the wire has them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "server/engine/result_sink.h"
#include "server/engine/session.h"
#include "server/types/sql_type.h"
#include "server/wire/bytes.h"
#include "server/wire/code_page.h"

namespace dbkeeper::server {

// Japanese_CI_AS: language 0x0411; case, kana and width do not count, accents do.
constexpr std::string_view kCollation("\x11\x04\xD0\x00\x00", 5);

// Whether values of the type are text, ntext or image: they stand in a row behind a text pointer.
bool IsLarge(TypeId id);

// Announces the type of a column or of a returned value.
void AppendTypeInfo(const SqlType& type, ByteWriter& out);

// Appends cell `column` of `row` as a value of `type` as it stands in a row of a result.
void AppendValue(const SqlType& type, const RowView& row, std::size_t column,
                 const CodePage932& code_page, ByteWriter& out);

// How a value says its length.
enum class LengthForm : std::uint8_t { kFixed, kOneByte, kTwoBytes, kFourBytes };

// A type that the client announced.
struct WireType {
  SqlType type;
  LengthForm form = LengthForm::kFixed;
  std::uint32_t length = 0;  // in bytes, the longest
};

enum class ValuePlace { kParameter, kRow };

// Throws WireError for a type that there is not.
WireType ReadTypeInfo(ByteReader& in);

// Reads a value into `value` (its type, value or null); throws WireError.
void ReadValue(ByteReader& in, const WireType& type, ValuePlace place, const CodePage932& code_page,
               RpcParameter& value);

}  // namespace dbkeeper::server
