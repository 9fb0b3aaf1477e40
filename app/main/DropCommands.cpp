// What deletes the object of the selected row: one table row for each kind.

#include <string_view>

#include "app/main/RowCommand.h"
#include "app/main/UnitMain.h"
#include "catalog/ObjectLists.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

constexpr std::string_view kUseDatabase = "use [%D]";

constexpr RowCommand kDropTable = {
    .question = "Table:%D.dbo.%N を削除してよろしいですか?",
    .use = kUseDatabase,
    .statement = "drop Table [%D].dbo.[%N]",
    .refresh = ListTablesAlone,  // deliberately without descriptions, whatever the switch says
};

// Deliberately without the database and the owner, as for procedures: the server refuses a database
// before the name of either.
constexpr RowCommand kDropView = {
    .question = "View:%D.dbo.%N を削除してよろしいですか?",
    .use = kUseDatabase,
    .statement = "drop View [%N]",
    .refresh = ListViews,
};

constexpr RowCommand kDropProcedure = {
    .question = "Procedure:%D.dbo.%N を削除してよろしいですか?",
    .use = kUseDatabase,
    .statement = "drop Procedure [%N]",
    .refresh = ListProcedures,
};

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

constexpr std::size_t kIsWindowsLogin = 6;  // the sub-item

constexpr RowCommand kDropDevice = {
    .question = "ﾊﾞｯｸｱｯﾌﾟﾒﾃﾞｨｱ:%N を削除してよろしいですか?",
    .use = "use master",
    .statement = "EXEC sp_dropdevice [%N]",
    .status = "EXEC sp_dropdevice '%N'",
    .refresh = ListBackupDevices,
};

constexpr RowCommand kDropJob = {
    .question = "ｼﾞｮﾌﾞ:%N を削除してよろしいですか?",
    .use = "use msdb",
    .statement = "EXEC sp_delete_job @job_name = [%N]",
    .status = "EXEC sp_delete_job @job_name = '%N'     (msdb)",
    .refresh = ListJobs,
};

constexpr RowCommand kDropUser = {
    .question = "ユーザー:%N をこのﾃﾞｰﾀﾍﾞｰｽから削除してよろしいですか?",
    .use = kUseDatabase,
    .statement = "EXEC sp_revokedbaccess [%N]",
    .status = "exec sp_revokedbaccess'%N'",
    .refresh = ListUsers,
};

constexpr RowCommand kDropRole = {
    .question = "Role:%N をこのﾃﾞｰﾀﾍﾞｰｽから削除してよろしいですか?",
    .use = kUseDatabase,
    .statement = "exec sp_droprole [%N]",
    .status = "exec sp_droprole '%N'",
    .refresh = ListDatabaseRoles,
};

}  // namespace

void TFormMain::PopupMenu_Table_DropClick() { RunRowCommand(workbench_, kDropTable); }
void TFormMain::PopupMenu_View_DropClick() { RunRowCommand(workbench_, kDropView); }
void TFormMain::PopupMenu_Procedure_DropClick() { RunRowCommand(workbench_, kDropProcedure); }
void TFormMain::PopupMenu_BackUp_DropClick() { RunRowCommand(workbench_, kDropDevice); }
void TFormMain::PopupMenu_Job_DropClick() { RunRowCommand(workbench_, kDropJob); }
void TFormMain::PopupMenu_Users_DropClick() { RunRowCommand(workbench_, kDropUser); }
void TFormMain::PopupMenu_Roles_DropClick() { RunRowCommand(workbench_, kDropRole); }

void TFormMain::PopupMenu_Login_dropClick() {
  const ListItem* const row = ListViewMain.Selected();
  const bool windows = row != nullptr && row->SubItem(kIsWindowsLogin) == "1";
  RunRowCommand(workbench_, windows ? kRevokeWindowsLogin : kDropLogin);
}

}  // namespace dbkeeper
