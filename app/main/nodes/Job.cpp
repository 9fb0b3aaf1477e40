// "Job": the jobs of the server's agent.

#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

// A job that is not assigned to a server has no next run.
constexpr std::string_view kNoNextRun = "0 0";
constexpr std::size_t kJobNextRun = 5;  // the sub-item

constexpr RowCommand kAddJobToServer = {
    .use = "use msdb",
    .statement = "exec sp_add_jobserver @job_name = [%N]",
    .status = "exec sp_add_jobserver @job_name = '%N'     (msdb)",
    .refresh = ListJobs,
};

// Deliberately always "(local)", whatever server the session is connected to: jobs are assigned to
// the server that they stand on.
constexpr RowCommand kDeleteJobFromServer = {
    .use = "use msdb",
    .statement = "exec sp_delete_jobserver @job_name = [%N],@server_name = '(local)'",
    .status = "exec sp_delete_jobserver @job_name = '%N',@server_name = '(local)'     (msdb)",
    .refresh = ListJobs,
};

constexpr RowCommand PopupMenu_Job_DropClick = {
    .question = "ｼﾞｮﾌﾞ:%N を削除してよろしいですか?",
    .use = "use msdb",
    .statement = "EXEC sp_delete_job @job_name = [%N]",
    .status = "EXEC sp_delete_job @job_name = '%N'     (msdb)",
    .refresh = ListJobs,
};

void PopupMenu_Job_AddJobClick(const CommandContext& context) {
  const ListView& list = context.workbench.List;
  if (list.SelCount() != 1) return;
  if (list.Selected()->SubItem(kJobNextRun) != kNoNextRun) {
    return context.workbench.Host.dialogs.ShowMessage("指定されたJobはServerに投入済みです");
  }
  RunRowCommand(context.workbench, kAddJobToServer);
}

void PopupMenu_Job_DeleteJobClick(const CommandContext& context) {
  const ListView& list = context.workbench.List;
  if (list.SelCount() != 1) return;
  if (list.Selected()->SubItem(kJobNextRun) == kNoNextRun) {
    return context.workbench.Host.dialogs.ShowMessage("指定されたJobはServerに投入されていません");
  }
  RunRowCommand(context.workbench, kDeleteJobFromServer);
}

constexpr MenuRow kJobRows[] = {
    {0, "PopupMenu_Job_Create", "新規ｼﾞｮﾌﾞ...", kNoCommand},
    {0, "PopupMenu_Job_Property", "ﾌﾟﾛﾊﾟﾃｨ", kNoCommand, &RowSelected},
    {0, "PopupMenu_Job_AddJob", "ｼﾞｮﾌﾞの投入", &PopupMenu_Job_AddJobClick, &RowSelected},
    {0, "PopupMenu_Job_DeleteJob", "ｼﾞｮﾌﾞの投入解除", &PopupMenu_Job_DeleteJobClick, &RowSelected},
    kRefreshRow,
    SqlRow("PopupMenu_Job_SQL", &PopupMenu_Databases_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Job_Drop", "削除", &PopupMenu_Job_DropClick, &RowSelected},
};
constexpr MenuTable kJobMenu = {"PopupMenu_Job", kJobRows};

}  // namespace

constinit const NodeKind kJobNode = {
    2, Match::kText, "Job", ListJobs, &kJobMenu, "EXEC sp_help_job            (USE msdb)"};

}  // namespace dbkeeper
