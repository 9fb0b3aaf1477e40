// The statements of a batch, one after the other.
#pragma once

#include "server/engine/engine_session.h"

namespace dbkeeper::server {

// Whether it is a select into.
bool MakesTable(const SelectStatement& statement);

// Carries out one statement. Throws SqlError.
StatementEnd RunStatement(EngineSession& session, const Statement& statement,
                          const Execution& execution);

}  // namespace dbkeeper::server
