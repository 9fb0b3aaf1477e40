// "BackUpDevice": the backup devices of the server.

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

void PopupMenu_BackUp_CreateClick(const CommandContext& context) {
  context.workbench.Host.windows.ShowModal(context.program.Form_BackupMedia);
}

constexpr RowCommand PopupMenu_BackUp_DropClick = {
    .question = "ﾊﾞｯｸｱｯﾌﾟﾒﾃﾞｨｱ:%N を削除してよろしいですか?",
    .use = "use master",
    .statement = "EXEC sp_dropdevice [%N]",
    .status = "EXEC sp_dropdevice '%N'",
    .refresh = ListBackupDevices,
};

constexpr MenuRow kBackUpDeviceRows[] = {
    {0, "PopupMenu_BackUp_Create", "新規ﾊﾞｯｸｱｯﾌﾟﾃﾞﾊﾞｲｽ...", &PopupMenu_BackUp_CreateClick},
    SqlRow("PopupMenu_BackUp_SQL", &PopupMenu_Databases_SQLClick),
    kCsvRow,
    {0, "PopupMenu_BackUp_Drop", "削除", &PopupMenu_BackUp_DropClick, &RowSelected},
};
constexpr MenuTable kBackUpDeviceMenu = {"PopupMenu_BackUp", kBackUpDeviceRows};

}  // namespace

constinit const NodeKind kBackUpDeviceNode = {
    2,
    Match::kText,
    "BackUpDevice",
    ListBackupDevices,
    &kBackUpDeviceMenu,
    "select * from master.dbo.sysdevices where status=16"};

}  // namespace dbkeeper
