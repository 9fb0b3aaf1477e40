// One database: its main properties. Its menu is the smallest one.

#include "app/main/nodes/NodeKinds.h"
#include "catalog/DatabaseProperties.h"

namespace dbkeeper {

constinit const NodeKind kDatabaseNode = {
    2,
    Match::kParentText,
    "Database",
    ListDatabaseProperties,
    &kMinimumMenu,
    "select * from master.dbo.sysdatabases / exec sp_spaceused"};

}  // namespace dbkeeper
