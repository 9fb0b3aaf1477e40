#include "server/wire/packet.h"

namespace dbkeeper::server {
namespace {

constexpr std::uint8_t kLastPacket = 0x01;
constexpr std::uint8_t kIgnoreMessage = 0x02;
// Full packets wait until this many bytes are together: fewer, larger sends.
constexpr std::size_t kSendAt = 64u << 10;

constexpr PacketKind kRequests[] = {PacketKind::kBatch,     PacketKind::kRpc,
                                    PacketKind::kAttention, PacketKind::kBulkLoad,
                                    PacketKind::kLogin7,    PacketKind::kPreLogin};

}  // namespace

std::size_t MessageReader::ReceiveExactly(char* bytes, std::size_t size) {
  std::size_t got = 0;
  while (got < size) {
    const std::size_t piece = channel_.Receive(bytes + got, size - got);
    if (piece == 0) return got;
    got += piece;
  }
  return got;
}

// False when the client closed before the first byte.
bool MessageReader::ReadPacket() {
  unsigned char header[kPacketHeader];
  const std::size_t got = ReceiveExactly(reinterpret_cast<char*>(header), kPacketHeader);
  if (got == 0) return false;
  if (got < kPacketHeader) throw WireError("a packet header ends early");
  const auto kind = static_cast<PacketKind>(header[0]);
  const std::size_t length = std::size_t{header[2]} << 8 | header[3];
  if (std::ranges::find(kRequests, kind) == std::end(kRequests) || length < kPacketHeader ||
      length > kLargestPacket) {
    throw WireError("a packet header makes no sense");
  }
  payload_ = length - kPacketHeader;
  if (packet_.size() < payload_) packet_.resize(payload_);
  if (ReceiveExactly(packet_.data(), payload_) < payload_) throw WireError("a packet ends early");
  last_ = (header[1] & kLastPacket) != 0;
  if ((header[1] & kIgnoreMessage) != 0) cancelled_ = true;
  if (!message_open_) {
    kind_ = kind;
    message_open_ = true;
  } else if (kind == PacketKind::kAttention) {
    cancelled_ = true;
    payload_ = 0;
    last_ = true;
  } else if (kind != kind_) {
    throw WireError("a packet belongs to another message");
  }
  return true;
}

std::optional<PacketKind> MessageReader::Next() {
  while (!AtEnd()) TakePiece();
  message_open_ = false;
  cancelled_ = false;
  payload_ = 0;
  if (!ReadPacket()) {
    last_ = true;
    return std::nullopt;
  }
  return kind_;
}

bool MessageReader::Refill(std::string_view& rest) {
  for (;;) {
    if (payload_ > 0) {
      rest = std::string_view(packet_.data(), payload_);
      payload_ = 0;
      return true;
    }
    if (last_) return false;
    if (!ReadPacket()) throw WireError("a message ends early");
  }
}

std::string MessageReader::ReadAll(std::size_t limit) {
  std::string message;
  while (!AtEnd()) {
    const std::string_view piece = TakePiece();
    if (message.size() + piece.size() > limit) throw MessageTooLong("a message is too long");
    message.append(piece);
  }
  return message;
}

void MessageWriter::OpenPacket() {
  packet_start_ = buffer_.size();
  buffer_.append(kPacketHeader, '\0');
}

void MessageWriter::ClosePacket(bool last) {
  const std::size_t length = buffer_.size() - packet_start_;
  const char header[kPacketHeader] = {
      static_cast<char>(PacketKind::kAnswer), static_cast<char>(last ? kLastPacket : 0),
      static_cast<char>(length >> 8),         static_cast<char>(length),
      static_cast<char>(spid_ >> 8),          static_cast<char>(spid_),
      static_cast<char>(++number_),           0};
  buffer_.replace(packet_start_, kPacketHeader, header, kPacketHeader);
}

void MessageWriter::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    if (buffer_.empty()) OpenPacket();
    if (buffer_.size() - packet_start_ == packet_size_) {
      ClosePacket(false);
      if (buffer_.size() >= kSendAt) Send();
      OpenPacket();
    }
    const std::size_t room = packet_size_ - (buffer_.size() - packet_start_);
    const std::size_t piece = std::min(room, bytes.size());
    buffer_.append(bytes.data(), piece);
    bytes.remove_prefix(piece);
  }
}

void MessageWriter::Finish() {
  if (buffer_.empty()) OpenPacket();
  ClosePacket(true);
  Send();
  number_ = 0;
}

void MessageWriter::Send() {
  channel_.Send(buffer_);
  buffer_.clear();
  packet_start_ = 0;
}

}  // namespace dbkeeper::server
