// Creation scripts in the server's own script form. Lines end in CR LF, batches in a line "GO".
#pragma once

#include <string>

#include "app/session/Query.h"
#include "app/workbench/Workbench.h"
#include "catalog/TableDefinition.h"

namespace dbkeeper {

// A table with its keys and constraints in one statement, then its indexes, triggers, properties,
// and what is switched off. Throws SessionError for an encrypted trigger.
std::string TableScript(const TableDefinition& table);

// The text of the view, procedure or trigger of that name, between the settings that it was made
// under. Throws SessionError when it is encrypted.
std::string ModuleScript(const std::string& name, const ModuleText& module);

// The script of the object of that name that dbo owns. `kind` is "Table", "View" or "Procedure".
// Throws ServerError, and SessionError when there is none or when its text is encrypted.
std::string ObjectScript(Query& query, const std::string& database, const std::string& name,
                         const std::string& kind);

// The same, which is also left in DBKEEPER_TMP.txt in the temporary folder. Throws FileError too.
std::string WriteObjectScript(const Workbench& workbench, const std::string& database,
                              const std::string& name, const std::string& kind);

}  // namespace dbkeeper
