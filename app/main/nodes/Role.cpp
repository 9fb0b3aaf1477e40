// "Role": the roles of a database.

#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

constexpr RowCommand PopupMenu_Roles_DropClick = {
    .question = "Role:%N をこのﾃﾞｰﾀﾍﾞｰｽから削除してよろしいですか?",
    .use = "use [%D]",
    .statement = "exec sp_droprole [%N]",
    .status = "exec sp_droprole '%N'",
    .refresh = ListDatabaseRoles,
};

constexpr MenuRow kRoleRows[] = {
    {0, "PopupMenu_Roles_Create", "新規ﾛｰﾙ...", kNoCommand},
    {0, "PopupMenu_Roles_Property", "ﾌﾟﾛﾊﾟﾃｨ", kNoCommand, &RowSelected},
    kRefreshRow,
    SqlRow("PopupMenu_Roles_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Roles_Drop", "削除", &PopupMenu_Roles_DropClick, &RowSelected},
};
constexpr MenuTable kRoleMenu = {"PopupMenu_Roles", kRoleRows};

}  // namespace

constinit const NodeKind kRoleNode = {3,          Match::kText,      "Role", ListDatabaseRoles,
                                      &kRoleMenu, "exec sp_helprole"};

}  // namespace dbkeeper
