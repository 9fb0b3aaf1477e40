// The history of backups, which msdb keeps.
#include "server/procedures/procedure_call.h"

namespace dbkeeper::server {

namespace {

constexpr ProcedureRow kProcedures[] = {
    {"sp_delete_backuphistory", "@oldest_date", nullptr, R"(
delete from msdb.dbo.backupfile where backup_set_id in
  (select backup_set_id from msdb.dbo.backupset
   where backup_finish_date < convert(datetime, @oldest_date))
delete from msdb.dbo.backupset where backup_finish_date < convert(datetime, @oldest_date)
delete from msdb.dbo.backupmediafamily where media_set_id not in
  (select media_set_id from msdb.dbo.backupset)
delete from msdb.dbo.backupmediaset where media_set_id not in
  (select media_set_id from msdb.dbo.backupset))"},
};

}  // namespace

std::span<const ProcedureRow> BackupHistoryProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
