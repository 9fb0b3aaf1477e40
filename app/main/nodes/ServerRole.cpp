// "Server role": the fixed roles of the server.

#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

constexpr MenuRow kServerRoleRows[] = {
    {0, "PopupMenu_SvRole_Property", "ﾌﾟﾛﾊﾟﾃｨ", kNoCommand, &RowSelected},
    SqlRow("PopupMenu_SvRole_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
};
constexpr MenuTable kServerRoleMenu = {"PopupMenu_SvRole", kServerRoleRows};

}  // namespace

// Deliberately names another statement than the one that runs: operators know it by these words.
constinit const NodeKind kServerRoleNode = {
    2, Match::kText, "Server role", ListServerRoles, &kServerRoleMenu, "exec sp_helpsrvrolemember"};

}  // namespace dbkeeper
