// What every implementation of Connection must do, told to one that is connected to a server.
#pragma once

#include "app/session/Connection.h"

namespace dbkeeper {

// The connection must be open; the server must let it make tables in tempdb.
void ExpectConnectionContract(Connection& connection);

}  // namespace dbkeeper
