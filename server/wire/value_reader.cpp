#include "server/wire/value_reader.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string>
#include <utility>

#include "server/types/datetime.h"
#include "server/types/decimal.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

std::uint32_t ReadLength(ByteReader& in, const Announcement& row) {
  switch (row.form) {
    case LengthForm::kFixed:
      return row.length;
    case LengthForm::kOneByte:
      return in.U8();
    case LengthForm::kTwoBytes:
      return in.U16();
    case LengthForm::kFourBytes:
      return in.U32();
  }
  return 0;
}

WireType TypeOf(const Announcement& row, std::uint32_t length) {
  WireType type;
  type.type.id = row.id;
  type.form = row.form;
  type.length = length;
  const std::uint32_t unit = IsNationalText(row.id) ? 2 : 1;
  const bool has_length =
      row.form == LengthForm::kTwoBytes || (row.form == LengthForm::kOneByte && row.length == 0);
  if (has_length) type.type.length = static_cast<int>(length / unit);
  return type;
}

// Whether a type announced with `token` and the longest length is the one of `row`.
bool Announces(const Announcement& row, std::uint8_t token, std::uint32_t length) {
  const bool told_apart = row.form == LengthForm::kOneByte && row.length != 0;
  return row.token == token && (!told_apart || row.length == length);
}

void ReadPrecision(ByteReader& in, SqlType& type) {
  type.precision = in.U8();
  type.scale = in.U8();
  if (type.precision < 1 || type.precision > kMostPrecision || type.scale > type.precision) {
    throw WireError("a precision makes no sense");
  }
}

// A number of 1 to 8 bytes, the lowest first.
std::uint64_t LittleOf(std::string_view bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(bytes[i]);
  }
  return value;
}

std::int64_t SignedOf(std::string_view bytes) {
  const std::size_t unused = 64 - 8 * bytes.size();
  return static_cast<std::int64_t>(LittleOf(bytes) << unused) >> unused;
}

std::string MoneyText(std::int64_t units) { return FormatDecimal({units, kMoneyScale}); }

// The sign, and up to 16 bytes of the number.
std::string DecimalText(std::string_view bytes, int scale) {
  Decimal number;
  number.scale = scale;
  for (std::size_t i = bytes.size() - 1; i > 0; --i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (i == 16 && byte > 0x7F) throw WireError("a number has more than 38 digits");
    number.value = number.value << 8 | byte;
  }
  if (bytes[0] == 0) number.value = -number.value;
  if (PrecisionOf(number) > kMostPrecision) throw WireError("a number has more than 38 digits");
  return FormatDecimal(number);
}

void ExpectLength(std::string_view bytes, std::size_t least, std::size_t most) {
  if (bytes.size() < least || bytes.size() > most) throw WireError("a value has a wrong length");
}

// A value of the type that is not null, from its bytes.
Cell DecodeValue(std::string bytes, const SqlType& type, const CodePage932& code_page) {
  const auto part = [&bytes](std::size_t at, std::size_t count) {
    return std::string_view(bytes).substr(at, count);
  };
  switch (type.id) {
    case TypeId::kBit:
    case TypeId::kTinyInt: {
      ExpectLength(bytes, 1, 1);
      const auto value = static_cast<std::int64_t>(LittleOf(bytes));
      return type.id == TypeId::kBit ? std::min<std::int64_t>(value, 1) : value;
    }
    case TypeId::kSmallInt:
    case TypeId::kInt:
    case TypeId::kBigInt:
      ExpectLength(bytes, 1, 8);
      return SignedOf(bytes);
    case TypeId::kReal:
      ExpectLength(bytes, 4, 4);
      return double{std::bit_cast<float>(static_cast<std::uint32_t>(LittleOf(bytes)))};
    case TypeId::kFloat:
      ExpectLength(bytes, 8, 8);
      return std::bit_cast<double>(LittleOf(bytes));
    case TypeId::kDecimal:
    case TypeId::kNumeric:
      ExpectLength(bytes, 2, 17);
      return DecimalText(bytes, type.scale);
    case TypeId::kMoney:
      ExpectLength(bytes, 8, 8);
      return MoneyText(
          static_cast<std::int64_t>(LittleOf(part(0, 4)) << 32 | LittleOf(part(4, 4))));
    case TypeId::kSmallMoney:
      ExpectLength(bytes, 4, 4);
      return MoneyText(SignedOf(bytes));
    case TypeId::kDateTime:
      ExpectLength(bytes, 8, 8);
      return SignedOf(part(0, 4)) * kTicksPerDay + static_cast<std::int64_t>(LittleOf(part(4, 4)));
    case TypeId::kSmallDateTime:
      ExpectLength(bytes, 4, 4);
      return static_cast<std::int64_t>(LittleOf(part(0, 2))) * kTicksPerDay +
             static_cast<std::int64_t>(LittleOf(part(2, 2))) * kTicksPerMinute;
    case TypeId::kUniqueIdentifier:
      ExpectLength(bytes, 16, 16);
      return Blob{std::move(bytes)};
    case TypeId::kChar:
    case TypeId::kVarChar:
    case TypeId::kText:
      return code_page.ToUtf8(bytes);
    case TypeId::kNChar:
    case TypeId::kNVarChar:
    case TypeId::kNText:
      return Utf16ToUtf8(bytes);
    case TypeId::kBinary:
    case TypeId::kVarBinary:
    case TypeId::kImage:
    case TypeId::kTimestamp:
      return Blob{std::move(bytes)};
    case TypeId::kSqlVariant:
      break;
  }
  throw WireError("there is no such type");
}

