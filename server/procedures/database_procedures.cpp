// Databases as a whole: properties, sizes, options, files, backup devices and history.
#include <array>
#include <cstdio>

#include "server/engine/database_definition.h"
#include "server/procedures/procedure_call.h"
#include "server/storage/host_file.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr std::int64_t kKilobyte = 1024;

std::string Kilobytes(std::int64_t bytes) {
  return std::to_string((bytes + kKilobyte - 1) / kKilobyte) + " KB";
}

std::string Megabytes(std::int64_t bytes) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.2f MB",
                static_cast<double>(bytes) / (kKilobyte * kKilobyte));
  return text.data();
}

constexpr std::string_view kDatabases = R"(
select d.name, convert(nvarchar(13), str(database_bytes(d.dbid) / 1048576.0, 10, 2) + N' MB')
    as db_size, l.name as owner, d.dbid, convert(nvarchar(11), d.crdate) as created,
  convert(nvarchar(600), N'Status=' + case when d.status & 512 = 512 then N'OFFLINE'
      else N'ONLINE' end + N', Updateability=' + case when d.status & 1024 = 1024
      then N'READ_ONLY' else N'READ_WRITE' end
    + case when d.status & 512 = 512 then N'' else N', UserAccess='
      + case when d.status & 4096 = 4096 then N'SINGLE_USER'
        when d.status & 2048 = 2048 then N'RESTRICTED_USER' else N'MULTI_USER' end
      + N', Recovery=' + case when d.status & 8 = 8 then N'SIMPLE'
        when d.status & 4 = 4 then N'BULK_LOGGED' else N'FULL' end
      + N', Version=539, Collation=Japanese_CI_AS, SQLSortOrder=0'
      + case when d.status & 16 = 16 then N', IsTornPageDetectionEnabled' else N'' end
      + case when d.status & 1 = 1 then N', IsAutoClose' else N'' end
      + case when d.status & 4194304 = 4194304 then N', IsAutoShrink' else N'' end
      + case when d.status2 & 16777216 = 16777216 then N', IsAutoCreateStatistics' else N'' end
      + case when d.status2 & 1073741824 = 1073741824 then N', IsAutoUpdateStatistics'
        else N'' end end) as status, d.cmptlevel as compatibility_level
from master.dbo.sysdatabases d left join master.dbo.syslogins l on l.sid = d.sid
where d.name = @dbname or (@dbname is null and d.status & 512 = 0)
order by d.name)";

constexpr std::string_view kFiles = R"(
select convert(sysname, rtrim(name)) as name, fileid, filename,
  case groupid when 1 then 'PRIMARY' else null end as filegroup,
  convert(nvarchar(15), size * 8) + N' KB' as size, N'Unlimited' as maxsize,
  convert(nvarchar(15), growth) + N'%' as growth,
  case groupid when 0 then 'log only' else 'data only' end as usage
from sysfiles order by fileid)";

// All databases are listed but for those that nobody can use.
void TellOffline(ProcedureCall& call) {
  SqliteStatement row = call.sqlite().Prepare(
      "select name from main.sysdatabases where status & 512 <> 0 order by name");
  while (row.Step()) call.Inform(15622, {row.Text(0)});
}

void HelpDatabase(ProcedureCall& call) {
  const std::string wanted = call.Text("@dbname");
  const auto database = call.workspace().LookUpDatabase(wanted);
  if (call.Has("@dbname") && !database) Fail(15010, {wanted});
  call.Run(kDatabases);
  if (!call.Has("@dbname")) TellOffline(call);
  if (!database || database->Has(DatabaseStatus::kOffline)) return;
  call.workspace().Open(*database);
  call.workspace().SetCurrent(*database);
  call.Run(kFiles);
}

// Bytes of SQLite's pages.
struct PageUse {
  std::int64_t reserved = 0;
  std::int64_t data = 0;
  std::int64_t indexes = 0;
  std::int64_t unused = 0;
};

PageUse UseOf(ProcedureCall& call, const Catalog& catalog, const std::string& table) {
  PageUse use;
  const std::string schema = QuoteName(catalog.alias()) + ".";
  SqliteStatement part = call.sqlite().Prepare(
      "select type, name from " + schema + "sqlite_schema where tbl_name = ?1", table);
  while (part.Step()) {
    SqliteStatement pages = call.sqlite().Prepare(
        "select pgsize, unused from dbstat where schema = ?1 and aggregate = 1 and name = ?2",
        catalog.alias(), part.Text(1));
    if (!pages.Step()) continue;
    use.reserved += pages.Integer(0);
    (part.Bytes(0) == "table" ? use.data : use.indexes) += pages.Integer(0);
  }
  return use;
}

std::int64_t Pragma(ProcedureCall& call, const std::string& alias, const std::string& name) {
  return call.sqlite().IntegerOf(0, "pragma " + QuoteName(alias) + "." + name);
}

void SpaceOfTable(ProcedureCall& call) {
  const FoundObject found = call.Object("@objname", "U S");
  const Catalog catalog = call.resolver().CatalogAt(found);
  const PageUse use = UseOf(call, catalog, found.object.name);
  const std::int64_t rows =
      call.sqlite().IntegerOf(0, "select count(*) from " + catalog.Path(found.object.name));
  std::string count = std::to_string(rows);
  count.resize(std::max<std::size_t>(count.size(), 11), ' ');
  call.Rows(
      "name sysname, rows char(11), reserved nvarchar(18), data nvarchar(18), "
      "index_size nvarchar(18), unused nvarchar(18)",
      {{found.object.name, count, Kilobytes(use.reserved), Kilobytes(use.data),
        Kilobytes(use.indexes), Kilobytes(use.unused)}});
}

