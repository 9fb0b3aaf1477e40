#include "server/wire/type_codec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <utility>

#include "server/wire/decimal.h"

namespace dbkeeper::server {
namespace {

constexpr std::int64_t kTicksPerDay = 25'920'000;
constexpr std::int64_t kTicksPerMinute = 18'000;
constexpr int kMoneyScale = 4;
constexpr int kMostPrecision = 38;
constexpr int kDefaultPrecision = 18;
constexpr std::uint32_t kMostBytes = 8000;
constexpr std::uint32_t kVariantBytes = 8009;
constexpr std::uint32_t kMostLarge = 0x7FFFFFFF;
constexpr std::uint16_t kNullTwoBytes = 0xFFFF;
constexpr std::uint32_t kNullFourBytes = 0xFFFFFFFF;
constexpr std::uint8_t kTextPointer = 16;
constexpr std::uint8_t kTextTimestamp = 8;
constexpr std::uint8_t kTokenNVarChar = 0xE7;
constexpr std::uint8_t kTokenVariant = 0x62;

enum class Extra : std::uint8_t { kNone, kCollation, kPrecision };

// One way to announce a type. `length` is the fixed length, or for types of one length in a
// nullable form the length that tells them apart.
struct Announcement {
  std::uint8_t token;
  TypeId id;
  LengthForm form;
  std::uint8_t length;
  Extra extra = Extra::kNone;
};

// The first row of a TypeId is how the server announces it; the others are only understood.
constexpr std::array kAnnouncements = {
    Announcement{0x68, TypeId::kBit, LengthForm::kOneByte, 1},
    Announcement{0x26, TypeId::kTinyInt, LengthForm::kOneByte, 1},
    Announcement{0x26, TypeId::kSmallInt, LengthForm::kOneByte, 2},
    Announcement{0x26, TypeId::kInt, LengthForm::kOneByte, 4},
    Announcement{0x26, TypeId::kBigInt, LengthForm::kOneByte, 8},
    Announcement{0x6D, TypeId::kReal, LengthForm::kOneByte, 4},
    Announcement{0x6D, TypeId::kFloat, LengthForm::kOneByte, 8},
    Announcement{0x6A, TypeId::kDecimal, LengthForm::kOneByte, 0, Extra::kPrecision},
    Announcement{0x6C, TypeId::kNumeric, LengthForm::kOneByte, 0, Extra::kPrecision},
    Announcement{0x6E, TypeId::kSmallMoney, LengthForm::kOneByte, 4},
    Announcement{0x6E, TypeId::kMoney, LengthForm::kOneByte, 8},
    Announcement{0x6F, TypeId::kSmallDateTime, LengthForm::kOneByte, 4},
    Announcement{0x6F, TypeId::kDateTime, LengthForm::kOneByte, 8},
    Announcement{0x24, TypeId::kUniqueIdentifier, LengthForm::kOneByte, 16},
    Announcement{0xAF, TypeId::kChar, LengthForm::kTwoBytes, 0, Extra::kCollation},
    Announcement{0xA7, TypeId::kVarChar, LengthForm::kTwoBytes, 0, Extra::kCollation},
    Announcement{0xEF, TypeId::kNChar, LengthForm::kTwoBytes, 0, Extra::kCollation},
    Announcement{kTokenNVarChar, TypeId::kNVarChar, LengthForm::kTwoBytes, 0, Extra::kCollation},
    Announcement{0xAD, TypeId::kBinary, LengthForm::kTwoBytes, 0},
    Announcement{0xA5, TypeId::kVarBinary, LengthForm::kTwoBytes, 0},
    Announcement{0xAD, TypeId::kTimestamp, LengthForm::kTwoBytes, 0},
    Announcement{0x23, TypeId::kText, LengthForm::kFourBytes, 0, Extra::kCollation},
    Announcement{0x63, TypeId::kNText, LengthForm::kFourBytes, 0, Extra::kCollation},
    Announcement{0x22, TypeId::kImage, LengthForm::kFourBytes, 0},
    Announcement{kTokenVariant, TypeId::kSqlVariant, LengthForm::kFourBytes, 0},
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
    Announcement{0x37, TypeId::kDecimal, LengthForm::kOneByte, 0, Extra::kPrecision},
    Announcement{0x3F, TypeId::kNumeric, LengthForm::kOneByte, 0, Extra::kPrecision},
    Announcement{0x2F, TypeId::kChar, LengthForm::kOneByte, 0},
    Announcement{0x27, TypeId::kVarChar, LengthForm::kOneByte, 0},
    Announcement{0x2D, TypeId::kBinary, LengthForm::kOneByte, 0},
    Announcement{0x25, TypeId::kVarBinary, LengthForm::kOneByte, 0},
};

constexpr const Announcement& AnnouncementOf(TypeId id) {
  return *std::find_if(kAnnouncements.begin(), kAnnouncements.end(),
                       [id](const Announcement& row) { return row.id == id; });
}

int PrecisionOf(const SqlType& type) {
  return type.precision <= 0 ? kDefaultPrecision : std::min(type.precision, kMostPrecision);
}

// Sign and number, as long as the precision needs.
int DecimalBytes(int precision) {
  return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

bool IsUnicode(TypeId id) {
  return id == TypeId::kNChar || id == TypeId::kNVarChar || id == TypeId::kNText;
}

// The longest value in bytes. An expression may know no length; it gets the longest there is.
std::uint32_t MostBytes(const SqlType& type) {
  const std::uint32_t unit = IsUnicode(type.id) ? 2 : 1;
  if (type.id == TypeId::kTimestamp) return 8;
  if (type.length <= 0) return kMostBytes;
  return std::min(static_cast<std::uint32_t>(type.length) * unit, kMostBytes);
}

void AppendFixed(std::uint64_t value, std::uint8_t length, ByteWriter& out) {
  out.U8(length);
  for (int i = 0; i < length; ++i) out.U8(static_cast<std::uint8_t>(value >> (8 * i)));
}

void AppendDecimal(std::string_view text, const SqlType& type, ByteWriter& out) {
  const DecimalWords number = ParseDecimal(text, type.scale);
  const int length = DecimalBytes(PrecisionOf(type));
  out.U8(static_cast<std::uint8_t>(length));
  out.U8(number.negative ? 0 : 1);
  for (int i = 0; i < length / 4; ++i) out.U32(number.words[static_cast<std::size_t>(i)]);
}

std::int64_t MoneyUnits(std::string_view text) {
  const DecimalWords number = ParseDecimal(text, kMoneyScale);
  const std::uint64_t units = std::uint64_t{number.words[1]} << 32 | number.words[0];
  return static_cast<std::int64_t>(number.negative ? 0 - units : units);
}

void AppendMoney(std::string_view text, ByteWriter& out) {
  const auto units = static_cast<std::uint64_t>(MoneyUnits(text));
  out.U8(8);
  out.U32(static_cast<std::uint32_t>(units >> 32));  // the high half first
  out.U32(static_cast<std::uint32_t>(units));
}

void AppendDateTime(std::int64_t ticks, ByteWriter& out) {
  std::int64_t days = ticks / kTicksPerDay;
  std::int64_t time = ticks % kTicksPerDay;
  if (time < 0) {
    --days;
    time += kTicksPerDay;
  }
  out.U8(8);
  out.U32(static_cast<std::uint32_t>(days));
  out.U32(static_cast<std::uint32_t>(time));
}

void AppendSmallDateTime(std::int64_t ticks, ByteWriter& out) {
  out.U8(4);
  out.U16(static_cast<std::uint16_t>(ticks / kTicksPerDay));
  out.U16(static_cast<std::uint16_t>(ticks % kTicksPerDay / kTicksPerMinute));
}

void AppendText(TypeId id, std::string_view text, const CodePage932& code_page, std::string& out) {
  if (IsUnicode(id)) {
    AppendUtf16(text, out);
  } else {
    code_page.Append(text, out);
  }
}

bool IsText(TypeId id) {
  return id == TypeId::kChar || id == TypeId::kVarChar || id == TypeId::kText || IsUnicode(id);
}

// A value behind its length in two bytes. The client has room for the announced length only; the
// engine keeps to it, and what does not is cut rather than sent.
void AppendSized(const SqlType& type, std::string_view bytes, const CodePage932& code_page,
                 ByteWriter& out) {
  const std::size_t start = out.size();
  out.U16(0);
  if (IsText(type.id)) {
    AppendText(type.id, bytes, code_page, out.buffer());
  } else {
    out.Raw(bytes);
  }
  const std::size_t length = std::min<std::size_t>(out.size() - start - 2, MostBytes(type));
  out.buffer().resize(start + 2 + length);
  out.PatchU16(start, static_cast<std::uint16_t>(length));
}

void AppendLarge(const SqlType& type, std::string_view bytes, const CodePage932& code_page,
                 ByteWriter& out) {
  // Clients want to see a text pointer, but READTEXT and WRITETEXT do not exist here.
  out.U8(kTextPointer);
  out.Raw("the-text-pointertimestmp");
  std::string& buffer = out.buffer();
  const std::size_t start = buffer.size();
  out.U32(0);
  if (IsText(type.id)) {
    AppendText(type.id, bytes, code_page, buffer);
  } else {
    out.Raw(bytes);
  }
  const std::size_t length = buffer.size() - start - 4;
  for (std::size_t i = 0; i < 4; ++i) buffer[start + i] = static_cast<char>(length >> (8 * i));
}

// A sql_variant travels as nvarchar: its cell holds the base type's text.
void AppendVariant(std::string_view text, ByteWriter& out) {
  std::string units;
  AppendUtf16(text, units);
  units.resize(std::min<std::size_t>(units.size(), kMostBytes));
  constexpr std::uint8_t kProperties = 7;
  out.U32(static_cast<std::uint32_t>(2 + kProperties + units.size()));
  out.U8(kTokenNVarChar);
  out.U8(kProperties);
  out.Raw(kCollation);
  out.U16(kMostBytes);
  out.Raw(units);
}

void AppendNull(LengthForm form, TypeId id, ByteWriter& out) {
  if (form == LengthForm::kTwoBytes) {
    out.U16(kNullTwoBytes);
  } else if (id == TypeId::kSqlVariant) {
    out.U32(0);
  } else {
    out.U8(0);
  }
}

}  // namespace

bool IsLarge(TypeId id) {
  return id == TypeId::kText || id == TypeId::kNText || id == TypeId::kImage;
}

void AppendTypeInfo(const SqlType& type, ByteWriter& out) {
  const Announcement& row = AnnouncementOf(type.id);
  out.U8(row.token);
  if (row.extra == Extra::kPrecision) {
    out.U8(static_cast<std::uint8_t>(DecimalBytes(PrecisionOf(type))));
    out.U8(static_cast<std::uint8_t>(PrecisionOf(type)));
    out.U8(static_cast<std::uint8_t>(type.scale));
  } else if (row.form == LengthForm::kOneByte) {
    out.U8(row.length);
  } else if (row.form == LengthForm::kTwoBytes) {
    out.U16(static_cast<std::uint16_t>(MostBytes(type)));
  } else {
    out.U32(type.id == TypeId::kSqlVariant ? kVariantBytes : kMostLarge);
  }
  if (row.extra == Extra::kCollation) out.Raw(kCollation);
}

void AppendValue(const SqlType& type, const RowView& row, std::size_t column,
                 const CodePage932& code_page, ByteWriter& out) {
  if (row.IsNull(column)) {
    AppendNull(AnnouncementOf(type.id).form, type.id, out);
    return;
  }
  switch (type.id) {
    case TypeId::kBit:
    case TypeId::kTinyInt:
      return AppendFixed(static_cast<std::uint64_t>(row.Integer(column)), 1, out);
    case TypeId::kSmallInt:
      return AppendFixed(static_cast<std::uint64_t>(row.Integer(column)), 2, out);
    case TypeId::kInt:
      return AppendFixed(static_cast<std::uint64_t>(row.Integer(column)), 4, out);
    case TypeId::kBigInt:
      return AppendFixed(static_cast<std::uint64_t>(row.Integer(column)), 8, out);
    case TypeId::kReal:
      return AppendFixed(std::bit_cast<std::uint32_t>(static_cast<float>(row.Real(column))), 4,
                         out);
    case TypeId::kFloat:
      return AppendFixed(std::bit_cast<std::uint64_t>(row.Real(column)), 8, out);
    case TypeId::kDecimal:
    case TypeId::kNumeric:
      return AppendDecimal(row.Bytes(column), type, out);
    case TypeId::kMoney:
      return AppendMoney(row.Bytes(column), out);
    case TypeId::kSmallMoney:
      return AppendFixed(static_cast<std::uint64_t>(MoneyUnits(row.Bytes(column))), 4, out);
    case TypeId::kDateTime:
      return AppendDateTime(row.Integer(column), out);
    case TypeId::kSmallDateTime:
      return AppendSmallDateTime(row.Integer(column), out);
    case TypeId::kUniqueIdentifier: {
      std::string bytes(row.Bytes(column));
      bytes.resize(16);
      out.U8(16);
      return out.Raw(bytes);
    }
    case TypeId::kText:
    case TypeId::kNText:
    case TypeId::kImage:
      return AppendLarge(type, row.Bytes(column), code_page, out);
    case TypeId::kSqlVariant:
      return AppendVariant(row.Bytes(column), out);
    case TypeId::kChar:
    case TypeId::kVarChar:
    case TypeId::kNChar:
    case TypeId::kNVarChar:
    case TypeId::kBinary:
    case TypeId::kVarBinary:
    case TypeId::kTimestamp:
      return AppendSized(type, row.Bytes(column), code_page, out);
  }
}

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
  const std::uint32_t unit = IsUnicode(row.id) ? 2 : 1;
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

std::string MoneyText(std::int64_t units) {
  DecimalWords number;
  number.negative = units < 0;
  const auto size =
      number.negative ? 0 - static_cast<std::uint64_t>(units) : static_cast<std::uint64_t>(units);
  number.words = {static_cast<std::uint32_t>(size), static_cast<std::uint32_t>(size >> 32), 0, 0};
  return FormatDecimal(number, kMoneyScale);
}

std::string DecimalText(std::string_view bytes, int scale) {
  DecimalWords number;
  number.negative = bytes[0] == 0;
  bytes.remove_prefix(1);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    number.words[i / 4] |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * (i % 4));
  }
  return FormatDecimal(number, scale);
}

