// "Login": the logins of the server.

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kIsWindowsLogin = 6;  // the sub-item

// The label's spelling is the one that operators know.
constexpr std::string_view kDropLoginQuestion = "Longin:%N を削除してよろしいですか?";

constexpr RowCommand kRevokeWindowsLogin = {
    .question = kDropLoginQuestion,
    .statement = "EXEC sp_revokelogin @loginame = [%N]",
    .refresh = ListLogins,
};

constexpr RowCommand kDropLogin = {
    .question = kDropLoginQuestion,
    .statement = "EXEC sp_droplogin [%N]",
    .refresh = ListLogins,
};

void PopupMenu_Login_dropClick(const CommandContext& context) {
  const ListItem* const row = context.workbench.List.Selected();
  const bool windows = row != nullptr && row->SubItem(kIsWindowsLogin) == "1";
  RunRowCommand(context.workbench, windows ? kRevokeWindowsLogin : kDropLogin);
}

void PopupMenu_Login_CreateClick(const CommandContext& context) {
  TForm_Login_Property& form = context.program.Form_Login_Property;
  form.SetUpNew();
  context.workbench.Host.windows.ShowModal(form);
}

void PopupMenu_Login_PasswordClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  if (workbench.List.SelCount() != 1) return;
  TForm_Login_Property& form = context.program.Form_Login_Property;
  form.SetUpExisting(std::string(workbench.List.Selected()->SubItem(0)));
  workbench.Host.windows.ShowModal(form);
}

constexpr MenuRow kLoginRows[] = {
    {0, "PopupMenu_Login_Create", "新規ﾛｸﾞｲﾝ...", &PopupMenu_Login_CreateClick},
    {0, "PopupMenu_Login_Password", "ﾊﾟｽﾜｰﾄﾞ変更", &PopupMenu_Login_PasswordClick, &RowSelected},
    kRefreshRow,
    SqlRow("PopupMenu_Login_SQL", &PopupMenu_Databases_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Login_drop", "削除", &PopupMenu_Login_dropClick, &RowSelected},
};
constexpr MenuTable kLoginMenu = {"PopupMenu_Login", kLoginRows};

}  // namespace

constinit const NodeKind kLoginNode = {
    2, Match::kText, "Login", ListLogins, &kLoginMenu, "select * from master.dbo.syslogins"};

}  // namespace dbkeeper
