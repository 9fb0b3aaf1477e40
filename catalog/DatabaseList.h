// The databases of the server, in the list and in the tree.
#pragma once

#include <cstdint>
#include <string>

#include "app/session/Query.h"
#include "controls/ListView.h"
#include "controls/TreeView.h"

namespace dbkeeper {

// The words of a database's status bits, each with a comma behind it.
std::string DecodeDatabaseStatus(std::int32_t status);

// Lists the databases; adds a node for each usable one under the selected tree node, unless that
// node has children already. Throws what the query throws.
void ListDatabases(TreeView& tree, ListView& list, Query& query);

}  // namespace dbkeeper
