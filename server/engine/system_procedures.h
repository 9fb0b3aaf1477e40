// How the engine calls the system procedures, which are made of its own means: whoever opens an
// instance hands them in.
#pragma once

#include <string_view>

#include "server/types/parameter.h"
#include "server/types/result_sink.h"

namespace dbkeeper::server {

class EngineSession;

// Runs the procedure `name` in the session's current database; false when there is none of that
// name there. Throws SqlError.
using SystemProcedures = bool (*)(std::string_view name, EngineSession& session,
                                  const Parameters& arguments, ResultSink& sink);

}  // namespace dbkeeper::server
