// One client's conversation with the instance: its login, current database, temp tables,
// transaction and options. Used by one thread at a time.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/result_sink.h"

namespace dbkeeper::server {

class Instance;

// A parameter of a remote procedure call; the value is as sql_type.h lays it down, in `bytes`,
// `integer` or `real` according to its type.
struct RpcParameter {
  std::string name;  // "@p1"; empty when passed by position
  SqlType type;
  bool is_null = false;
  bool is_output = false;
  std::int64_t integer = 0;
  double real = 0;
  std::string bytes;
};

struct ClientInfo {
  std::string host_name;
  std::string program_name;
  std::string login_name;
  std::int64_t process_id = 0;
};

// Runs batches and procedures for one client.
class Session {
 public:
  virtual ~Session() = default;

  virtual int spid() const = 0;
  virtual const std::string& current_database() const = 0;

  // Runs a batch of statements (UTF-8). Everything that happens is told to `sink`; an error of a
  // statement is a message and a failed statement end, never an exception.
  virtual void RunBatch(std::string_view text, ResultSink& sink) = 0;

  // Runs a batch with values for its parameters (sp_executesql and the prepared forms).
  virtual void RunParameterized(std::string_view text, const std::vector<RpcParameter>& parameters,
                                ResultSink& sink) = 0;

  // Runs a system procedure by name.
  virtual void RunProcedure(std::string_view name, const std::vector<RpcParameter>& parameters,
                            ResultSink& sink) = 0;

  // Tells the running statement to stop soon; the one call that may come from another thread.
  virtual void Interrupt() = 0;
};

// Why a login was refused, as the message for the client.
struct LoginRefused {
  ServerMessage message;
};

}  // namespace dbkeeper::server
