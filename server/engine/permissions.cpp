// What users may do with objects, as sysprotects holds it.

#include <algorithm>
#include <vector>

#include "server/engine/statements.h"
#include "server/types/messages.h"
#include "server/types/text.h"

namespace dbkeeper::server {

namespace {

// sysprotects.action.
struct ActionRow {
  std::string_view word;
  int action;
  std::string_view xtypes;  // the objects it goes with; empty: statements
};
constexpr ActionRow kActions[] = {
    {"REFERENCES", 26, "U"},      {"SELECT", 193, "U V S"},      {"INSERT", 195, "U V"},
    {"DELETE", 196, "U V"},       {"UPDATE", 197, "U V"},        {"EXECUTE", 224, "P X FN"},
    {"EXEC", 224, "P X FN"},      {"CREATE TABLE", 198, ""},     {"CREATE DATABASE", 203, ""},
    {"CREATE VIEW", 207, ""},     {"CREATE PROCEDURE", 222, ""}, {"BACKUP DATABASE", 228, ""},
    {"CREATE DEFAULT", 233, ""},  {"BACKUP LOG", 235, ""},       {"CREATE RULE", 236, ""},
    {"CREATE FUNCTION", 178, ""},
};

// sysprotects.protecttype.
constexpr int kGrantWithGrant = 204;
constexpr int kGrant = 205;
constexpr int kDeny = 206;

std::vector<int> ActionsOf(const PermissionStatement& statement,
                           const std::optional<FoundObject>& found) {
  const auto fits = [&](const ActionRow& row) {
    if (!found) return row.xtypes.empty();
    return HasWord(row.xtypes, found->object.xtype);
  };
  std::vector<int> actions;
  if (statement.all) {
    for (const ActionRow& row : kActions) {
      if (fits(row) && row.word != "EXEC") actions.push_back(row.action);
    }
    return actions;
  }
  for (const std::string& permission : statement.permissions) {
    const auto* row = std::ranges::find(kActions, permission, &ActionRow::word);
    if (row == std::end(kActions)) throw Unsupported("the permission " + permission);
    if (!fits(*row)) Fail(4606, {permission});
    actions.push_back(row->action);
  }
  return actions;
}

// Members of these may, or may not, read or write every table.
struct ReaderWriterRoles {
  std::int64_t allowed;
  std::int64_t denied;
};
constexpr ReaderWriterRoles kReaders = {16390, 16392};
constexpr ReaderWriterRoles kWriters = {16391, 16393};
constexpr ReaderWriterRoles kNeither = {-1, -1};  // procedures are no rows

const ReaderWriterRoles& RolesFor(int action) {
  constexpr int kSelect = 193;
  constexpr int kExecute = 224;
  if (action == kExecute) return kNeither;
  return action == kSelect ? kReaders : kWriters;
}

// What a login may do with an object: by its user, else the guest, by that one's roles, directly
// and through others, and by public, which is everybody's.
struct Standing {
  bool owns = false;     // the database or the object: nothing can be denied
  bool manages = false;  // in the role that owns the database, or in that for its security
  bool granted = false;
  bool denied = false;
  bool may_grant = false;  // what was granted to it

  bool Allows() const { return owns || (granted && !denied); }
  bool AllowsGrant() const { return owns || manages || (may_grant && !denied); }
};

Standing StandingOf(Workspace& workspace, const FoundObject& found, int action) {
  const ReaderWriterRoles& roles = RolesFor(action);
  SqliteStatement row = Catalog(workspace.connection(), found.alias)
                            .Prepare(
                                R"(
with recursive own(uid) as (select uid from {}sysusers
    where sid = (select sid from main.syslogins where name = ?1)),
  mine(uid) as (select uid from own union select 0 union select uid from {}sysusers
      where name = 'guest' and hasdbaccess = 1 and not exists (select 1 from own)
    union select groupuid from {}sysmembers join mine on memberuid = uid),
  rights(type) as (select protecttype from {}sysprotects p join mine on p.uid = mine.uid
    where p.id = ?2 and p.action = ?3)
select exists (select 1 from mine where uid = 1 or uid = ?4),
  exists (select 1 from mine where uid = ?5), exists (select 1 from mine where uid = ?6),
  exists (select 1 from mine where uid = ?7), exists (select 1 from mine where uid = ?8),
  (select min(type) from rights), (select max(type) from rights))",
                                workspace.login().name, found.object.id, action, found.object.owner,
                                kOwners, kSecurityAdministrators, roles.allowed, roles.denied);
  row.Step();
  const bool administers = row.Integer(1) != 0;
  const std::int64_t least = row.Integer(5);
  return {.owns = workspace.login().sysadmin || row.Integer(0) != 0,
          .manages = administers || row.Integer(2) != 0,
          .granted = administers || row.Integer(3) != 0 || least != 0,
          .denied = row.Integer(4) != 0 || row.Integer(6) == kDeny,
          .may_grant = least == kGrantWithGrant};
}

// Throws 4613 unless the login may give and take every one of the rights.
void NeedGrantor(Workspace& workspace, const FoundObject& place, const std::vector<int>& actions) {
  if (workspace.IsOwner(place.database)) return;
  const bool all = std::ranges::all_of(
      actions, [&](int action) { return StandingOf(workspace, place, action).AllowsGrant(); });
  if (!all) Fail(4613);
}

}  // namespace

void NeedPermission(Workspace& workspace, const FoundObject& found, std::string_view word) {
  if (workspace.login().sysadmin || workspace.for_server() || found.alias == "temp") return;
  if (word == "SELECT" && found.IsSystem()) return;
  const int action = std::ranges::find(kActions, word, &ActionRow::word)->action;
  if (StandingOf(workspace, found, action).Allows()) return;
  const std::string owner =
      Catalog(workspace.connection(), found.alias).UserName(found.object.owner);
  Fail(229, {word, found.object.name, found.database.name, owner});
}

void ChangePermissions(const PermissionStatement& statement, Workspace& workspace,
                       Resolver& resolver) {
  if (!statement.columns.empty()) throw Unsupported("permissions on columns");
  std::optional<FoundObject> found;
  if (statement.object) found = resolver.Need(*statement.object, "U V S P X FN");
  const FoundObject place = found ? *found : resolver.Place({});
  const std::vector<int> actions = ActionsOf(statement, found);
  NeedGrantor(workspace, place, actions);
  Catalog catalog = resolver.CatalogAt(place);
  WriteScope scope(workspace, place.database, place.alias);
  for (const std::string& grantee : statement.grantees) {
    const std::int64_t uid =
        catalog.IntegerOf(-1, "select uid from {}sysusers where name = ?1", grantee);
    if (uid < 0) Fail(4604, {grantee});
    for (const int action : actions) {
      catalog.Run("delete from {}sysprotects where id = ? and uid = ? and action = ?",
                  place.object.id, uid, action);
      if (statement.verb == PermissionVerb::kRevoke) continue;
      const int type = statement.verb == PermissionVerb::kDeny ? kDeny
                       : statement.with_grant_option           ? kGrantWithGrant
                                                               : kGrant;
      // The one bit says that all columns are meant.
      catalog.Run("insert into {}sysprotects values (?, ?, ?, ?, x'01', 1)", place.object.id, uid,
                  action, type);
    }
  }
  scope.Commit();
}

}  // namespace dbkeeper::server
