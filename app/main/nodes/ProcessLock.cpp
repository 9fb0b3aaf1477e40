// "Process" and "Lock": who works on the server, and who waits for whom. They share a menu.

#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

void RefreshProcesses(const Workbench& workbench, const std::string& database) {
  const TreeNode* const node = workbench.Tree.Selected();
  const bool processes = node != nullptr && node->Text() == kProcessNode.text;
  (processes ? ListProcesses : ListLocks)(workbench, database);
}

constexpr RowCommand PopupMenu_Process_Lock_KillClick = {
    .question = "spid:%C を削除してよろしいですか?",
    .use = "use master",
    .statement = "kill [%C]",
    .status = "kill  = %C",
    .refresh = RefreshProcesses,
};

constexpr MenuRow kProcessLockRows[] = {
    kRefreshRow,
    SqlRow("PopupMenu_Process_Lock_SQL", &PopupMenu_Databases_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Process_Lock_Kill", "Kill", &PopupMenu_Process_Lock_KillClick, &RowSelected},
};
constexpr MenuTable kProcessLockMenu = {"PopupMenu_Process_Lock", kProcessLockRows};

}  // namespace

// Both deliberately name master, though the lists run in msdb: operators know them by these words.
constinit const NodeKind kProcessNode = {2,
                                         Match::kText,
                                         "Process",
                                         ListProcesses,
                                         &kProcessLockMenu,
                                         "EXEC exec sp_who      (USE master)"};
constinit const NodeKind kLockNode = {
    2, Match::kText, "Lock", ListLocks, &kProcessLockMenu, "EXEC sp_lock          (USE master)"};

}  // namespace dbkeeper
