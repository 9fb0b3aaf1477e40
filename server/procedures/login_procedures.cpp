// Logins of the instance.
#include "server/catalog/login_store.h"
#include "server/procedures/procedure_call.h"
#include "server/storage/host_account.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

void NeedSecurityAdministrator(ProcedureCall& call) {
  call.NeedAdministrator(call.workspace().login().security_admin);
}

// The login's own spelling of its name; throws 15007.
std::string NeedLogin(ProcedureCall& call, const std::string& name) {
  std::string found = call.sqlite().TextOf("select name from main.syslogins where name = ?1", name);
  if (found.empty()) Fail(15007, {name});
  return found;
}

bool LoginExists(ProcedureCall& call, const std::string& name) {
  return call.Exists("select 1 from main.syslogins where name = ?1", name);
}

void AddLogin(ProcedureCall& call) {
  NeedSecurityAdministrator(call);
  const std::string name = call.Text("@loginame");
  if (name.empty() || name.find('\\') != std::string::npos) Fail(15006, {name});
  if (LoginExists(call, name)) Fail(15025, {name});
  const std::string database = call.Text("@defdb", "master");
  call.workspace().FindDatabase(database, 15010);
  WriteScope scope(call.workspace());
  StoreLogin(call.sqlite(), {.name = name,
                             .database = database,
                             .language = call.Text("@deflanguage", kDefaultLanguage)});
  StorePassword(call.sqlite(), name, call.Text("@passwd"));
  scope.Commit();
  call.Inform(15298);
}

void RefuseConnected(ProcedureCall& call, const std::string& name) {
  for (const SessionRecord& session : call.workspace().instance().Sessions()) {
    if (SameName(session.login, name)) Fail(15434, {name});
  }
}

// A login that owns or uses a database stays.
void RefuseMapped(ProcedureCall& call, const std::string& name) {
  const std::string owned = call.sqlite().TextOf(
      "select group_concat(name, ', ') from main.sysdatabases where sid = (select sid from "
      "main.syslogins where name = ?1)",
      name);
  if (!owned.empty()) Fail(15174, {name, owned});
  SqliteStatement database =
      call.sqlite().Prepare("select dbid from main.sysdatabases where status & 512 = 0");
  std::vector<int> ids;
  while (database.Step()) ids.push_back(static_cast<int>(database.Integer(0)));
  for (const int dbid : ids) {
    const auto info = call.workspace().LookUpDatabase(dbid);
    const Catalog catalog = call.workspace().CatalogOf(info->name);
    if (call.Exists("select 1 from " + catalog.Path("sysusers") +
                        " where sid = (select sid from main.syslogins where name = ?1)",
                    name)) {
      Fail(15175, {name});
    }
  }
}

void RemoveLogin(ProcedureCall& call, const std::string& name) {
  WriteScope scope(call.workspace());
  call.sqlite().Run("delete from main.syslogins where name = ?1", name);
  call.sqlite().Run("delete from main.\"#passwords\" where name = ?1", name);
  scope.Commit();
}

void DropLogin(ProcedureCall& call) {
  NeedSecurityAdministrator(call);
  const std::string name = NeedLogin(call, call.Text("@loginame"));
  if (SameName(name, "sa")) Fail(15405, {name});
  RefuseConnected(call, name);
  RefuseMapped(call, name);
  RemoveLogin(call, name);
  call.Inform(15479);
}

void ChangePassword(ProcedureCall& call) {
  const std::string name = NeedLogin(call, call.Text("@loginame", call.workspace().login().name));
  const bool own = SameName(name, call.workspace().login().name);
  if (!own) NeedSecurityAdministrator(call);
  const bool checked = call.Has("@old") || !call.workspace().login().sysadmin;
  if (checked && !PasswordFits(call.sqlite(), name, call.Text("@old"))) Fail(15211);
  WriteScope scope(call.workspace());
  StorePassword(call.sqlite(), name, call.Text("@new"));
  call.sqlite().Run("update main.syslogins set updatedate = ?1 where name = ?2", CurrentTime(),
                    name);
  scope.Commit();
  call.Inform(15478);
}

void GrantLogin(ProcedureCall& call) {
  NeedSecurityAdministrator(call);
  const std::string name = call.Text("@loginame");
  if (name.find('\\') == std::string::npos) Fail(15407, {name});
  if (!LoginExists(call, name)) {
    const HostAccount account =
        FindHostAccount(name, call.workspace().instance().options().machine_name);
    if (account == HostAccount::kNone) Fail(15401, {name});
    WriteScope scope(call.workspace());
    StoreLogin(call.sqlite(), {.name = name,
                               .kind = account == HostAccount::kGroup ? LoginKind::kWindowsGroup
                                                                      : LoginKind::kWindowsUser});
    scope.Commit();
  }
  call.Inform(15485, {name});
}

