#include "server/wire/value_writer.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <stdexcept>
#include <string>

#include "server/types/datetime.h"
#include "server/types/decimal.h"
#include "server/types/type_rules.h"
#include "server/wire/wire_types.h"

namespace dbkeeper::server {
namespace {

constexpr int kDefaultPrecision = 18;
constexpr std::uint32_t kMostBytes = 8000;
constexpr std::uint32_t kVariantBytes = 8009;
constexpr std::uint32_t kMostLarge = 0x7FFFFFFF;

int AnnouncedPrecision(const SqlType& type) {
  return type.precision <= 0 ? kDefaultPrecision : std::min(type.precision, kMostPrecision);
}

// The longest value in bytes. An expression may know no length; it gets the longest there is.
std::uint32_t MostBytes(const SqlType& type) {
  const std::uint32_t unit = IsNationalText(type.id) ? 2 : 1;
  if (type.id == TypeId::kTimestamp) return 8;
  if (type.length <= 0) return kMostBytes;
  return std::min(static_cast<std::uint32_t>(type.length) * unit, kMostBytes);
}

void AppendFixed(std::uint64_t value, std::uint8_t length, ByteWriter& out) {
  out.U8(length);
  for (int i = 0; i < length; ++i) out.U8(static_cast<std::uint8_t>(value >> (8 * i)));
}

// The units of the last of `scale` decimals that a cell's text makes.
Int128 UnitsOf(std::string_view text, int scale) {
  std::optional<Decimal> number = ParseDecimal(text);
  if (number) number = Rescale(*number, scale);
  if (!number) throw std::runtime_error("a cell of the engine is no number");
  return number->value;
}

void AppendDecimal(std::string_view text, const SqlType& type, ByteWriter& out) {
  const Int128 units = UnitsOf(text, type.scale);
  const int length = DecimalBytes(AnnouncedPrecision(type));
  out.U8(static_cast<std::uint8_t>(length));
  out.U8(units < 0 ? 0 : 1);
  const Int128 size = units < 0 ? -units : units;
  for (int i = 0; i < length / 4; ++i) out.U32(static_cast<std::uint32_t>(size >> (32 * i)));
}

std::uint64_t MoneyUnits(std::string_view text) {
  return static_cast<std::uint64_t>(UnitsOf(text, kMoneyScale));
}

void AppendMoney(std::string_view text, ByteWriter& out) {
  const std::uint64_t units = MoneyUnits(text);
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
  if (IsNationalText(id)) {
    AppendUtf16(text, out);
  } else {
    code_page.Append(text, out);
  }
}

// A value behind its length in two bytes. The client has room for the announced length only; the
// engine keeps to it, and what does not is cut rather than sent.
void AppendSized(const SqlType& type, std::string_view bytes, const CodePage932& code_page,
                 ByteWriter& out) {
  const std::size_t start = out.size();
  out.U16(0);
  if (FamilyOf(type.id) == TypeFamily::kText) {
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
  if (FamilyOf(type.id) == TypeFamily::kText) {
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
  out.U8(AnnouncementOf(TypeId::kNVarChar).token);
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

void AppendTypeInfo(const SqlType& type, ByteWriter& out) {
  const Announcement& row = AnnouncementOf(type.id);
  out.U8(row.token);
  if (row.extra == Extra::kPrecise) {
    out.U8(static_cast<std::uint8_t>(DecimalBytes(AnnouncedPrecision(type))));
    out.U8(static_cast<std::uint8_t>(AnnouncedPrecision(type)));
    out.U8(static_cast<std::uint8_t>(type.scale));
  } else if (row.form == LengthForm::kOneByte) {
    out.U8(row.length);
  } else if (row.form == LengthForm::kTwoBytes) {
    out.U16(static_cast<std::uint16_t>(MostBytes(type)));
  } else {
    out.U32(type.id == TypeId::kSqlVariant ? kVariantBytes : kMostLarge);
  }
  if (row.extra == Extra::kCollated) out.Raw(kCollation);
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
      return AppendFixed(MoneyUnits(row.Bytes(column)), 4, out);
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

}  // namespace dbkeeper::server
