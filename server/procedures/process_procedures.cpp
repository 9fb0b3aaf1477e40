// sp_who, sp_lock: from the sessions and their transactions.
#include "server/procedures/procedure_table.h"

namespace dbkeeper::server {

namespace {

constexpr ProcedureRow kProcedures[] = {
    {"sp_who", "@loginame=", nullptr, R"(
select spid, ecid, status, loginame, hostname, convert(char(5), blocked) as blk,
  convert(nchar(128), db_name(dbid)) as dbname, cmd
from master.dbo.sysprocesses
where @loginame is null or loginame = @loginame or convert(nvarchar(10), spid) = @loginame
  or (lower(@loginame) = N'active' and cmd <> 'AWAITING COMMAND')
order by spid)"},
    {"sp_lock", "@spid1=, @spid2=", nullptr, R"(
select convert(smallint, req_spid) as spid, rsc_dbid as dbid, rsc_objid as ObjId,
  rsc_indid as IndId, case rsc_type when 5 then 'TAB' else 'DB' end as Type,
  rsc_text as Resource, case req_mode when 3 then 'S' when 8 then 'IX' else 'X' end as Mode,
  case req_status when 1 then 'GRANT' else 'WAIT' end as Status
from master.dbo.syslockinfo
where @spid1 is null or req_spid = @spid1 or req_spid = @spid2)"},
};

}  // namespace

std::span<const ProcedureRow> ProcessProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
