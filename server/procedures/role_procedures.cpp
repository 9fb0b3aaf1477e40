// Roles of a database and their members.
#include "server/procedures/database_users.h"
#include "server/procedures/procedure_table.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

std::optional<DatabaseUser> UserOf(ProcedureCall& call, const std::string& name) {
  SqliteStatement row = call.sqlite().Prepare(
      "select uid, name, issqlrole from " + call.catalog().Path("sysusers") + " where name = ?1",
      name);
  if (!row.Step()) return std::nullopt;
  return DatabaseUser{row.Integer(0), row.Text(1), row.Integer(2) != 0};
}

void RemoveUser(ProcedureCall& call, Catalog& catalog, std::int64_t uid) {
  call.sqlite().Run("delete from " + catalog.Path("sysusers") + " where uid = ?1", uid);
  call.sqlite().Run(
      "delete from " + catalog.Path("sysmembers") + " where memberuid = ?1 or groupuid = ?1", uid);
  call.sqlite().Run("delete from " + catalog.Path("sysprotects") + " where uid = ?1", uid);
}

namespace {

constexpr std::int64_t kFirstFixedRole = 16384;
constexpr std::int64_t kFirstOwnRole = 16400;

DatabaseUser NeedRole(ProcedureCall& call, const std::string& name) {
  const std::optional<DatabaseUser> role = UserOf(call, name);
  if (!role || !role->is_role) Fail(15014, {name});
  return *role;
}

void AddRole(ProcedureCall& call) {
  call.NeedOwner();
  const std::string name = call.Text("@rolename");
  if (name.empty() || name.find('\\') != std::string::npos) Fail(15006, {name});
  if (UserOf(call, name)) Fail(15023, {name});
  const DatabaseInfo database = call.database();
  Catalog catalog = call.catalog();
  WriteScope scope(call.workspace(), database, catalog.alias());
  const std::int64_t last = call.sqlite().IntegerOf(
      0, "select max(uid) from " + catalog.Path("sysusers") + " where issqlrole = 1");
  call.sqlite().Run("insert into " + catalog.Path("sysusers") +
                        " values (?1, 0, ?2, null, null, ?3, ?3, 1, null, ?1, null, 0, 0, 0, 0, 0, "
                        "0, 0, 1, 0)",
                    std::max(last + 1, kFirstOwnRole), name, CurrentTime());
  scope.Commit();
  call.Inform(15424);
}

void DropRole(ProcedureCall& call) {
  call.NeedOwner();
  const DatabaseUser role = NeedRole(call, call.Text("@rolename"));
  if (role.uid == 0 || (role.uid >= kFirstFixedRole && role.uid < kFirstOwnRole)) {
    Fail(15405, {role.name});
  }
  const DatabaseInfo database = call.database();
  Catalog catalog = call.catalog();
  if (call.Exists("select 1 from " + catalog.Path("sysmembers") + " where groupuid = ?1",
                  role.uid)) {
    Fail(15144);
  }
  WriteScope scope(call.workspace(), database, catalog.alias());
  RemoveUser(call, catalog, role.uid);
  scope.Commit();
  call.Inform(15425);
}

void ChangeMember(ProcedureCall& call, bool member) {
  call.NeedOwner();
  const DatabaseUser role = NeedRole(call, call.Text("@rolename"));
  const std::string name = call.Text("@membername");
  const std::optional<DatabaseUser> user = UserOf(call, name);
  if (!user) Fail(15410, {name});
  if (role.uid == 0 || user->uid == 1) Fail(15405, {role.uid == 0 ? role.name : user->name});
  if (role.uid == user->uid) Fail(15414, {role.name});
  const DatabaseInfo database = call.database();
  Catalog catalog = call.catalog();
  const std::string members = catalog.Path("sysmembers");
  WriteScope scope(call.workspace(), database, catalog.alias());
  call.sqlite().Run("delete from " + members + " where memberuid = ? and groupuid = ?", user->uid,
                    role.uid);
  if (member) {
    call.sqlite().Run("insert into " + members + " values (?, ?)", user->uid, role.uid);
  }
  scope.Commit();
  call.Inform(member ? 15488 : 15489, {user->name, role.name});
}

void CheckRole(ProcedureCall& call) {
  if (call.Has("@rolename")) NeedRole(call, call.Text("@rolename"));
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_addrole", "@rolename, @ownername=", AddRole},
    {"sp_droprole", "@rolename", DropRole},
    {"sp_addrolemember", "@rolename, @membername",
     [](ProcedureCall& call) { ChangeMember(call, true); }},
    {"sp_droprolemember", "@rolename, @membername",
     [](ProcedureCall& call) { ChangeMember(call, false); }},
    {"sp_helprole", "@rolename=", CheckRole, R"(
select name as RoleName, uid as RoleId, isapprole as IsAppRole
from sysusers where (issqlrole = 1 or isapprole = 1) and (@rolename is null or name = @rolename)
order by uid)"},
    {"sp_helprolemember", "@rolename=", CheckRole, R"(
select r.name as DbRole, u.name as MemberName, u.sid as MemberSID
from sysmembers m join sysusers r on r.uid = m.groupuid join sysusers u on u.uid = m.memberuid
where @rolename is null or r.name = @rolename
order by r.name, u.name)"},
};

}  // namespace

std::span<const ProcedureRow> RoleProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
