#include "server/engine/live_tables.h"

#include <algorithm>
#include <functional>

#include "server/engine/database_files.h"
#include "server/storage/host_file.h"

namespace dbkeeper::server {

namespace {

std::string Number(std::int64_t value) { return std::to_string(value); }

// A text filled up with blanks, as the columns of type nchar hold it.
std::string Padded(const std::string& text, std::size_t width) {
  const auto characters = static_cast<std::size_t>(Utf16Length(text));
  return QuoteText(text + std::string(width > characters ? width - characters : 0, ' '));
}

// The rows, each a list of values, as a table with these columns.
std::string ValuesSource(std::string_view columns, const std::vector<std::string>& rows) {
  std::string source = "(with live(" + std::string(columns) + ") as (values ";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    source.append(i == 0 ? "(" : ", (").append(rows[i]).append(")");
  }
  return source + ") select * from live)";
}

std::string List(const std::vector<std::string>& values) { return Joined(values, ", "); }

std::string ProcessRows(Workspace& workspace) {
  std::vector<std::string> rows;
  for (const SessionRecord& s : workspace.instance().Sessions()) {
    rows.push_back(List({Number(s.spid),
                         "0",
                         Number(s.blocked_by),
                         "x'0000'",
                         "0",
                         Padded(s.blocked_by == 0 ? "MISCELLANEOUS" : "LCK_M_X", 32),
                         Padded("", 256),
                         Number(s.dbid),
                         "1, 0, 0, 0",
                         Number(s.login_time),
                         Number(s.last_batch),
                         "0",
                         Number(s.open_transactions),
                         Padded(s.status, 30),
                         "x'01'",
                         Padded(s.client.host_name, 128),
                         Padded(s.client.program_name, 128),
                         Padded(Number(s.client.process_id), 8),
                         Padded(s.command, 16),
                         Padded("", 128),
                         Padded("", 128),
                         Padded("", 12),
                         Padded("TCP/IP", 12),
                         Padded(s.login, 128),
                         "x''"}));
  }
  return ValuesSource(
      "spid, kpid, blocked, waittype, waittime, lastwaittype, waitresource, dbid, uid, cpu, "
      "physical_io, memusage, login_time, last_batch, ecid, open_tran, status, sid, hostname, "
      "program_name, hostprocess, cmd, nt_domain, nt_username, net_address, net_library, loginame, "
      "context_info",
      rows);
}

// The shared lock on each session's database, and the locks of its transaction.
std::string LockRows(Workspace& workspace) {
  constexpr int kDatabase = 2;
  constexpr int kTable = 5;
  constexpr int kShared = 3;
  constexpr int kIntentExclusive = 8;
  std::vector<std::string> rows;
  const auto add = [&](int spid, const LockRecord& lock, int type, int mode) {
    rows.push_back(List({Padded("", 32), "x'', x''", Number(lock.dbid), "0", Number(lock.object_id),
                         Number(type), "0", Number(mode), lock.waiting ? "3" : "1", "1, 0, 0",
                         Number(spid), "0, 1, 0, null"}));
  };
  for (const SessionRecord& session : workspace.instance().Sessions()) {
    add(session.spid, {session.dbid}, kDatabase, kShared);
    for (const LockRecord& lock : session.locks) {
      add(session.spid, lock, kTable, kIntentExclusive);
    }
  }
  return ValuesSource(
      "rsc_text, rsc_bin, rsc_valblk, rsc_dbid, rsc_indid, rsc_objid, rsc_type, rsc_flag, "
      "req_mode, req_status, req_refcnt, req_cryrefcnt, req_lifetime, req_spid, req_ecid, "
      "req_ownertype, req_transactionID, req_transactionUOW",
      rows);
}

std::string FileRows(Workspace& workspace, const DatabaseInfo& database, const std::string& alias) {
  const std::vector<ListedFile> files = FilesOf(workspace, database, alias);
  const auto row = [&](const ListedFile& file, const char* numbers, const char* status) {
    return List({numbers, Number(ServerPages(file.bytes)), "-1, 10", status, "0",
                 Padded(file.logical_name, 128), Padded(file.physical_name, 260)});
  };
  return ValuesSource("fileid, groupid, size, maxsize, growth, status, perf, name, filename",
                      {row(files[0], "1, 1", "1048578"), row(files[1], "2, 0", "1048642")});
}

std::string ReferenceRows(Workspace&, const DatabaseInfo& database, const std::string& alias) {
  const std::string schema = QuoteName(alias) + ".";
  std::string source = "(select constid, fkeyid, rkeyid, (select min(indid) from " + schema +
                       "sysindexes i where i.id = rkeyid and i.status & 2) as rkeyindid, "
                       "count(*) as keycnt, null as forkeys, null as refkeys, " +
                       Number(database.dbid) + " as fkeydbid, " + Number(database.dbid) +
                       " as rkeydbid";
  for (const char* side : {"fkey", "rkey"}) {
    for (int key = 1; key <= 16; ++key) {
      const std::string number = Number(key);
      source += ", max(case keyno when " + number + " then " + side + " else 0 end) as ";
      source += side + number;
    }
  }
  return source + " from " + schema + "sysforeignkeys group by constid, fkeyid, rkeyid)";
}

std::string ConstraintRows(Workspace&, const DatabaseInfo&, const std::string& alias) {
  return "(select id as constid, parent_obj as id, info as colid, 0 as spare1, case xtype when "
         "'PK' then 1 when 'UQ' then 2 when 'F ' then 3 when 'C ' then 4 else 5 end + case when "
         "info > 0 then 16 else 32 end as status, 4096 as actions, 0 as error from " +
         QuoteName(alias) + ".sysobjects where xtype in ('C ', 'F ', 'PK', 'UQ', 'D '))";
}

std::string IndexRows(Workspace&, const DatabaseInfo&, const std::string& alias) {
  const std::string pages = "ms_state('table_pages', " + QuoteText(alias) + ", id, indid)";
  const std::string rows = "ms_state('table_rows', " + QuoteText(alias) + ", id)";
  return "(select id, status, first, indid, root, minlen, keycnt, groupid, " + pages +
         " as dpages, " + pages + " as reserved, " + pages + " as used, " + rows +
         " as rowcnt, rowmodctr, reserved3, reserved4, xmaxlen, maxirow, OrigFillFactor, "
         "StatVersion, reserved2, FirstIAM, impid, lockflags, pgmodctr, keys, name, statblob, "
         "maxlen, " +
         rows + " as rows from " + QuoteName(alias) + ".sysindexes)";
}

struct LiveTable {
  std::string_view name;
  std::string (*source)(Workspace&, const DatabaseInfo&, const std::string& alias);
};

constexpr LiveTable kLiveTables[] = {
    {"sysprocesses", [](auto& workspace, auto&, auto&) { return ProcessRows(workspace); }},
    {"syslockinfo", [](auto& workspace, auto&, auto&) { return LockRows(workspace); }},
    {"sysfiles", FileRows},
    {"sysreferences", ReferenceRows},
    {"sysconstraints", ConstraintRows},
    {"sysindexes", IndexRows},
};

struct SchemaView {
  std::string_view name;
  std::string_view text;
};

constexpr SchemaView kSchemaViews[] = {
    {"TABLES", R"(create view TABLES as
select db_name() as TABLE_CATALOG, user_name(uid) as TABLE_SCHEMA, name as TABLE_NAME,
  case xtype when 'U' then 'BASE TABLE' else 'VIEW' end as TABLE_TYPE
from sysobjects where xtype in ('U', 'V') and id > 100)"},
    {"VIEWS", R"(create view VIEWS as
select db_name() as TABLE_CATALOG, user_name(o.uid) as TABLE_SCHEMA, o.name as TABLE_NAME,
  c.text as VIEW_DEFINITION, 'NONE' as CHECK_OPTION, 'NO' as IS_UPDATABLE
from sysobjects o join syscomments c on c.id = o.id and c.colid = 1 where o.xtype = 'V')"},
    {"COLUMNS", R"(create view COLUMNS as
select db_name() as TABLE_CATALOG, user_name(o.uid) as TABLE_SCHEMA, o.name as TABLE_NAME,
  c.name as COLUMN_NAME, c.colid as ORDINAL_POSITION, d.text as COLUMN_DEFAULT,
  case c.isnullable when 1 then 'YES' else 'No' end as IS_NULLABLE, t.name as DATA_TYPE,
  case when c.collation is null and c.xtype not in (173, 165) then null else convert(int, c.prec)
    end as CHARACTER_MAXIMUM_LENGTH,
  case when c.xprec > 0 then c.xprec else null end as NUMERIC_PRECISION,
  c.scale as NUMERIC_SCALE, c.collation as COLLATION_NAME
from sysobjects o join syscolumns c on c.id = o.id
  join systypes t on t.xusertype = c.xusertype
  left join syscomments d on d.id = c.cdefault and d.colid = 1
where o.xtype in ('U', 'V') and o.id > 100)"},
};

}  // namespace

