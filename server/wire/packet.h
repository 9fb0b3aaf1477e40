// Messages as packets: a header of eight bytes (kind, status, length, process, number, window)
// before each piece of a message.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/wire/bytes.h"
#include "server/wire/socket.h"

namespace dbkeeper::server {

enum class PacketKind : std::uint8_t {
  kBatch = 1,
  kRpc = 3,
  kAnswer = 4,
  kAttention = 6,
  kBulkLoad = 7,
  kLogin7 = 16,
  kPreLogin = 18,
};

constexpr std::size_t kPacketHeader = 8;
constexpr std::size_t kSmallestPacket = 512;
constexpr std::size_t kDefaultPacket = 4096;
constexpr std::size_t kLargestPacket = 32767;

// Reads one message after the other from a channel. A message is read piece by piece, so that
// one of any length needs the memory of one packet.
class MessageReader : public ByteReader {
 public:
  explicit MessageReader(Channel& channel) : ByteReader({}), channel_(channel) {}

  // Waits for the next message and gives its kind, nothing when the client closed in between two
  // messages. What was left of the message before is skipped. Throws WireError.
  std::optional<PacketKind> Next();

  // Reads what is left of the message. Throws MessageTooLong for more than `limit` bytes.
  std::string ReadAll(std::size_t limit);

  // The client broke its message off (an attention came in its middle, or it was marked as void);
  // known when the message was read to its end.
  bool cancelled() const { return cancelled_; }

 protected:
  bool Refill(std::string_view& rest) override;

 private:
  bool ReadPacket();
  std::size_t ReceiveExactly(char* bytes, std::size_t size);

  Channel& channel_;
  std::vector<char> packet_;
  std::size_t payload_ = 0;
  PacketKind kind_ = PacketKind::kBatch;
  bool message_open_ = false;
  bool last_ = true;
  bool cancelled_ = false;
};

// A message that is too long to be kept.
class MessageTooLong : public WireError {
 public:
  using WireError::WireError;
};

// Cuts an answer into packets. Full packets leave as they come together, the rest with Finish.
class MessageWriter {
 public:
  explicit MessageWriter(Channel& channel) : channel_(channel) {}

  // The size of the packets that come after; the header counts.
  void SetPacketSize(std::size_t size) { packet_size_ = size; }
  void SetProcess(int spid) { spid_ = spid; }
  void Write(std::string_view bytes);
  // Ends the message and sends what is left of it.
  void Finish();

 private:
  void OpenPacket();
  void ClosePacket(bool last);
  void Send();

  Channel& channel_;
  std::size_t packet_size_ = kDefaultPacket;
  int spid_ = 0;
  std::uint8_t number_ = 0;
  std::string buffer_;
  std::size_t packet_start_ = 0;
};

}  // namespace dbkeeper::server
