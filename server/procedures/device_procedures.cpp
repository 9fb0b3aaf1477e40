// Backup devices.
#include "server/procedures/procedure_table.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// sysdevices: status of a backup device, control types of a disk and a tape.
constexpr int kBackupDevice = 16;
constexpr int kDisk = 2;
constexpr int kTape = 5;

void AddDevice(ProcedureCall& call) {
  call.NeedAdministrator();
  const std::string type = call.Text("@devtype");
  const std::string name = call.Text("@logicalname");
  const std::string path = call.Text("@physicalname");
  if (!SameName(type, "disk") && !SameName(type, "tape")) Fail(15600, {"sp_addumpdevice"});
  if (name.empty()) Fail(15006, {name});
  if (call.Exists("select 1 from main.sysdevices where name = ?1", name)) Fail(15026, {name});
  if (call.Exists("select 1 from main.sysdevices where phyname = ?1", path)) Fail(15061, {path});
  call.ChangeMaster("insert into main.sysdevices values (?, 0, 0, 0, ?, ?, ?)", name, kBackupDevice,
                    SameName(type, "disk") ? kDisk : kTape, path);
  ServerMessage message;
  message.severity = 0;
  message.text = SameName(type, "disk") ? "'Disk' device added." : "'Tape' device added.";
  call.sink().OnMessage(message);
}

void DropDevice(ProcedureCall& call) {
  call.NeedAdministrator();
  const std::string name = call.Text("@logicalname");
  if (!call.Exists("select 1 from main.sysdevices where name = ?1", name)) Fail(15012, {name});
  if (call.Has("@delfile")) Fail(50001, {"sp_dropdevice with @delfile"});
  call.ChangeMaster("delete from main.sysdevices where name = ?1", name);
  call.Inform(15463);
}

void CheckDevice(ProcedureCall& call) {
  const std::string name = call.Text("@devname");
  if (!name.empty() && !call.Exists("select 1 from main.sysdevices where name = ?1", name)) {
    Fail(15012, {name});
  }
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_addumpdevice",
     "@devtype, @logicalname, @physicalname, @cntrltype=, @devstatus=", AddDevice},
    {"sp_dropdevice", "@logicalname, @delfile=", DropDevice},
    {"sp_helpdevice", "@devname=", CheckDevice, R"(
select name as device_name, phyname as physical_name,
  convert(nvarchar(255), case cntrltype when 2 then 'disk, backup device'
    else 'tape, backup device' end) as description,
  convert(int, status) as status, cntrltype, size
from master.dbo.sysdevices where @devname is null or name = @devname order by name)"},
};

}  // namespace

std::span<const ProcedureRow> DeviceProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
