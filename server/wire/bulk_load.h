// Bulk load: the statement INSERT BULK, and the rows that come after it in a message of their own.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/session.h"
#include "server/sql/ast.h"
#include "server/wire/packet.h"
#include "server/wire/wire_sink.h"

namespace dbkeeper::server {

// Where the rows of a bulk load go, as INSERT BULK says it.
using BulkTarget = InsertBulkStatement;

// Nothing when the text is no INSERT BULK with columns.
std::optional<BulkTarget> ParseInsertBulk(std::string_view text);

// Reads the rows off `in` and puts them into the table: all of them or, when one is refused or the
// client breaks off, none.
// Throws WireError when the message makes no sense; nothing has been kept then.
void RunBulkLoad(const BulkTarget& target, MessageReader& in, Session& session, WireSink& sink);

}  // namespace dbkeeper::server
