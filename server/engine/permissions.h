// GRANT, DENY and REVOKE: what sysprotects holds.
#pragma once

#include "server/engine/resolver.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"

namespace dbkeeper::server {

void ChangePermissions(const PermissionStatement& statement, Workspace& workspace,
                       Resolver& resolver);

}  // namespace dbkeeper::server
