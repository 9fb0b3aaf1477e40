// Remote procedure calls: the ones that clients prepare statements and open cursors with, and all
// others, which go to the engine.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/session.h"
#include "server/wire/bytes.h"
#include "server/wire/wire_sink.h"

namespace dbkeeper::server {

struct RpcRequest {
  std::string procedure;
  Parameters parameters;
  bool more_follow = false;  // another call stands behind this one in the message
};

// Reads the next call of a message. Throws WireError.
RpcRequest ReadRpcRequest(ByteReader& in);

// A client's prepared statements and open cursors. Refers to its session.
class RpcCalls {
 public:
  explicit RpcCalls(Session& session) : session_(session) {}

  // Runs the call; everything it gives, but the end of the answer, is told to `sink`.
  void Run(const RpcRequest& request, WireSink& sink);

 private:
  using Handler = void (RpcCalls::*)(const Parameters&, WireSink&);
  struct Procedure {
    std::uint16_t id;
    std::string_view name;
    std::size_t least_arguments;
    Handler handler;
  };
  struct Prepared {
    Parameters declared;
    std::string text;
  };

  static const std::vector<Procedure>& Procedures();
  friend RpcRequest ReadRpcRequest(ByteReader& in);

  void ExecuteSql(const Parameters& arguments, WireSink& sink);
  void Prepare(const Parameters& arguments, WireSink& sink);
  void Execute(const Parameters& arguments, WireSink& sink);
  void PrepareAndExecute(const Parameters& arguments, WireSink& sink);
  void Unprepare(const Parameters& arguments, WireSink& sink);
  void CursorOpen(const Parameters& arguments, WireSink& sink);
  void CursorFetch(const Parameters& arguments, WireSink& sink);
  void CursorOption(const Parameters& arguments, WireSink& sink);
  void CursorClose(const Parameters& arguments, WireSink& sink);
  void CursorChange(const Parameters& arguments, WireSink& sink);

  int Keep(const Parameters& arguments);
  void RunPrepared(int handle, const Parameters& arguments, std::size_t first_value,
                   WireSink& sink);
  Cursor& FindCursor(const Parameters& arguments, std::string_view procedure);

  Session& session_;
  std::map<int, Prepared> prepared_;
  std::map<int, std::unique_ptr<Cursor>> cursors_;
  int last_handle_ = 0;
};

}  // namespace dbkeeper::server
