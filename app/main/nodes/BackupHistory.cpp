// "Backup": the backup history of a database.

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "app/support/DateText.h"
#include "app/support/NumberText.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

void PopupMenu_DB_BackUp_RestoreClick(const CommandContext& context) {
  const ListItem* const row = context.workbench.List.Selected();
  if (row == nullptr) return;
  TFormRestore& form = context.program.FormRestore;
  form.SetUp(NamesOf(*row, context.workbench.Tree).database, ParseInteger(row->Caption()));
  context.workbench.Host.windows.ShowModal(form);
}

void PopupMenu_DB_BackUp_Direct_RestoreClick(const CommandContext& context) {
  TFormRestore& form = context.program.FormRestore;
  form.SetUp(NamesOf({}, context.workbench.Tree).database, 0);
  context.workbench.Host.windows.ShowModal(form);
}

// Relies on the current database being msdb, which the list of the backup history leaves behind.
void PopupMenu_DB_BackUp_Drop_LogClick(const CommandContext& context) {
  const DateTimeValue oldest = AddDays(context.workbench.Host.clock.Now(), -7);
  RunStatements(context.workbench, {.statements = {"exec sp_delete_backuphistory @oldest_date = '" +
                                                   FormatDateTime(oldest, "yyyy/mm/dd") + "'"}});
  context.workbench.Status.SimpleText = "";
}

constexpr MenuRow kBackupHistoryRows[] = {
    {0, "PopupMenu_DB_BackUp_Restore", "レストア実行 ...", &PopupMenu_DB_BackUp_RestoreClick,
     &RowSelected},
    {0, "PopupMenu_DB_BackUp_Direct_Restore", "ファイルを直接指定してレストア実行 ...",
     &PopupMenu_DB_BackUp_Direct_RestoreClick, nullptr, MenuLook::kInvisible},
    {0, "PopupMenu_DB_BackUp_Drop_Log", "ﾊﾞｯｸｱｯﾌﾟ履歴の削除 (Getdate-7)",
     &PopupMenu_DB_BackUp_Drop_LogClick},
    SqlRow("PopupMenu_DB_BackUp_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
};
constexpr MenuTable kBackupHistoryMenu = {"PopupMenu_DB_BackUp", kBackupHistoryRows};

}  // namespace

constinit const NodeKind kBackupHistoryNode = {3,
                                               Match::kText,
                                               "Backup",
                                               ListBackupHistory,
                                               &kBackupHistoryMenu,
                                               "select * from backupset   (msdb)"};

}  // namespace dbkeeper