void ExpectLength(std::string_view bytes, std::size_t least, std::size_t most) {
  if (bytes.size() < least || bytes.size() > most) throw WireError("a value has a wrong length");
}

// Turns the bytes of a value that is not null into `value`, whose type is set.
void DecodeValue(std::string bytes, const CodePage932& code_page, RpcParameter& value) {
  const auto part = [&bytes](std::size_t at, std::size_t count) {
    return std::string_view(bytes).substr(at, count);
  };
  switch (value.type.id) {
    case TypeId::kBit:
    case TypeId::kTinyInt:
      ExpectLength(bytes, 1, 1);
      value.integer = static_cast<std::int64_t>(LittleOf(bytes));
      if (value.type.id == TypeId::kBit) value.integer = value.integer != 0 ? 1 : 0;
      return;
    case TypeId::kSmallInt:
    case TypeId::kInt:
    case TypeId::kBigInt:
      ExpectLength(bytes, 1, 8);
      value.integer = SignedOf(bytes);
      return;
    case TypeId::kReal:
      ExpectLength(bytes, 4, 4);
      value.real = std::bit_cast<float>(static_cast<std::uint32_t>(LittleOf(bytes)));
      return;
    case TypeId::kFloat:
      ExpectLength(bytes, 8, 8);
      value.real = std::bit_cast<double>(LittleOf(bytes));
      return;
    case TypeId::kDecimal:
    case TypeId::kNumeric:
      ExpectLength(bytes, 2, 17);
      value.bytes = DecimalText(bytes, value.type.scale);
      return;
    case TypeId::kMoney:
      ExpectLength(bytes, 8, 8);
      value.bytes =
          MoneyText(static_cast<std::int64_t>(LittleOf(part(0, 4)) << 32 | LittleOf(part(4, 4))));
      return;
    case TypeId::kSmallMoney:
      ExpectLength(bytes, 4, 4);
      value.bytes = MoneyText(SignedOf(bytes));
      return;
    case TypeId::kDateTime:
      ExpectLength(bytes, 8, 8);
      value.integer =
          SignedOf(part(0, 4)) * kTicksPerDay + static_cast<std::int64_t>(LittleOf(part(4, 4)));
      return;
    case TypeId::kSmallDateTime:
      ExpectLength(bytes, 4, 4);
      value.integer = static_cast<std::int64_t>(LittleOf(part(0, 2))) * kTicksPerDay +
                      static_cast<std::int64_t>(LittleOf(part(2, 2))) * kTicksPerMinute;
      return;
    case TypeId::kUniqueIdentifier:
      ExpectLength(bytes, 16, 16);
      value.bytes = std::move(bytes);
      return;
    case TypeId::kChar:
    case TypeId::kVarChar:
    case TypeId::kText:
      value.bytes = code_page.ToUtf8(bytes);
      return;
    case TypeId::kNChar:
    case TypeId::kNVarChar:
    case TypeId::kNText:
      value.bytes = Utf16ToUtf8(bytes);
      return;
    case TypeId::kBinary:
    case TypeId::kVarBinary:
    case TypeId::kImage:
    case TypeId::kTimestamp:
    case TypeId::kSqlVariant:
      value.bytes = std::move(bytes);
      return;
  }
}

