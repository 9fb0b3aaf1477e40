#include "server/procedures/procedure_table.h"

#include "server/types/messages.h"

namespace dbkeeper::server {

const ProcedureRow* FindProcedure(std::string_view name) {
  for (const auto family : {DatabaseProcedures, JobProcedures, LoginProcedures, MetadataProcedures,
                            ObjectProcedures, PropertyProcedures, UserProcedures}) {
    for (const ProcedureRow& row : family()) {
      if (SameName(row.name, name)) return &row;
    }
  }
  return nullptr;
}

void RunSystemProcedure(const ProcedureRow& row, EngineSession& session,
                        const Parameters& arguments, ResultSink& sink) {
  ProcedureCall call(row, session, arguments, sink);
  if (row.run != nullptr) row.run(call);
  if (!row.text.empty()) call.Run(row.text);
}

}  // namespace dbkeeper::server
