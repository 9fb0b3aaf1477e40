// "User": the users of a database.

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

void PopupMenu_Users_CreateClick(const CommandContext& context) {
  context.workbench.Status.SimpleText = " *";
  TForm_User& form = context.program.Form_User;
  form.SetUp(NamesOf({}, context.workbench.Tree).database);
  context.workbench.Host.windows.ShowModal(form);
}

constexpr RowCommand PopupMenu_Users_DropClick = {
    .question = "ユーザー:%N をこのﾃﾞｰﾀﾍﾞｰｽから削除してよろしいですか?",
    .use = "use [%D]",
    .statement = "EXEC sp_revokedbaccess [%N]",
    .status = "exec sp_revokedbaccess'%N'",
    .refresh = ListUsers,
};

constexpr MenuRow kUserRows[] = {
    {0, "PopupMenu_Users_Create", "新規ﾕｰｻﾞｰ...", &PopupMenu_Users_CreateClick},
    kRefreshRow,
    SqlRow("PopupMenu_Users_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Users_Drop", "削除", &PopupMenu_Users_DropClick, &RowSelected},
};
constexpr MenuTable kUserMenu = {"PopupMenu_Users", kUserRows};

}  // namespace

constinit const NodeKind kUserNode = {
    3,         Match::kText, "User",
    ListUsers, &kUserMenu,   "select * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)"};

}  // namespace dbkeeper
