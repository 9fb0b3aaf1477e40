// A value with its type under a name.
#pragma once

#include <string>
#include <vector>

#include "server/types/cell.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

// A parameter of a batch, an argument of a procedure, a value for a column; as a declaration
// without a value.
struct Parameter {
  std::string name;  // "@p1"; empty when passed by position
  SqlType type;
  Cell value = {};  // in the storage form of the type
  bool is_output = false;
};
using Parameters = std::vector<Parameter>;
inline const Parameters kNoParameters;

}  // namespace dbkeeper::server