std::optional<std::string> LiveTableSource(Workspace& workspace, const DatabaseInfo& database,
                                           const std::string& alias, std::string_view name) {
  for (const LiveTable& table : kLiveTables) {
    if (SameName(table.name, name)) return table.source(workspace, database, alias);
  }
  return std::nullopt;
}

std::string ExtendedPropertySource(const std::string& alias,
                                   const std::vector<std::string>& arguments) {
  const auto argument = [&](std::size_t i) {
    return i < arguments.size() ? "(" + arguments[i] + ")" : std::string("null");
  };
  const auto matches = [](const std::string& column, const std::string& wanted) {
    return "(" + wanted + " is null or " + column + " = " + wanted + ")";
  };
  const std::string schema = QuoteName(alias) + ".";
  const std::string properties = ", p.name, p.value from " + schema + "sysproperties p ";
  const std::string objects = "join " + schema + "sysobjects o on o.id = p.id ";
  const std::string kind =
      "case o.xtype when 'U ' then 'table' when 'V ' then 'view' when 'P ' then 'procedure' end";
  const std::string named = " and " + matches("p.name", argument(0));
  const std::string of_kind =
      named + " and lower(" + argument(1) + ") = 'user' and lower(" + argument(3) + ") = " + kind;
  const std::string part_of_named = of_kind + " and o.name = " + argument(4);
  return "(select null as objtype, null as objname" + properties + "where p.type = 0" + named +
         " and " + argument(1) + " is null union all select upper(" + kind + "), o.name" +
         properties + objects + "where p.type = 3" + of_kind + " and " + argument(5) +
         " is null and " + matches("o.name", argument(4)) + " union all select 'COLUMN', c.name" +
         properties + objects + "join " + schema +
         "syscolumns c on c.id = p.id and c.colid = p.smallid where p.type = 4" + part_of_named +
         " and lower(" + argument(5) + ") = 'column' and " + matches("c.name", argument(6)) +
         " union all select 'INDEX', i.name" + properties + objects + "join " + schema +
         "sysindexes i on i.id = p.id and i.indid = p.smallid where p.type = 6" + part_of_named +
         " and lower(" + argument(5) + ") = 'index' and " + matches("i.name", argument(6)) +
         " union all select upper(" + argument(5) + "), part.name" + properties + "join " + schema +
         "sysobjects part on part.id = p.id join " + schema +
         "sysobjects o on o.id = part.parent_obj where p.type = 3" + part_of_named + " and lower(" +
         argument(5) + ") = case part.xtype when 'TR' then 'trigger' else 'constraint' end and " +
         matches("part.name", argument(6)) + ")";
}

std::optional<std::string_view> InformationSchemaText(std::string_view name) {
  for (const SchemaView& view : kSchemaViews) {
    if (SameName(view.name, name)) return view.text;
  }
  return std::nullopt;
}

}  // namespace dbkeeper::server
