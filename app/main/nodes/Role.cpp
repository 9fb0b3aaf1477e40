// "Role": the roles of a database.

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "app/support/TextHelpers.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

// The list is that of the session's database, and says so where that is another than the node's.
std::string WhoseRoles(const Workbench& workbench, const std::string& database) {
  const std::string& current = workbench.Session.CurrentDatabase();
  return EqualsIgnoringCase(current, database) ? "" : "    (Use " + current + ")";
}

void Open(const CommandContext& context, const RowNames& names) {
  TFormRole& form = context.program.FormRole;
  form.SetUp(names.database, names.name, kDatabaseRole);
  context.workbench.Host.windows.ShowModal(form);
}

void PopupMenu_Roles_CreateClick(const CommandContext& context) {
  Open(context, NamesOf({}, context.workbench.Tree));
}

void PopupMenu_Roles_PropertyClick(const CommandContext& context) {
  const ListItem* const row = context.workbench.List.Selected();
  if (row != nullptr) Open(context, NamesOf(*row, context.workbench.Tree));
}

constexpr RowCommand PopupMenu_Roles_DropClick = {
    .question = "Role:%N をこのﾃﾞｰﾀﾍﾞｰｽから削除してよろしいですか?",
    .use = "use [%D]",
    .statement = "exec sp_droprole [%N]",
    .status = "exec sp_droprole '%N'",
    .refresh = ListDatabaseRoles,
};

constexpr MenuRow kRoleRows[] = {
    {0, "PopupMenu_Roles_Create", "新規ﾛｰﾙ...", &PopupMenu_Roles_CreateClick},
    {0, "PopupMenu_Roles_Property", "ﾌﾟﾛﾊﾟﾃｨ", &PopupMenu_Roles_PropertyClick, &RowSelected},
    kRefreshRow,
    SqlRow("PopupMenu_Roles_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Roles_Drop", "削除", &PopupMenu_Roles_DropClick, &RowSelected},
};
constexpr MenuTable kRoleMenu = {"PopupMenu_Roles", kRoleRows};

}  // namespace

constinit const NodeKind kRoleNode = {3,          Match::kText,       "Role",    ListDatabaseRoles,
                                      &kRoleMenu, "exec sp_helprole", WhoseRoles};

}  // namespace dbkeeper
