// Server-side cursors.
#pragma once

#include <memory>
#include <string_view>

#include "server/engine/session.h"

namespace dbkeeper::server {

class EngineSession;

// Over a select that reads one table row by row the cursor keeps the row ids (a keyset) and reads
// the rows when they are fetched; any other select is run once into a temporary table. Null when
// `text` is no single select. Throws SqlError. The session outlives the cursor.
std::unique_ptr<Cursor> OpenEngineCursor(EngineSession& session, std::string_view text);

}  // namespace dbkeeper::server
