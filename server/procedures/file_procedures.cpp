// Databases taken in and let go, and the history of backups.
#include "server/engine/database_definition.h"
#include "server/procedures/procedure_table.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

void AttachDatabase(ProcedureCall& call) {
  DatabaseDefinition(call.workspace())
      .Attach(call.Text("@dbname"), call.Text("@filename1"), call.Text("@filename2"), call.sink());
}

void AttachSingleFile(ProcedureCall& call) {
  DatabaseDefinition(call.workspace())
      .Attach(call.Text("@dbname"), call.Text("@physname"), "", call.sink());
}

void DetachDatabase(ProcedureCall& call) {
  const std::string name = call.Text("@dbname");
  DatabaseDefinition(call.workspace()).Detach(name);
  ServerMessage message;
  message.severity = 0;
  message.text = "Successfully detached database '" + name + "'.";
  call.sink().OnMessage(message);
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_attach_db", "@dbname, @filename1, @filename2=", AttachDatabase},
    {"sp_attach_single_file_db", "@dbname, @physname", AttachSingleFile},
    {"sp_detach_db", "@dbname, @skipchecks=", DetachDatabase},
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

std::span<const ProcedureRow> FileProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
