// Little-endian bytes, written to and read from the wire.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace dbkeeper::server {

// What the client sent is no valid conversation, or the client is gone; the connection is closed.
class WireError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Appends to a buffer that is sent as a whole.
class ByteWriter {
 public:
  void U8(std::uint8_t value) { bytes_.push_back(static_cast<char>(value)); }
  void U16(std::uint16_t value) { Little(value, 2); }
  void U32(std::uint32_t value) { Little(value, 4); }
  void U64(std::uint64_t value) { Little(value, 8); }
  void Raw(std::string_view bytes) { bytes_.append(bytes); }
  // Writes `value` over the two bytes at `position`: a length that was not known before.
  void PatchU16(std::size_t position, std::uint16_t value) {
    bytes_[position] = static_cast<char>(value);
    bytes_[position + 1] = static_cast<char>(value >> 8);
  }
  void Clear() { bytes_.clear(); }
  std::size_t size() const { return bytes_.size(); }
  std::string& buffer() { return bytes_; }
  const std::string& bytes() const { return bytes_; }

 private:
  void Little(std::uint64_t value, int count) {
    char raw[8];
    for (int i = 0; i < count; ++i) raw[i] = static_cast<char>(value >> (8 * i));
    bytes_.append(raw, static_cast<std::size_t>(count));
  }

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

  std::uint8_t U8() { return static_cast<std::uint8_t>(Little(1)); }
  std::uint16_t U16() { return static_cast<std::uint16_t>(Little(2)); }
  std::uint32_t U32() { return static_cast<std::uint32_t>(Little(4)); }
  std::uint64_t U64() { return Little(8); }
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
  std::uint64_t Little(std::size_t count) {
    if (rest_.size() < count) {
      const std::string bytes = Raw(count);
      return Value(bytes.data(), count);
    }
    const std::uint64_t value = Value(rest_.data(), count);
    rest_.remove_prefix(count);
    return value;
  }
  static std::uint64_t Value(const char* bytes, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      value |= std::uint64_t{static_cast<std::uint8_t>(bytes[i])} << (8 * i);
    }
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
