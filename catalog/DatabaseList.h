// The databases of the server, in the list and in the tree.
#pragma once

#include <cstdint>
#include <string>

#include "app/workbench/Workbench.h"

namespace dbkeeper {

// The words of a database's status bits, each with a comma behind it.
std::string DecodeDatabaseStatus(std::int32_t status);

// A list routine: adds a node for each usable database under the selected tree node too, unless
// that node has children already.
void ListDatabases(const Workbench& workbench, const std::string& database);

// The same after a change of the databases: the selected tree node loses its children first and
// gets them anew. It is no click on the node.
void RefreshDatabases(const Workbench& workbench, const std::string& database);

}  // namespace dbkeeper