// The base type of a sql_variant stands before its value.
void DecodeVariant(std::string bytes, const CodePage932& code_page, RpcParameter& value) {
  ByteReader in(bytes);
  const std::uint8_t token = in.U8();
  const std::size_t properties = in.U8();
  const std::size_t head = 2 + properties;
  if (bytes.size() < head) throw WireError("a value ends early");
  const std::size_t rest = bytes.size() - head;
  const auto row = std::find_if(
      kAnnouncements.begin(), kAnnouncements.end(), [&](const Announcement& candidate) {
        return Announces(candidate, token, static_cast<std::uint32_t>(rest)) &&
               candidate.form != LengthForm::kFourBytes;
      });
  if (row == kAnnouncements.end()) throw WireError("there is no such type");
  value.type = TypeOf(*row, static_cast<std::uint32_t>(rest)).type;
  if (row->extra == Extra::kPrecision) ReadPrecision(in, value.type);
  DecodeValue(bytes.substr(head), code_page, value);
}

}  // namespace

WireType ReadTypeInfo(ByteReader& in) {
  const std::uint8_t token = in.U8();
  const auto first = std::find_if(kAnnouncements.begin(), kAnnouncements.end(),
                                  [token](const Announcement& row) { return row.token == token; });
  if (first == kAnnouncements.end()) throw WireError("there is no such type");
  const std::uint32_t length = ReadLength(in, *first);
  const auto row = std::find_if(first, kAnnouncements.end(), [&](const Announcement& candidate) {
    return Announces(candidate, token, length);
  });
  if (row == kAnnouncements.end()) throw WireError("a type has a wrong length");
  WireType type = TypeOf(*row, length);
  if (row->extra == Extra::kCollation) in.Skip(kCollation.size());
  if (row->extra == Extra::kPrecision) ReadPrecision(in, type.type);
  return type;
}

void ReadValue(ByteReader& in, const WireType& type, ValuePlace place, const CodePage932& code_page,
               RpcParameter& value) {
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
  value.is_null = !length.has_value();
  if (value.is_null) return;
  if (variant) return DecodeVariant(in.Raw(*length), code_page, value);
  DecodeValue(in.Raw(*length), code_page, value);
}

}  // namespace dbkeeper::server
