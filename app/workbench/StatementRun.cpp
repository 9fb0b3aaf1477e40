#include "app/workbench/StatementRun.h"

namespace dbkeeper {

namespace {

void Tell(const Workbench& workbench, const StatementRun& run) {
  const bool told = run.status.empty() && !run.statements.empty();
  workbench.Status.SimpleText = " >" + (told ? run.statements.back() : run.status);
}

}  // namespace

bool RunStatements(const Workbench& workbench, const StatementRun& run) {
  if (!run.question.empty() && !workbench.ConfirmCaution(run.question)) return false;
  Query& query = workbench.Session.ADOQuerySystem;
  if (run.rule == StatusRule::kAround) workbench.Status.SimpleText = " *";
  const BusyScope busy(workbench.Host.windows);
  if (!run.use.empty()) query.Command(run.use);
  if (run.rule == StatusRule::kBefore) Tell(workbench, run);
  // A second scope, because its beginning paints the status bar.
  const BusyScope told(workbench.Host.windows);
  for (const std::string& statement : run.statements) query.Command(statement);
  if (run.rule == StatusRule::kAround) Tell(workbench, run);
  if (run.refresh != nullptr) run.refresh(workbench, run.database);
  return true;
}

}  // namespace dbkeeper
