#include "server/storage/host_account.h"

#include <grp.h>
#include <pwd.h>

#include <string>
#include <vector>

#include "server/types/text.h"

namespace dbkeeper::server {

namespace {

constexpr std::string_view kBuiltIn = "BUILTIN";
constexpr std::string_view kBuiltInGroups[] = {"Administrators", "Users", "Guests"};

// The name as Windows would know it, in any case, is here one in small letters as a rule.
template <typename Entry>
bool Has(int (*find)(const char*, Entry*, char*, std::size_t, Entry**), const std::string& name) {
  constexpr std::size_t kRoom = 1U << 16U;
  for (const std::string& written : {name, ToLowerAscii(name)}) {
    std::vector<char> room(kRoom);
    Entry entry{};
    Entry* found = nullptr;
    if (find(written.c_str(), &entry, room.data(), room.size(), &found) == 0 && found != nullptr) {
      return true;
    }
  }
  return false;
}

}  // namespace

HostAccount FindHostAccount(std::string_view name, std::string_view computer) {
  const std::size_t slash = name.find('\\');
  if (slash == std::string_view::npos) return HostAccount::kNone;
  const std::string_view domain = name.substr(0, slash);
  const std::string account(name.substr(slash + 1));
  if (SameName(domain, kBuiltIn)) {
    for (const std::string_view group : kBuiltInGroups) {
      if (SameName(group, account)) return HostAccount::kGroup;
    }
    return HostAccount::kNone;
  }
  if (!SameName(domain, computer)) return HostAccount::kNone;
  if (Has<passwd>(getpwnam_r, account)) return HostAccount::kUser;
  return Has<group>(getgrnam_r, account) ? HostAccount::kGroup : HostAccount::kNone;
}

}  // namespace dbkeeper::server
