// Views, procedures, triggers and functions: kept as text, dropped, renamed.
#pragma once

#include <string_view>

#include "server/engine/resolver.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"
#include "server/types/result_sink.h"

namespace dbkeeper::server {

class ObjectDefinition {
 public:
  ObjectDefinition(Workspace& workspace, Resolver& resolver)
      : workspace_(workspace), resolver_(resolver) {}

  void CreateView(const CreateViewStatement& statement);
  // Says to the sink that the text is kept but not run.
  void CreateModule(const CreateModuleStatement& statement, ResultSink& sink);
  // Of one name; tables and databases are dropped elsewhere.
  void Drop(ObjectClass object_class, const ObjectName& name);

 private:
  // Finds what an alter is about, or makes sure that a create meets nothing of its name.
  FoundObject Begin(const ObjectName& name, std::string_view xtype, bool alter);
  void SetTriggers(const FoundObject& trigger, const FoundObject& table,
                   const CreateModuleStatement& statement);

  Workspace& workspace_;
  Resolver& resolver_;
};

}  // namespace dbkeeper::server
