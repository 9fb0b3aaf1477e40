// System tables whose rows are made up from what the server knows at the moment.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/workspace.h"

namespace dbkeeper::server {

// What stands behind FROM for the system table `name` of a database; none when its rows are stored.
std::optional<std::string> LiveTableSource(Workspace& workspace, const DatabaseInfo& database,
                                           const std::string& alias, std::string_view name);

// The rows of ::fn_listextendedproperty over `alias`; the arguments are SQLite expressions.
std::string ExtendedPropertySource(const std::string& alias,
                                   const std::vector<std::string>& arguments);

// The text of "create view" of a view of INFORMATION_SCHEMA; none when there is none of that name.
std::optional<std::string_view> InformationSchemaText(std::string_view name);

}  // namespace dbkeeper::server