void RevokeLogin(ProcedureCall& call) {
  NeedSecurityAdministrator(call);
  const std::string name = call.Text("@loginame");
  if (name.find('\\') == std::string::npos) Fail(15407, {name});
  RemoveLogin(call, NeedLogin(call, name));  // its users stay, without a login
  call.Inform(15486, {name});
}

void DefaultDatabase(ProcedureCall& call) {
  const std::string name = NeedLogin(call, call.Text("@loginame"));
  if (!SameName(name, call.workspace().login().name)) NeedSecurityAdministrator(call);
  const std::string database = call.Text("@defdb");
  call.workspace().FindDatabase(database, 15010);
  call.ChangeMaster("update main.syslogins set dbname = ?1, updatedate = ?2 where name = ?3",
                    database, CurrentTime(), name);
  call.Inform(15461);
}

void DefaultLanguage(ProcedureCall& call) {
  const std::string name = NeedLogin(call, call.Text("@loginame"));
  if (!SameName(name, call.workspace().login().name)) NeedSecurityAdministrator(call);
  const std::string language = call.Text("@language", kDefaultLanguage);
  if (!call.Exists("select 1 from main.syslanguages where name = ?1 or alias = ?1", language)) {
    Fail(15033, {language});
  }
  call.ChangeMaster("update main.syslogins set language = ?1, updatedate = ?2 where name = ?3",
                    language, CurrentTime(), name);
  call.Inform(15462, {name, language});
}

// The fixed server roles are flags of syslogins of the same name.
void SetServerRole(ProcedureCall& call, bool member) {
  const std::string role = call.Text("@rolename");
  const std::string name = NeedLogin(call, call.Text("@loginame"));
  std::string_view column;
  for (const auto& [known, description] : kServerRoles) {
    if (SameName(known, role)) column = known;
  }
  if (column.empty()) Fail(15402, {role});
  if (SameName(name, "sa")) Fail(15405, {name});
  call.NeedAdministrator(
      call.Exists("select " + std::string(column) + " from main.syslogins where name = ?1",
                  call.workspace().login().name));
  call.ChangeMaster(
      "update main.syslogins set " + std::string(column) + " = ?1, updatedate = ?2 where name = ?3",
      member ? 1 : 0, CurrentTime(), name);
  call.Inform(member ? 15488 : 15489, {name, role});
}

void HelpServerRoles(ProcedureCall& call) {
  std::vector<std::vector<Cell>> rows;
  for (const auto& [name, description] : kServerRoles) {
    if (call.Has("@srvrolename") && !SameName(call.Text("@srvrolename"), name)) continue;
    rows.push_back({std::string(name), std::string(description)});
  }
  if (rows.empty()) Fail(15412, {call.Text("@srvrolename")});
  call.Rows("ServerRole sysname, Description sysname", rows);
}

void HelpServerRoleMembers(ProcedureCall& call) {
  std::vector<std::vector<Cell>> rows;
  bool known = false;
  for (const auto& [name, description] : kServerRoles) {
    if (call.Has("@srvrolename") && !SameName(call.Text("@srvrolename"), name)) continue;
    known = true;
    SqliteStatement row = call.sqlite().Prepare("select name, sid from main.syslogins where " +
                                                std::string(name) + " = 1 order by name");
    while (row.Step()) rows.push_back({std::string(name), row.Value(0), row.Value(1)});
  }
  if (!known) Fail(15412, {call.Text("@srvrolename")});
  call.Rows("ServerRole sysname, MemberName sysname, MemberSID varbinary(85)", rows);
}

constexpr ProcedureRow kProcedures[] = {
    {"sp_addlogin", "@loginame, @passwd=, @defdb=, @deflanguage=, @sid=, @encryptopt=", AddLogin},
    {"sp_droplogin", "@loginame", DropLogin},
    {"sp_password", "@old=, @new, @loginame=", ChangePassword},
    {"sp_grantlogin", "@loginame", GrantLogin},
    {"sp_revokelogin", "@loginame", RevokeLogin},
    {"sp_defaultdb", "@loginame, @defdb", DefaultDatabase},
    {"sp_defaultlanguage", "@loginame, @language=", DefaultLanguage},
    {"sp_addsrvrolemember", "@loginame, @rolename",
     [](ProcedureCall& call) { SetServerRole(call, true); }},
    {"sp_dropsrvrolemember", "@loginame, @rolename",
     [](ProcedureCall& call) { SetServerRole(call, false); }},
    {"sp_helpsrvrole", "@srvrolename=", HelpServerRoles},
    {"sp_helpsrvrolemember", "@srvrolename=", HelpServerRoleMembers},
};

}  // namespace

std::span<const ProcedureRow> LoginProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
