// Users of a database.
#include "server/procedures/database_users.h"
#include "server/procedures/procedure_table.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kFirstUser = 5;

void GrantAccess(ProcedureCall& call) {
  call.NeedOwner();
  const std::string login = call.sqlite().TextOf("select name from main.syslogins where name = ?1",
                                                 call.Text("@loginame"));
  const std::string name = call.Text("@name_in_db", call.Text("@loginame"));
  const DatabaseInfo database = call.database();
  Catalog catalog = call.catalog();
  const std::string users = catalog.Path("sysusers");
  WriteScope scope(call.workspace(), database, catalog.alias());
  if (SameName(name, "guest") && login.empty()) {
    call.sqlite().Run("update " + users + " set hasdbaccess = 1 where name = 'guest'");
    scope.Commit();
    call.Inform(15341, {name});
    return;
  }
  if (login.empty()) Fail(15007, {call.Text("@loginame")});
  if (UserOf(call, name)) Fail(15023, {name});
  if (call.Exists("select 1 from " + users +
                      " where sid = (select sid from main.syslogins where name = ?1)",
                  login)) {
    Fail(15063);
  }
  const std::int64_t uid = call.sqlite().IntegerOf(kFirstUser - 1, "select max(uid) from " + users +
                                                                       " where uid < 16384") +
                           1;
  const std::int64_t now = CurrentTime();
  call.sqlite().Run("insert into " + users +
                        " select ?1, 0, ?2, sid, null, ?3, ?3, 0, null, 0, null, 1, 1, isntname, "
                        "isntgroup, isntuser, 1 - isntname, 0, 0, 0 from main.syslogins where "
                        "name = ?4",
                    std::max<std::int64_t>(uid, kFirstUser), name, now, login);
  scope.Commit();
  call.Inform(15341, {login});
}

void RevokeAccess(ProcedureCall& call) {
  call.NeedOwner();
  const std::string name = call.Text("@name_in_db");
  const std::optional<DatabaseUser> user = UserOf(call, name);
  if (!user || user->is_role) Fail(15008, {name});
  if (user->uid == 1 || SameName(name, "INFORMATION_SCHEMA")) Fail(15405, {name});
  const DatabaseInfo database = call.database();
  Catalog catalog = call.catalog();
  WriteScope scope(call.workspace(), database, catalog.alias());
  if (SameName(name, "guest")) {
    call.sqlite().Run("update " + catalog.Path("sysusers") +
                      " set hasdbaccess = 0 where name = 'guest'");
  } else {
    RemoveUser(call, catalog, user->uid);
  }
  scope.Commit();
  call.Inform(15342);
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_grantdbaccess", "@loginame, @name_in_db=", GrantAccess},
    {"sp_revokedbaccess", "@name_in_db", RevokeAccess},
};

}  // namespace

std::span<const ProcedureRow> UserProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
