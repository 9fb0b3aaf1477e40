// Rows of sysusers as the procedures for users and roles look them up.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "server/procedures/procedure_call.h"

namespace dbkeeper::server {

struct DatabaseUser {
  std::int64_t uid = 0;
  std::string name;
  bool is_role = false;
};

// A user or role of the database the procedure runs in.
std::optional<DatabaseUser> UserOf(ProcedureCall& call, const std::string& name);

// The row with the memberships and rights that hang on it.
void RemoveUser(ProcedureCall& call, Catalog& catalog, std::int64_t uid);

}  // namespace dbkeeper::server
