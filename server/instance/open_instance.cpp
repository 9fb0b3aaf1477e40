#include "server/instance/open_instance.h"

#include <filesystem>

#include "server/engine/instance_state.h"
#include "server/instance/sample_instance.h"
#include "server/procedures/procedure_call.h"

namespace dbkeeper::server {

std::unique_ptr<Instance> OpenInstance(const InstanceOptions& options) {
  std::filesystem::create_directories(options.folder);
  std::filesystem::permissions(options.folder, std::filesystem::perms::owner_all);
  auto state = std::make_unique<InstanceState>(options, RunSystemProcedure);
  state->LockFolder();
  if (!HoldsInstance(*state)) MakeSampleInstance(options);
  state->LoadPlaces();
  RenewTemporaryDatabase(*state);
  return state;
}

}  // namespace dbkeeper::server
