// Values of rows as people see and type them, and as statements hold them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "app/session/Connection.h"
#include "app/support/Host.h"
#include "controls/DataGrid.h"

namespace dbkeeper {

// Caption, type hint, kind and alignment of a field's column.
GridColumn ColumnOf(const Field& field);

// A value in the form in which it is shown: dates in the host's short form, binary as 0x and
// digits. At most `limit` bytes, cut between characters. Either a part of `value`, or of `room`,
// which is overwritten.
std::string_view ShownText(const Field& field, std::string_view value, std::string& room,
                           HostLocale& locale, std::size_t limit = std::string_view::npos);

// A value in the form in which it is edited, which loses nothing of it.
std::string EditText(const Field& field, std::string_view value);

// What a person typed, in the form of the connection's port. An empty text is a null except in text
// columns. Throws ConvertError when it is no value of the field's type.
std::optional<std::string> TypedValue(const Field& field, const std::string& typed,
                                      HostLocale& locale);

// The value as a literal of the server's language, its type told where the server would guess
// another: N'...' for text beyond ASCII, 0x... for binary.
std::string SqlLiteral(const Field& field, const std::optional<std::string>& value);

// [name], with the closing brackets in it doubled.
std::string BracketedName(std::string_view name);
// N'text' or, for pure ASCII, 'text'; the quotes in it doubled.
std::string QuotedText(std::string_view text);

}  // namespace dbkeeper
