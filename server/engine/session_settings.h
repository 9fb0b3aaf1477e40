// SET options, raiserror's message, waitfor's delay.
#pragma once

#include <chrono>
#include <string>

#include "server/engine/query_runner.h"
#include "server/engine/resolver.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"

namespace dbkeeper::server {

// Options that this server has no use for are taken without effect when their value asks for what
// it does anyway or for what only clients see; others are refused by name.
void ApplySetting(const SetStatement& statement, Workspace& workspace, Resolver& resolver);

ServerMessage RaisedMessage(const RaiseErrorStatement& statement, QueryRunner& queries,
                            const Execution& execution);

// "0:00:05" or "000:00:05.250"; throws SqlError 148.
std::chrono::milliseconds DelayOf(const std::string& text);

}  // namespace dbkeeper::server
