// How types are announced on the wire.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "server/types/sql_type.h"

namespace dbkeeper::server {

// Japanese_CI_AS: language 0x0411; case, kana and width do not count, accents do.
constexpr std::string_view kCollation("\x11\x04\xD0\x00\x00", 5);

constexpr int kMoneyScale = 4;
constexpr int kMostPrecision = 38;

// What stands for a null in place of a length.
constexpr std::uint16_t kNullTwoBytes = 0xFFFF;
constexpr std::uint32_t kNullFourBytes = 0xFFFFFFFF;

// Lengths of what stands in front of a large value in a row.
constexpr std::uint8_t kTextPointer = 16;
constexpr std::uint8_t kTextTimestamp = 8;

// How a value says its length.
enum class LengthForm : std::uint8_t { kFixed, kOneByte, kTwoBytes, kFourBytes };

// What an announcement has besides the length.
enum class Extra : std::uint8_t { kNothing, kCollated, kPrecise };

// One way to announce a type. `length` is the fixed length, or for types of one length in a
// nullable form the length that tells them apart.
struct Announcement {
  std::uint8_t token;
  TypeId id;
  LengthForm form;
  std::uint8_t length;
  Extra extra = Extra::kNothing;
};

// All announcements. The first of a type is how the server announces it; the others are only
// understood.
std::span<const Announcement> Announcements();

// How the server announces the type.
const Announcement& AnnouncementOf(TypeId id);

}  // namespace dbkeeper::server
