// Functions of the server's state that statements may call: object_id, db_name, serverproperty,
// @@rowcount and the like.
#pragma once

#include <string_view>
#include <vector>

#include "server/engine/resolver.h"
#include "server/engine/workspace.h"
#include "server/sql/server_functions.h"

namespace dbkeeper::server {

// What a state function works with.
struct StateContext {
  Workspace& workspace;
  Resolver& resolver;
};

// `function` is one of those that translated statements name.
Cell EvaluateStateFunction(const StateContext& context, std::string_view function,
                           const std::vector<Cell>& arguments);

// The text of a cell as an argument of a function or procedure has it.
std::string TextOfCell(const Cell& cell);

// The version this server stands for, as @@version and SERVERPROPERTY say it.
inline constexpr const char* kProductVersion = "8.00.2039";

}  // namespace dbkeeper::server
