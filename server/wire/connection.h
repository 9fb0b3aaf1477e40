// One client's conversation on the wire, from its first byte to its last.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "server/engine/session.h"
#include "server/wire/attention.h"
#include "server/wire/bulk_load.h"
#include "server/wire/packet.h"
#include "server/wire/rpc.h"
#include "server/wire/socket.h"
#include "server/wire/wire_sink.h"

namespace dbkeeper::server {

// What the connections of a server have in common; outlives them.
struct ConnectionServices {
  SessionFactory& factory;
  AttentionWatcher& watcher;
  std::chrono::milliseconds login_timeout;
};

class Connection {
 public:
  // `on_login` is told the session's number when the client is in.
  Connection(Channel& channel, const ConnectionServices& services,
             std::function<void(int spid)> on_login);
  ~Connection();

  // Serves the client until it leaves, or breaks the rules, or the channel is closed.
  void Serve();

 private:
  bool LogIn();
  void AcceptLogin(const struct LoginPacket& login);
  void ServeRequest(PacketKind kind);
  void ServeBatch();
  void ServeRpc();
  void ServeBulkLoad();
  void AcknowledgeAttention();
  void Send(std::string_view answer);
  void Refuse(const ServerMessage& message);
  AnswerContext Context();

  Channel& channel_;
  const ConnectionServices& services_;
  const std::function<void(int spid)> on_login_;
  const std::string server_name_;
  MessageReader reader_;
  MessageWriter writer_;
  std::atomic<bool> cancelled_ = false;
  std::unique_ptr<Session> session_;
  std::optional<RpcCalls> rpc_;
  std::optional<BulkTarget> bulk_target_;
};

}  // namespace dbkeeper::server
