// Little-endian bytes, written to and read from the wire.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace dbkeeper::server {

static_assert(std::endian::native == std::endian::little, "numbers go to the wire as they stand");

// What the client sent is no valid conversation, or the client is gone; the connection is closed.
class WireError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A number of up to 8 bytes, the lowest first.
inline std::uint64_t LittleOf(std::string_view bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    value = value << 8 | static_cast<std::uint8_t>(bytes[i]);
  return value;
}

// Appends to a buffer that is sent as a whole. A number or enumerator is cut to the bytes asked
// for.
class ByteWriter {
 public:
  ByteWriter& U8(auto value) {
    bytes_.push_back(static_cast<char>(value));
    return *this;
  }
  ByteWriter& U16(auto value) { return Little(static_cast<std::uint16_t>(value), 2); }
  ByteWriter& U32(auto value) { return Little(static_cast<std::uint32_t>(value), 4); }
  ByteWriter& Little(std::uint64_t value, std::size_t count) {
    bytes_.append(reinterpret_cast<const char*>(&value), count);
    return *this;
  }
  ByteWriter& Raw(std::string_view bytes) {
    bytes_.append(bytes);
    return *this;
  }
  // Writes `value` over `count` bytes at `position`: a length that was not known before.
  void Patch(std::size_t position, std::uint64_t value, std::size_t count) {
    std::memcpy(bytes_.data() + position, &value, count);
  }
  void Clear() { bytes_.clear(); }
  std::size_t size() const { return bytes_.size(); }
  std::string& buffer() { return bytes_; }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// Reads a message. What is read must be there: every call throws WireError where the message ends
// early. A derived class may hand out a message piece by piece.
class ByteReader {
 public:
  // Nothing claims more bytes at once than this; a lying length is refused, not allocated.
  static constexpr std::size_t kLargestValue = 64u << 20;

  explicit ByteReader(std::string_view bytes) : rest_(bytes) {}
  virtual ~ByteReader() = default;
  ByteReader(const ByteReader&) = delete;
  ByteReader& operator=(const ByteReader&) = delete;

  std::uint8_t U8() { return Little<std::uint8_t>(); }
  std::uint16_t U16() { return Little<std::uint16_t>(); }
  std::uint32_t U32() { return Little<std::uint32_t>(); }
  void Skip(std::size_t count) { Take(count, nullptr); }
  std::string Raw(std::size_t count) {
    if (count > kLargestValue) throw WireError("a value is too long");
    std::string bytes;
    Take(count, &bytes);
    return bytes;
  }
  bool AtEnd() { return rest_.empty() && !Refill(rest_); }
  // Hands out what is at hand, without asking for more.
  std::string_view TakePiece() { return std::exchange(rest_, {}); }

 protected:
  // Gives the next piece of the message; false at its end.
  virtual bool Refill(std::string_view& /*rest*/) { return false; }

 private:
  template <typename Number>
  Number Little() {
    if (rest_.size() < sizeof(Number)) return static_cast<Number>(LittleOf(Raw(sizeof(Number))));
    Number value;
    std::memcpy(&value, rest_.data(), sizeof value);
    rest_.remove_prefix(sizeof value);
    return value;
  }
  void Take(std::size_t count, std::string* into) {
    while (count > 0) {
      if (rest_.empty() && !Refill(rest_)) throw WireError("the message ends early");
      const std::size_t piece = std::min(count, rest_.size());
      if (into) into->append(rest_.data(), piece);
      rest_.remove_prefix(piece);
      count -= piece;
    }
  }

  std::string_view rest_;
};

}  // namespace dbkeeper::server
