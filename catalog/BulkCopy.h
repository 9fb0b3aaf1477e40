// The batch file that has a table's rows copied to or from a text file by the server's bulk copy
// tool.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"

namespace dbkeeper {

// Write the batch file, have the desktop open it, and tell it in the status bar; nothing is waited
// for. The password is never written: the tool asks for it. Both throw FileError.
void ExportByBcp(const Workbench& workbench, const std::string& server, const std::string& database,
                 const std::string& file, const std::string& table);
void ImportByBcp(const Workbench& workbench, const std::string& server, const std::string& database,
                 const std::string& file, const std::string& table);

}  // namespace dbkeeper
