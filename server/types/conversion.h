// Values brought from one type to another as cast, convert and assignments do it.
#pragma once

#include <string>
#include <string_view>

#include "server/types/cell.h"
#include "server/types/decimal.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

enum class ConversionKind {
  kExplicit,    // cast and convert: texts are cut
  kAssignment,  // to a column: a text that would be cut is error 8152
};

// The cell of `to` for a cell of `from`; null stays null. `style` is convert's third argument.
// Throws SqlError.
Cell ConvertCell(const Cell& cell, const SqlType& from, const SqlType& to, int style,
                 ConversionKind kind);

// A cell that holds a number, in whichever form, as an exact number. Throws SqlError (8114) when it
// is none.
Decimal DecimalOfCell(const Cell& cell);

// The number checked and stored as `type` (decimal, money or integer). Throws 8115.
Cell StoreDecimal(const Decimal& number, const SqlType& type, std::string_view from_name);

// A literal such as "1.5e3" as SQLite writes it; empty when it is beyond the range.
std::string FloatLiteral(std::string_view text);

}  // namespace dbkeeper::server
