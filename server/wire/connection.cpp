#include "server/wire/connection.h"

#include <utility>

#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/wire/code_page.h"
#include "server/wire/login.h"

namespace dbkeeper::server {
namespace {

// The longest batch or call; the rows of a bulk load are read one by one and have no limit.
constexpr std::size_t kLongestRequest = 64u << 20;
constexpr std::size_t kLongestLogin = 64u << 10;
// How long a client may go on sending what has been refused already.
constexpr std::chrono::seconds kRefusalTime{10};

}  // namespace

Connection::Connection(Channel& channel, const ConnectionServices& services,
                       std::function<void(int spid)> on_login)
    : channel_(channel),
      services_(services),
      on_login_(std::move(on_login)),
      server_name_(services.factory.server_name()),
      reader_(channel),
      writer_(channel) {}

Connection::~Connection() = default;

AnswerContext Connection::Context() { return {writer_, server_name_, cancelled_}; }

void Connection::Serve() {
  try {
    channel_.SetDeadline(std::chrono::steady_clock::now() + services_.login_timeout);
    if (!LogIn()) return;
    channel_.SetDeadline(std::nullopt);
    while (const auto kind = reader_.Next()) ServeRequest(*kind);
  } catch (const MessageTooLong&) {
    try {
      channel_.SetDeadline(std::chrono::steady_clock::now() + kRefusalTime);
      while (!reader_.AtEnd()) reader_.TakePiece();
      Refuse(MakeMessage(701, {" The request is longer than 64 MB."}));
    } catch (const WireError&) {
    }
  } catch (const WireError&) {
    // Nothing to be said to a client that is gone or speaks something else.
  }
}

// False when the client may not come in.
bool Connection::LogIn() {
  auto kind = reader_.Next();
  while (kind == PacketKind::kPreLogin) {
    Send(AnswerPreLogin(reader_.ReadAll(kLongestLogin)));
    kind = reader_.Next();
  }
  if (kind != PacketKind::kLogin7) return false;
  const LoginPacket login = ReadLogin(reader_.ReadAll(kLongestLogin));
  try {
    session_ = services_.factory.Login(login.request);
  } catch (const LoginRefused& refused) {
    Refuse(refused.message);
    return false;
  }
  AcceptLogin(login);
  return true;
}

void Connection::AcceptLogin(const LoginPacket& login) {
  const std::string& database = session_->current_database();
  const std::string size = std::to_string(login.packet_size);
  const std::string language = login.language.empty() ? "us_english" : login.language;
  ByteWriter out;
  AppendEnvironment(Environment::kDatabase, database, "master", out);
  AppendMessage(MakeMessage(5701, {database}), server_name_, out);
  AppendCollationChange(out);
  AppendEnvironment(Environment::kLanguage, language, "", out);
  AppendMessage(MakeMessage(5703, {language}), server_name_, out);
  AppendLoginAcknowledge(out);
  AppendEnvironment(Environment::kPacketSize, size, std::to_string(kDefaultPacket), out);
  AppendDone(DoneToken::kBatch, {}, out);
  rpc_.emplace(*session_);
  on_login_(session_->spid());
  writer_.SetProcess(session_->spid());
  Send(out.bytes());
  writer_.SetPacketSize(login.packet_size);
}

void Connection::Send(std::string_view answer) {
  writer_.Write(answer);
  writer_.Finish();
}

void Connection::Refuse(const ServerMessage& message) {
  ByteWriter out;
  AppendMessage(message, server_name_, out);
  AppendDone(DoneToken::kBatch, {.status = kDoneError}, out);
  Send(out.bytes());
}

void Connection::ServeRequest(PacketKind kind) {
  cancelled_ = false;
  switch (kind) {
    case PacketKind::kBatch:
      return ServeBatch();
    case PacketKind::kRpc:
      return ServeRpc();
    case PacketKind::kBulkLoad:
      return ServeBulkLoad();
    case PacketKind::kAttention:
      // A statement that an attention stopped has ended its answer as always; this comes behind it.
      return AcknowledgeAttention();
    case PacketKind::kAnswer:
    case PacketKind::kLogin7:
    case PacketKind::kPreLogin:
      break;
  }
  throw WireError("the client sent something out of order");
}

void Connection::AcknowledgeAttention() {
  ByteWriter out;
  AppendDone(DoneToken::kBatch, {.status = kDoneAttention}, out);
  Send(out.bytes());
}

void Connection::ServeBatch() {
  const std::string text = Utf16ToUtf8(reader_.ReadAll(kLongestRequest));
  if (reader_.cancelled()) return AcknowledgeAttention();
  WireSink sink(Context(), WireSink::Kind::kBatch);
  bulk_target_ = ParseInsertBulk(text);
  if (!bulk_target_) {
    const AttentionWatcher::Watch watch(services_.watcher, channel_, *session_, cancelled_);
    session_->RunBatch(text, sink);
  }
  sink.Finish();
}

void Connection::ServeRpc() {
  const std::string message = reader_.ReadAll(kLongestRequest);
  if (reader_.cancelled()) return AcknowledgeAttention();
  ByteReader in(message);
  const AttentionWatcher::Watch watch(services_.watcher, channel_, *session_, cancelled_);
  for (bool more = true; more;) {
    const RpcRequest request = ReadRpcRequest(in);
    more = request.more_follow && !cancelled_;
    WireSink sink(Context(), WireSink::Kind::kProcedure);
    rpc_->Run(request, sink);
    sink.Finish(more ? WireSink::Position::kMoreFollow : WireSink::Position::kLast);
  }
}

void Connection::ServeBulkLoad() {
  if (!bulk_target_) throw WireError("rows came without INSERT BULK");
  const BulkTarget target = *std::exchange(bulk_target_, std::nullopt);
  WireSink sink(Context(), WireSink::Kind::kBatch);
  RunBulkLoad(target, reader_, *session_, sink);
  if (reader_.cancelled()) return AcknowledgeAttention();
  sink.Finish();
}

}  // namespace dbkeeper::server
