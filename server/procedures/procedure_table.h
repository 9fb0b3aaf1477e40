// All system procedures, by name.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "server/procedures/procedure_call.h"

namespace dbkeeper::server {

// Null when there is no system procedure of that name.
const ProcedureRow* FindProcedure(std::string_view name);

// Binds the arguments and runs it. Throws SqlError.
void RunSystemProcedure(const ProcedureRow& row, EngineSession& session,
                        const Parameters& arguments, ResultSink& sink);

// The families, one source each.
std::span<const ProcedureRow> DatabaseProcedures();
std::span<const ProcedureRow> JobProcedures();
std::span<const ProcedureRow> LoginProcedures();
std::span<const ProcedureRow> MetadataProcedures();
std::span<const ProcedureRow> ObjectProcedures();
std::span<const ProcedureRow> PropertyProcedures();
std::span<const ProcedureRow> UserProcedures();

}  // namespace dbkeeper::server