// The base type of a sql_variant stands before its value.
void DecodeVariant(const std::string& bytes, const CodePage932& code_page, Parameter& value) {
  ByteReader in(bytes);
  const std::uint8_t token = in.U8();
  const std::size_t properties = in.U8();
  const std::size_t head = 2 + properties;
  if (bytes.size() < head) throw WireError("a value ends early");
  const std::size_t rest = bytes.size() - head;
  const std::span<const Announcement> table = Announcements();
  const auto row = std::find_if(table.begin(), table.end(), [&](const Announcement& candidate) {
    return Announces(candidate, token, static_cast<std::uint32_t>(rest)) &&
           candidate.form != LengthForm::kFourBytes;
  });
  if (row == table.end()) throw WireError("there is no such type");
  value.type = TypeOf(*row, static_cast<std::uint32_t>(rest)).type;
  if (row->extra == Extra::kPrecise) ReadPrecision(in, value.type);
  value.value = DecodeValue(bytes.substr(head), value.type, code_page);
}

}  // namespace

WireType ReadTypeInfo(ByteReader& in) {
  const std::uint8_t token = in.U8();
  const std::span<const Announcement> table = Announcements();
  const auto first = std::find_if(table.begin(), table.end(),
                                  [token](const Announcement& row) { return row.token == token; });
  if (first == table.end()) throw WireError("there is no such type");
  const std::uint32_t length = ReadLength(in, *first);
  const auto row = std::find_if(first, table.end(), [&](const Announcement& candidate) {
    return Announces(candidate, token, length);
  });
  if (row == table.end()) throw WireError("a type has a wrong length");
  WireType type = TypeOf(*row, length);
  if (row->extra == Extra::kCollated) in.Skip(kCollation.size());
  if (row->extra == Extra::kPrecise) ReadPrecision(in, type.type);
  return type;
}

void ReadValue(ByteReader& in, const WireType& type, ValuePlace place, const CodePage932& code_page,
               Parameter& value) {
  value.type = type.type;
  std::optional<std::size_t> length;
  const bool variant = type.type.id == TypeId::kSqlVariant;
  if (type.form == LengthForm::kFixed) {
    length = type.length;
  } else if (type.form == LengthForm::kOneByte) {
    if (const std::uint8_t bytes = in.U8(); bytes != 0) length = bytes;
  } else if (type.form == LengthForm::kTwoBytes) {
    if (const std::uint16_t bytes = in.U16(); bytes != kNullTwoBytes) length = bytes;
  } else if (place == ValuePlace::kRow && !variant) {
    const std::uint8_t pointer = in.U8();
    if (pointer != 0) {
      in.Skip(pointer + std::size_t{kTextTimestamp});
      length = in.U32();
    }
  } else {
    const std::uint32_t bytes = in.U32();
    if (bytes != kNullFourBytes && !(variant && bytes == 0)) length = bytes;
  }
  if (!length) {
    value.value = {};
  } else if (variant) {
    DecodeVariant(in.Raw(*length), code_page, value);
  } else {
    value.value = DecodeValue(in.Raw(*length), value.type, code_page);
  }
}

}  // namespace dbkeeper::server
