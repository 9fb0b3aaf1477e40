// Bytes of a file that is little-endian, and the records it consists of.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "document/xls/Format.h"

namespace dbkeeper::xls {

class Bytes {
 public:
  void U8(std::uint8_t value) { bytes_ += static_cast<char>(value); }
  void U16(std::uint16_t value) { Number<2>(value); }
  void U32(std::uint32_t value) { Number<4>(value); }
  void F64(double value) { Number<8>(std::bit_cast<std::uint64_t>(value)); }
  void U16s(std::initializer_list<std::uint16_t> values) {
    for (const std::uint16_t value : values) U16(value);
  }
  void Raw(std::string_view bytes) { bytes_ += bytes; }
  void Fill(std::size_t count, char byte) { bytes_.append(count, byte); }

  // Change what stands at `at`.
  void PutU16(std::size_t at, std::uint16_t value) { Put<2>(at, value); }
  void PutU32(std::size_t at, std::uint32_t value) { Put<4>(at, value); }

  std::size_t Size() const { return bytes_.size(); }
  const std::string& View() const { return bytes_; }
  std::string Take() { return std::exchange(bytes_, {}); }

 private:
  template <std::size_t kSize>
  void Number(std::uint64_t value) {
    char out[kSize];
    for (std::size_t i = 0; i < kSize; ++i) out[i] = static_cast<char>(value >> (8 * i));
    bytes_.append(out, kSize);
  }
  template <std::size_t kSize>
  void Put(std::size_t at, std::uint64_t value) {
    for (std::size_t i = 0; i < kSize; ++i) bytes_[at + i] = static_cast<char>(value >> (8 * i));
  }

  std::string bytes_;
};

// A record that is open for a scope; what the scope adds is its content, of at most kMaxRecord
// bytes.
class Record {
 public:
  Record(Bytes& out, RecordId id) : out_(out), start_(out.Size()) {
    out_.U16(static_cast<std::uint16_t>(id));
    out_.U16(0);
  }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
  ~Record() { out_.PutU16(start_ + 2, static_cast<std::uint16_t>(Length())); }

  std::size_t Length() const { return out_.Size() - start_ - 4; }

 private:
  Bytes& out_;
  std::size_t start_;
};

// A record that goes on in further ones when it is full.
class ContinuedRecord {
 public:
  ContinuedRecord(Bytes& out, RecordId id) : out_(out) { record_.emplace(out_, id); }

  std::size_t Room() const { return kMaxRecord - record_->Length(); }
  // The place of what comes next, from the head of the present record on.
  std::size_t Place() const { return record_->Length() + 4; }
  void Continue() {
    record_.reset();
    record_.emplace(out_, RecordId::kContinue);
  }

 private:
  Bytes& out_;
  std::optional<Record> record_;
};

// A record of 16-bit numbers alone.
inline void AddRecord(Bytes& out, RecordId id, std::initializer_list<std::uint16_t> values) {
  const Record record(out, id);
  out.U16s(values);
}

// The record that begins a part of the stream.
inline void AddBeginning(Bytes& out, std::uint16_t kind) {
  constexpr std::uint16_t kVersion = 0x0600;
  constexpr std::uint16_t kBuild = 3515;
  constexpr std::uint16_t kYear = 1996;
  AddRecord(out, RecordId::kBeginning, {kVersion, kind, kBuild, kYear, 0, 0, 6, 0});
}

}  // namespace dbkeeper::xls
