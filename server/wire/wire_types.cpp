#include "server/wire/wire_types.h"

#include <algorithm>
#include <array>

namespace dbkeeper::server {
namespace {

constexpr std::array kAnnouncements = {
    Announcement{0x68, TypeId::kBit, LengthForm::kOneByte, 1},
    Announcement{0x26, TypeId::kTinyInt, LengthForm::kOneByte, 1},
    Announcement{0x26, TypeId::kSmallInt, LengthForm::kOneByte, 2},
    Announcement{0x26, TypeId::kInt, LengthForm::kOneByte, 4},
    Announcement{0x26, TypeId::kBigInt, LengthForm::kOneByte, 8},
    Announcement{0x6D, TypeId::kReal, LengthForm::kOneByte, 4},
    Announcement{0x6D, TypeId::kFloat, LengthForm::kOneByte, 8},
    Announcement{0x6A, TypeId::kDecimal, LengthForm::kOneByte, 0, Extra::kPrecise},
    Announcement{0x6C, TypeId::kNumeric, LengthForm::kOneByte, 0, Extra::kPrecise},
    Announcement{0x6E, TypeId::kSmallMoney, LengthForm::kOneByte, 4},
    Announcement{0x6E, TypeId::kMoney, LengthForm::kOneByte, 8},
    Announcement{0x6F, TypeId::kSmallDateTime, LengthForm::kOneByte, 4},
    Announcement{0x6F, TypeId::kDateTime, LengthForm::kOneByte, 8},
    Announcement{0x24, TypeId::kUniqueIdentifier, LengthForm::kOneByte, 16},
    Announcement{0xAF, TypeId::kChar, LengthForm::kTwoBytes, 0, Extra::kCollated},
    Announcement{0xA7, TypeId::kVarChar, LengthForm::kTwoBytes, 0, Extra::kCollated},
    Announcement{0xEF, TypeId::kNChar, LengthForm::kTwoBytes, 0, Extra::kCollated},
    Announcement{0xE7, TypeId::kNVarChar, LengthForm::kTwoBytes, 0, Extra::kCollated},
    Announcement{0xAD, TypeId::kBinary, LengthForm::kTwoBytes, 0},
    Announcement{0xA5, TypeId::kVarBinary, LengthForm::kTwoBytes, 0},
    Announcement{0xAD, TypeId::kTimestamp, LengthForm::kTwoBytes, 0},
    Announcement{0x23, TypeId::kText, LengthForm::kFourBytes, 0, Extra::kCollated},
    Announcement{0x63, TypeId::kNText, LengthForm::kFourBytes, 0, Extra::kCollated},
    Announcement{0x22, TypeId::kImage, LengthForm::kFourBytes, 0},
    Announcement{0x62, TypeId::kSqlVariant, LengthForm::kFourBytes, 0},
    Announcement{0x32, TypeId::kBit, LengthForm::kFixed, 1},
    Announcement{0x30, TypeId::kTinyInt, LengthForm::kFixed, 1},
    Announcement{0x34, TypeId::kSmallInt, LengthForm::kFixed, 2},
    Announcement{0x38, TypeId::kInt, LengthForm::kFixed, 4},
    Announcement{0x7F, TypeId::kBigInt, LengthForm::kFixed, 8},
    Announcement{0x3B, TypeId::kReal, LengthForm::kFixed, 4},
    Announcement{0x3E, TypeId::kFloat, LengthForm::kFixed, 8},
    Announcement{0x7A, TypeId::kSmallMoney, LengthForm::kFixed, 4},
    Announcement{0x3C, TypeId::kMoney, LengthForm::kFixed, 8},
    Announcement{0x3A, TypeId::kSmallDateTime, LengthForm::kFixed, 4},
    Announcement{0x3D, TypeId::kDateTime, LengthForm::kFixed, 8},
    Announcement{0x37, TypeId::kDecimal, LengthForm::kOneByte, 0, Extra::kPrecise},
    Announcement{0x3F, TypeId::kNumeric, LengthForm::kOneByte, 0, Extra::kPrecise},
    Announcement{0x2F, TypeId::kChar, LengthForm::kOneByte, 0},
    Announcement{0x27, TypeId::kVarChar, LengthForm::kOneByte, 0},
    Announcement{0x2D, TypeId::kBinary, LengthForm::kOneByte, 0},
    Announcement{0x25, TypeId::kVarBinary, LengthForm::kOneByte, 0},
};

}  // namespace

std::span<const Announcement> Announcements() { return kAnnouncements; }

const Announcement& AnnouncementOf(TypeId id) {
  return *std::find_if(kAnnouncements.begin(), kAnnouncements.end(),
                       [id](const Announcement& row) { return row.id == id; });
}

}  // namespace dbkeeper::server
