#include "catalog/PermissionScript.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "app/support/AnsiTextFile.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace {

constexpr std::array<std::string_view, 4> kSystemDatabases = {"master", "model", "msdb", "tempdb"};

constexpr const char* kUsersSql =
    "select * from sysusers where (issqlrole   <> 1    )and       (hasdbaccess =  1    )and       "
    "(name        <> 'dbo')";

constexpr const char* kRightsSql =
    "select sysobjects.name,\r\n"
    "       sysusers.name as usersname,\r\n"
    "       sysprotects.action,\r\n"
    "       sysprotects.protecttype\r\n"
    "  from sysprotects\r\n"
    "       left join sysobjects on(sysprotects.id  = sysobjects.id)\r\n"
    "       left join sysusers   on(sysprotects.uid = sysusers.uid )\r\n"
    " where (sysusers.name   <> 'public')and\r\n"
    "       (sysobjects.name is not null)";

struct CodeWord {
  std::int64_t code;
  std::string_view word;
};

// What goes to further grantees, 204, is left out on purpose.
constexpr std::array<CodeWord, 2> kVerbs = {{{205, "grant "}, {206, "deny "}}};

constexpr std::array<CodeWord, 5> kActions = {{
    {193, "SELECT  on "},
    {195, "INSERT  on "},
    {196, "DELETE  on "},
    {197, "UPDATE  on "},
    {224, "EXECUTE on "},
}};

// Empty for another code.
template <std::size_t N>
std::string WordOf(const std::array<CodeWord, N>& words, std::int64_t code) {
  const auto* const found = std::ranges::find(words, code, &CodeWord::code);
  return found == words.end() ? std::string() : std::string(found->word);
}

void AddBatch(AnsiTextFile& script, const std::string& text) {
  script.Line(text);
  script.Line("go");
}

std::string Trimmed(const Query& query, std::string_view field) {
  return Trim(query.FieldByName(field).AsString());
}

std::string Quoted(const std::string& name) { return "'" + name + "'"; }

std::vector<std::string> UserDatabases(Query& query) {
  query.Command("use master");
  std::vector<std::string> databases;
  for (query.Open("exec sp_helpdb"); !query.Eof(); query.Next()) {
    const std::string name = query.FieldByName("name").AsString();
    if (std::ranges::find(kSystemDatabases, name) == kSystemDatabases.end()) {
      databases.push_back(Trim(name));
    }
  }
  query.Close();
  return databases;
}

void WriteUsers(Query& query, AnsiTextFile& script) {
  for (query.Open(kUsersSql); !query.Eof(); query.Next()) {
    const std::string user = Quoted(Trimmed(query, "name"));
    AddBatch(script, "EXEC sp_revokedbaccess " + user);
    AddBatch(script, "EXEC sp_grantdbaccess " + user + "," + user);
  }
  query.Close();
}

void WriteMembers(Query& query, AnsiTextFile& script) {
  for (query.Open("exec sp_helprolemember"); !query.Eof(); query.Next()) {
    const std::string member = Trimmed(query, "MemberName");
    if (member == "dbo") continue;
    AddBatch(script,
             "exec sp_addrolemember " + Quoted(Trimmed(query, "DbRole")) + "," + Quoted(member));
  }
  query.Close();
}

void WriteRights(Query& query, AnsiTextFile& script) {
  for (query.Open(kRightsSql); !query.Eof(); query.Next()) {
    const std::string verb = WordOf(kVerbs, query.FieldByName("protecttype").AsInteger());
    const std::string action = WordOf(kActions, query.FieldByName("action").AsInteger());
    if (verb.empty() || action.empty()) continue;
    AddBatch(script, verb + action + Trimmed(query, "name") + " to " + Trimmed(query, "usersname"));
  }
  query.Close();
}

}  // namespace

void WritePermissionScript(Query& query, const Host& host, const std::filesystem::path& file) {
  AnsiTextFile script(host, file, Writing::kAsItGoes);
  for (const std::string& database : UserDatabases(query)) {
    AddBatch(script, "use " + database);
    query.UseDatabase(database);
    WriteUsers(query, script);
    WriteMembers(query, script);
    WriteRights(query, script);
    script.Line("");
  }
  script.Finish();
}

}  // namespace dbkeeper
