// "Server role": the fixed roles of the server.

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

void PopupMenu_SvRole_PropertyClick(const CommandContext& context) {
  const ListItem* const row = context.workbench.List.Selected();
  if (row == nullptr) return;
  TFormRole& form = context.program.FormRole;
  form.SetUp("master", std::string(row->SubItem(0)), "Server");
  context.workbench.Host.windows.ShowModal(form);
}

constexpr MenuRow kServerRoleRows[] = {
    {0, "PopupMenu_SvRole_Property", "ﾌﾟﾛﾊﾟﾃｨ", &PopupMenu_SvRole_PropertyClick, &RowSelected},
    SqlRow("PopupMenu_SvRole_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
};
constexpr MenuTable kServerRoleMenu = {"PopupMenu_SvRole", kServerRoleRows};

}  // namespace

// Deliberately names another statement than the one that runs: operators know it by these words.
constinit const NodeKind kServerRoleNode = {
    2, Match::kText, "Server role", ListServerRoles, &kServerRoleMenu, "exec sp_helpsrvrolemember"};

}  // namespace dbkeeper
