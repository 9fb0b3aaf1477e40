// Types and values as the wire has them: in results, in calls and in bulk loads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "server/types/parameter.h"
#include "server/types/result_sink.h"
#include "server/wire/bytes.h"

namespace dbkeeper::server {

// Japanese_CI_AS: language 0x0411; case, kana and width do not count, accents do.
constexpr std::string_view kCollation("\x11\x04\xD0\x00\x00", 5);

// Announces the type of a column or of a returned value.
void AppendTypeInfo(const SqlType& type, ByteWriter& out);

// Appends cell `column` of `row` as a value of `type` as it stands in a row of a result.
void AppendValue(const SqlType& type, const RowView& row, std::size_t column, ByteWriter& out);

// How a value says its length.
enum class LengthForm : std::uint8_t { kFixed, kOneByte, kTwoBytes, kFourBytes };

// A type that the client announced.
struct WireType {
  SqlType type;
  LengthForm form = LengthForm::kFixed;
  std::uint32_t length = 0;  // in bytes, the longest
};

// Throws WireError for a type that there is not.
WireType ReadTypeInfo(ByteReader& in);

enum class ValuePlace { kParameter, kRow };

// Reads a value, or null, and its type into `value`; throws WireError.
void ReadValue(ByteReader& in, const WireType& type, ValuePlace place, Parameter& value);

}  // namespace dbkeeper::server
