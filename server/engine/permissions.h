// What users may do with objects, as sysprotects holds it.
#pragma once

#include "server/engine/resolver.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"

namespace dbkeeper::server {

// Throws 229 when the login's user may not; `word` is "SELECT", "INSERT", "UPDATE" or "DELETE".
// System tables are open to all; owners and administrators may do everything.
void NeedPermission(Workspace& workspace, const FoundObject& found, std::string_view word);

// GRANT, DENY and REVOKE.
void ChangePermissions(const PermissionStatement& statement, Workspace& workspace,
                       Resolver& resolver);

}  // namespace dbkeeper::server
