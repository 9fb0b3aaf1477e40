// Users and roles of a database, and who is a member of what.
#include <optional>

#include "server/procedures/procedure_call.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// A row of sysusers.
struct DatabaseUser {
  std::int64_t uid = 0;
  std::string name;
  bool is_role = false;
};

// A user or role of the database the procedure runs in.
std::optional<DatabaseUser> UserOf(ProcedureCall& call, const std::string& name) {
  SqliteStatement row =
      call.catalog().Prepare("select uid, name, issqlrole from {}sysusers where name = ?1", name);
  if (!row.Step()) return std::nullopt;
  return DatabaseUser{row.Integer(0), row.Text(1), row.Integer(2) != 0};
}

// The row with the memberships and rights that hang on it.
void RemoveUser(Catalog& catalog, std::int64_t uid) {
  catalog.Run("delete from {}sysusers where uid = ?1", uid);
  catalog.Run("delete from {}sysmembers where memberuid = ?1 or groupuid = ?1", uid);
  catalog.Run("delete from {}sysprotects where uid = ?1", uid);
}

constexpr std::int64_t kFirstUser = 5;
constexpr std::int64_t kFirstFixedRole = 16384;
constexpr std::int64_t kFirstOwnRole = 16400;

bool IsFixedRole(std::int64_t uid) { return uid >= kFirstFixedRole && uid < kFirstOwnRole; }

// The lowest number from `first` on that nobody has: who is dropped and let in again keeps it.
std::int64_t FreeUid(Catalog& catalog, std::int64_t first) {
  return catalog.IntegerOf(first,
                           "select min(uid) + 1 from (select ?1 - 1 as uid union all select uid "
                           "from {}sysusers where uid >= ?1) where uid + 1 not in (select uid from "
                           "{}sysusers)",
                           first);
}

// Throws 15183 or 15421 for a user or role that has something of its own.
void RefuseOwner(Catalog& catalog, std::int64_t uid) {
  if (catalog.IntegerOf(0, "select 1 from {}sysobjects where uid = ?1", uid)) Fail(15183);
  if (catalog.IntegerOf(0, "select 1 from {}sysusers where issqlrole = 1 and altuid = ?1", uid)) {
    Fail(15421);
  }
}

DatabaseUser NeedRole(ProcedureCall& call, const std::string& name) {
  const std::optional<DatabaseUser> role = UserOf(call, name);
  if (!role || !role->is_role) Fail(15014, {name});
  return *role;
}

void AddRole(ProcedureCall& call) {
  call.NeedOwner(kSecurityAdministrators);
  const std::string name = call.Text("@rolename");
  if (name.empty() || name.find('\\') != std::string::npos) Fail(15006, {name});
  if (UserOf(call, name)) Fail(15023, {name});
  const std::string owner = call.Text("@ownername", "dbo");
  const std::optional<DatabaseUser> owned_by = UserOf(call, owner);
  if (!owned_by) Fail(15410, {owner});
  DatabaseChange change(call);
  change.catalog.Run(
      "insert into {}sysusers values (?1, 0, ?2, null, null, ?3, ?3, ?4, null, ?1, null, 0, 0, 0, "
      "0, 0, 0, 0, 1, 0)",
      FreeUid(change.catalog, kFirstOwnRole), name, CurrentTime(), owned_by->uid);
  change.scope.Commit();
  call.Inform(15424);
}

void DropRole(ProcedureCall& call) {
  call.NeedOwner(kSecurityAdministrators);
  const DatabaseUser role = NeedRole(call, call.Text("@rolename"));
  if (role.uid == 0 || IsFixedRole(role.uid)) Fail(15405, {role.name});
  if (call.catalog().IntegerOf(0, "select 1 from {}sysmembers where groupuid = ?1", role.uid)) {
    Fail(15144);
  }
  DatabaseChange change(call);
  RefuseOwner(change.catalog, role.uid);
  RemoveUser(change.catalog, role.uid);
  change.scope.Commit();
  call.Inform(15425);
}

