// A session of the agent's own, without a client: statements with parameters, rows as cells.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/instance.h"
#include "server/engine/session.h"

namespace dbkeeper::server {

using CellRows = std::vector<std::vector<Cell>>;

class AgentSession {
 public:
  // In the name of sa, with master as its database.
  explicit AgentSession(Instance& instance);

  // Runs statements and gives the rows of the last select. Throws SqlError for the first error.
  CellRows Run(std::string_view text, const Parameters& parameters = {});

 private:
  std::unique_ptr<Session> session_;
};

Parameter NumberParameter(std::string name, std::int64_t value);
Parameter TextParameter(std::string name, std::string value);
// A job_id.
Parameter IdParameter(std::string name, std::string bytes);

inline std::int64_t NumberOf(const Cell& cell) { return std::get<std::int64_t>(cell); }
inline const std::string& TextOf(const Cell& cell) { return std::get<std::string>(cell); }

}  // namespace dbkeeper::server
