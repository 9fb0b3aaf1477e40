// Types and values of results as the wire has them.
#pragma once

#include <cstddef>

#include "server/engine/result_sink.h"
#include "server/types/sql_type.h"
#include "server/wire/bytes.h"
#include "server/wire/code_page.h"

namespace dbkeeper::server {

// Announces the type of a column or of a returned value.
void AppendTypeInfo(const SqlType& type, ByteWriter& out);

// Appends cell `column` of `row` as a value of `type` as it stands in a row of a result.
void AppendValue(const SqlType& type, const RowView& row, std::size_t column,
                 const CodePage932& code_page, ByteWriter& out);

}  // namespace dbkeeper::server