// Whether the role is `uid`, or a member of it, directly or through others.
bool Includes(Catalog& catalog, std::int64_t uid, std::int64_t role) {
  return catalog.IntegerOf(0,
                           "with recursive mine(uid) as (select ?1 union select groupuid from "
                           "{}sysmembers join mine on memberuid = uid) select count(*) from mine "
                           "where uid = ?2",
                           role, uid) != 0;
}

void ChangeMember(ProcedureCall& call, bool member) {
  const DatabaseUser role = NeedRole(call, call.Text("@rolename"));
  call.NeedOwner(IsFixedRole(role.uid) ? kOwners : kSecurityAdministrators);
  const std::string name = call.Text("@membername");
  const std::optional<DatabaseUser> user = UserOf(call, name);
  if (!user) Fail(15410, {name});
  if (role.uid == 0 || user->uid == 1) Fail(15405, {role.uid == 0 ? role.name : user->name});
  if (role.uid == user->uid) Fail(15414, {role.name});
  DatabaseChange change(call);
  if (member && Includes(change.catalog, user->uid, role.uid)) Fail(15413);
  change.catalog.Run("delete from {}sysmembers where memberuid = ? and groupuid = ?", user->uid,
                     role.uid);
  if (member) change.catalog.Run("insert into {}sysmembers values (?, ?)", user->uid, role.uid);
  change.scope.Commit();
  call.Inform(member ? 15488 : 15489, {user->name, role.name});
}

void CheckRole(ProcedureCall& call) {
  if (call.Has("@rolename")) NeedRole(call, call.Text("@rolename"));
}

void GrantAccess(ProcedureCall& call) {
  call.NeedOwner(kAccessAdministrators);
  const std::string login = call.sqlite().TextOf("select name from main.syslogins where name = ?1",
                                                 call.Text("@loginame"));
  const std::string name = call.Text("@name_in_db", call.Text("@loginame"));
  DatabaseChange change(call);
  if (SameName(name, "guest") && login.empty()) {
    change.catalog.Run("update {}sysusers set hasdbaccess = 1 where name = 'guest'");
    change.scope.Commit();
    call.Inform(15341, {name});
    return;
  }
  if (login.empty()) Fail(15007, {call.Text("@loginame")});
  if (UserOf(call, name)) Fail(15023, {name});
  if (change.catalog.IntegerOf(0,
                               "select 1 from {}sysusers where sid = (select sid from "
                               "main.syslogins where name = ?1)",
                               login)) {
    Fail(15063);
  }
  change.catalog.Run(
      "insert into {}sysusers select ?1, 0, ?2, sid, null, ?3, ?3, 0, null, 0, null, 1, 1, "
      "isntname, isntgroup, isntuser, 1 - isntname, 0, 0, 0 from main.syslogins where name = ?4",
      FreeUid(change.catalog, kFirstUser), name, CurrentTime(), login);
  change.scope.Commit();
  call.Inform(15341, {login});
}

void RevokeAccess(ProcedureCall& call) {
  call.NeedOwner(kAccessAdministrators);
  const std::string name = call.Text("@name_in_db");
  const std::optional<DatabaseUser> user = UserOf(call, name);
  if (!user || user->is_role) Fail(15008, {name});
  if (user->uid == 1 || SameName(name, "INFORMATION_SCHEMA")) Fail(15405, {name});
  DatabaseChange change(call);
  if (SameName(name, "guest")) {
    change.catalog.Run("update {}sysusers set hasdbaccess = 0 where name = 'guest'");
  } else {
    RefuseOwner(change.catalog, user->uid);
    RemoveUser(change.catalog, user->uid);
  }
  change.scope.Commit();
  call.Inform(15342);
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_grantdbaccess", "@loginame, @name_in_db=", GrantAccess},
    {"sp_revokedbaccess", "@name_in_db", RevokeAccess},
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

std::span<const ProcedureRow> UserProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
