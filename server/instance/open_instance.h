// Opens an instance with all that belongs to it.
#pragma once

#include <memory>

#include "server/engine/instance.h"

namespace dbkeeper::server {

// Opens the instance in the folder, or makes the sample one there. Throws std::runtime_error when
// the folder cannot be used or another process holds it.
std::unique_ptr<Instance> OpenInstance(const InstanceOptions& options);

}  // namespace dbkeeper::server