void SpaceUsed(ProcedureCall& call) {
  if (call.Has("@objname")) {
    SpaceOfTable(call);
    return;
  }
  const DatabaseInfo database = call.database();
  const std::string alias = call.catalog().alias();
  const std::string schema = QuoteName(alias) + ".";
  const std::int64_t page = Pragma(call, alias, "page_size");
  const std::int64_t pages = Pragma(call, alias, "page_count");
  const std::int64_t free = Pragma(call, alias, "freelist_count");
  const std::string file = call.workspace().instance().FileOf(database.dbid).string();
  call.Rows(
      "database_name sysname, database_size nvarchar(18), [unallocated space] nvarchar(18)",
      {{database.name, Megabytes(pages * page + BytesOf(file + "-wal")), Megabytes(free * page)}});
  PageUse use;
  SqliteStatement part = call.sqlite().Prepare(
      "select coalesce(m.type, 'table'), sum(s.pgsize) from dbstat s left join " + schema +
          "sqlite_schema m on m.name = s.name where s.schema = ?1 and s.aggregate = 1 group by 1",
      alias);
  while (part.Step()) {
    (part.Bytes(0) == "index" ? use.indexes : use.data) += part.Integer(1);
  }
  use.reserved = (pages - free) * page;
  use.unused = std::max<std::int64_t>(use.reserved - use.data - use.indexes, 0);
  call.Rows(
      "reserved nvarchar(18), data nvarchar(18), index_size nvarchar(18), unused nvarchar(18)",
      {{Kilobytes(use.reserved), Kilobytes(use.data), Kilobytes(use.indexes),
        Kilobytes(use.unused)}});
}

struct OldOption {
  std::string_view name;
  std::string_view when_true;
  std::string_view when_false;
};
constexpr OldOption kOldOptions[] = {
    {"offline", "OFFLINE", "ONLINE"},
    {"read only", "READ_ONLY", "READ_WRITE"},
    {"single user", "SINGLE_USER", "MULTI_USER"},
    {"dbo use only", "RESTRICTED_USER", "MULTI_USER"},
    {"autoclose", "AUTO_CLOSE ON", "AUTO_CLOSE OFF"},
    {"autoshrink", "AUTO_SHRINK ON", "AUTO_SHRINK OFF"},
    {"torn page detection", "TORN_PAGE_DETECTION ON", "TORN_PAGE_DETECTION OFF"},
    {"trunc. log on chkpt.", "RECOVERY SIMPLE", "RECOVERY FULL"},
    {"auto create statistics", "AUTO_CREATE_STATISTICS ON", "AUTO_CREATE_STATISTICS OFF"},
    {"auto update statistics", "AUTO_UPDATE_STATISTICS ON", "AUTO_UPDATE_STATISTICS OFF"},
};

void SetOption(ProcedureCall& call) {
  const std::string name = call.Text("@dbname");
  call.workspace().FindDatabase(name, 15010);
  const std::string value = call.Text("@optvalue");
  const bool on = SameName(value, "true") || SameName(value, "on");
  if (!on && !SameName(value, "false") && !SameName(value, "off")) Fail(15241);
  for (const OldOption& option : kOldOptions) {
    if (!SameName(option.name, call.Text("@optname"))) continue;
    const std::string word(on ? option.when_true : option.when_false);
    DatabaseDefinition(call.workspace()).Alter({name, {word}, {}, {}});
    return;
  }
  Fail(15011, {call.Text("@optname")});
}

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
  call.Say("Successfully detached database '" + name + "'.");
}

// sysdevices: status of a backup device, control types of a disk and a tape.
constexpr int kBackupDevice = 16;
constexpr int kDisk = 2;
constexpr int kTape = 5;

bool IsDevice(ProcedureCall& call, const std::string& name) {
  return call.Exists("select 1 from main.sysdevices where name = ?1", name);
}

void AddDevice(ProcedureCall& call) {
  call.NeedAdministrator();
  const std::string type = call.Text("@devtype");
  const std::string name = call.Text("@logicalname");
  const std::string path = call.Text("@physicalname");
  const bool is_disk = SameName(type, "disk");
  if (!is_disk && !SameName(type, "tape")) Fail(15600, {"sp_addumpdevice"});
  if (name.empty()) Fail(15006, {name});
  if (IsDevice(call, name)) Fail(15026, {name});
  if (call.Exists("select 1 from main.sysdevices where phyname = ?1", path)) Fail(15061, {path});
  call.ChangeMaster("insert into main.sysdevices values (?, 0, 0, 0, ?, ?, ?)", name, kBackupDevice,
                    is_disk ? kDisk : kTape, path);
  call.Say(is_disk ? "'Disk' device added." : "'Tape' device added.");
}

void DropDevice(ProcedureCall& call) {
  call.NeedAdministrator();
  const std::string name = call.Text("@logicalname");
  if (!IsDevice(call, name)) Fail(15012, {name});
  if (call.Has("@delfile")) throw Unsupported("sp_dropdevice with @delfile");
  call.ChangeMaster("delete from main.sysdevices where name = ?1", name);
  call.Inform(15463);
}

void CheckDevice(ProcedureCall& call) {
  const std::string name = call.Text("@devname");
  if (!name.empty() && !IsDevice(call, name)) Fail(15012, {name});
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_helpdb", "@dbname=", HelpDatabase},
    {"sp_spaceused", "@objname=, @updateusage=", SpaceUsed},
    {"sp_dboption", "@dbname, @optname, @optvalue", SetOption},
    {"sp_attach_db", "@dbname, @filename1, @filename2=", AttachDatabase},
    {"sp_attach_single_file_db", "@dbname, @physname", AttachSingleFile},
    {"sp_detach_db", "@dbname, @skipchecks=", DetachDatabase},
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

std::span<const ProcedureRow> DatabaseProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
