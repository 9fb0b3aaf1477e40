#include "server/wire/value_codec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "server/types/datetime.h"
#include "server/types/decimal.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"
#include "server/wire/code_page.h"

namespace dbkeeper::server {
namespace {

constexpr int kMoneyScale = 4;
constexpr int kDefaultPrecision = 18;
constexpr int kMostPrecision = 38;
constexpr std::uint32_t kMostBytes = 8000;
constexpr std::uint32_t kVariantBytes = 8009;
constexpr std::uint32_t kMostLarge = 0x7FFFFFFF;

// What stands for a null in place of a length.
constexpr std::uint16_t kNullTwoBytes = 0xFFFF;
constexpr std::uint32_t kNullFourBytes = 0xFFFFFFFF;

// What stands in front of a large value in a row. Clients want to see a text pointer, but READTEXT
// and WRITETEXT do not exist here.
constexpr std::string_view kTextPointer = "the-text-pointer";
constexpr std::string_view kTextTimestamp = "timestmp";

// ---- how types are announced -------------------------------------------------------------------

LengthForm FormOf(const TypeFacts& facts) {
  if (IsLargeObject(facts.id) || facts.family == TypeFamily::kVariant) {
    return LengthForm::kFourBytes;
  }
  const bool sized = facts.family == TypeFamily::kText || facts.family == TypeFamily::kBinary;
  return sized ? LengthForm::kTwoBytes : LengthForm::kOneByte;
}

struct Announcement {
  std::uint8_t token;
  LengthForm form;
  const TypeFacts* type;
};

// How the server announces its types and, behind these, what it understands besides: types that
// allow no null, and types as older clients have them.
std::vector<Announcement> MakeAnnouncements() {
  std::vector<Announcement> rows;
  rows.reserve(2 * kTypes.size());
  for (const TypeFacts& facts : kTypes) rows.push_back({facts.token, FormOf(facts), &facts});
  for (const TypeFacts& facts : kTypes) {
    if (facts.family > TypeFamily::kDateTime || facts.family == TypeFamily::kDecimal) continue;
    const int token = facts.xtype == facts.token ? facts.type : facts.xtype;
    rows.push_back({static_cast<std::uint8_t>(token), LengthForm::kFixed, &facts});
  }
  constexpr std::pair<std::uint8_t, TypeId> kOld[] = {
      {0x37, TypeId::kDecimal}, {0x3F, TypeId::kNumeric}, {0x2F, TypeId::kChar},
      {0x27, TypeId::kVarChar}, {0x2D, TypeId::kBinary},  {0x25, TypeId::kVarBinary}};
  for (const auto& [token, id] : kOld) {
    rows.push_back({token, LengthForm::kOneByte, &FactsOf(id)});
  }
  return rows;
}

// The announcement with `token` of a type whose longest value has `length` bytes, where that tells
// types apart; null when there is none.
const Announcement* FindAnnouncement(std::uint8_t token, std::optional<std::uint32_t> length) {
  static const std::vector<Announcement> rows = MakeAnnouncements();
  const auto row = std::ranges::find_if(rows, [&](const Announcement& each) {
    const bool told_apart = each.form == LengthForm::kOneByte && each.type->length != 0;
    return each.token == token &&
           (!length || !told_apart || each.type->length == static_cast<int>(*length));
  });
  return row == rows.end() ? nullptr : &*row;
}

WireType TypeOf(const Announcement& row, std::uint32_t length) {
  const TypeFacts& facts = *row.type;
  SqlType type{facts.id, facts.length, facts.precision, facts.scale};
  const bool has_length =
      row.form == LengthForm::kTwoBytes || (row.form == LengthForm::kOneByte && facts.length == 0);
  if (has_length) type.length = static_cast<int>(length) / UnitOf(facts.id);
  return {type, row.form, length};
}

// ---- written -----------------------------------------------------------------------------------

int AnnouncedPrecision(const SqlType& type) {
  return type.precision <= 0 ? kDefaultPrecision : std::min(type.precision, kMostPrecision);
}

// The longest value in bytes. An expression may know no length; it gets the longest there is.
std::uint32_t MostBytes(const SqlType& type) {
  if (type.id == TypeId::kTimestamp) return 8;
  if (type.length <= 0) return kMostBytes;
  return std::min(static_cast<std::uint32_t>(type.length * UnitOf(type.id)), kMostBytes);
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
  const Int128 size = units < 0 ? -units : units;
  const int length = DecimalBytes(AnnouncedPrecision(type));
  out.U8(length).U8(units < 0 ? 0 : 1);
  out.Raw({reinterpret_cast<const char*>(&size), static_cast<std::size_t>(length - 1)});
}

std::uint64_t DateTimeBits(std::int64_t ticks, bool small) {
  const std::int64_t days = DayOf(ticks);
  const auto time = static_cast<std::uint64_t>(ticks - days * kTicksPerDay);
  if (small) return static_cast<std::uint16_t>(days) | time / kTicksPerMinute << 16;
  return static_cast<std::uint32_t>(days) | time << 32;
}

void AppendBytes(const SqlType& type, std::string_view bytes, std::string& out) {
  if (FamilyOf(type.id) != TypeFamily::kText) {
    out.append(bytes);
  } else if (IsNationalText(type.id)) {
    AppendUtf16(bytes, out);
  } else {
    CodePage932::Shared().Append(bytes, out);
  }
}

// A value behind its length. The client has room for the announced length only; the engine keeps to
// it, and what does not is cut rather than sent.
void AppendSized(const SqlType& type, std::string_view bytes, ByteWriter& out) {
  const bool large = IsLargeObject(type.id);
  if (large) out.U8(kTextPointer.size()).Raw(kTextPointer).Raw(kTextTimestamp);
  const std::size_t length_bytes = large ? 4 : 2;
  const std::size_t start = out.size() + length_bytes;
  out.Little(0, length_bytes);
  AppendBytes(type, bytes, out.buffer());
  if (!large) out.buffer().resize(std::min<std::size_t>(out.size(), start + MostBytes(type)));
  out.Patch(start - length_bytes, out.size() - start, length_bytes);
}

// A sql_variant travels as nvarchar: its cell holds the base type's text.
void AppendVariant(std::string_view text, ByteWriter& out) {
  std::string units;
  AppendUtf16(text, units);
  units.resize(std::min<std::size_t>(units.size(), kMostBytes));
  constexpr std::uint8_t kProperties = 7;
  out.U32(2 + kProperties + units.size()).U8(FactsOf(TypeId::kNVarChar).token).U8(kProperties);
  out.Raw(kCollation).U16(kMostBytes).Raw(units);
}

// ---- read --------------------------------------------------------------------------------------

void ReadPrecision(ByteReader& in, SqlType& type) {
  type.precision = in.U8();
  type.scale = in.U8();
  if (type.precision < 1 || type.precision > kMostPrecision || type.scale > type.precision) {
    throw WireError("a precision makes no sense");
  }
}

std::int64_t SignedOf(std::string_view bytes) {
  const std::size_t unused = 64 - 8 * bytes.size();
  return static_cast<std::int64_t>(LittleOf(bytes) << unused) >> unused;
}

// The sign, and up to 16 bytes of the number.
std::string DecimalText(std::string_view bytes, int scale) {
  Decimal number{0, scale};
  std::memcpy(&number.value, bytes.data() + 1, bytes.size() - 1);
  if (number.value < 0 || PrecisionOf(number) > kMostPrecision) {
    throw WireError("a number has more than 38 digits");
  }
  if (bytes[0] == 0) number.value = -number.value;
  return FormatDecimal(number);
}

void ExpectLength(std::string_view bytes, std::size_t least, std::size_t most) {
  if (bytes.size() < least || bytes.size() > most) throw WireError("a value has a wrong length");
}

// A value of the type that is not null, from its bytes.
Cell DecodeValue(std::string bytes, const SqlType& type) {
  const TypeFacts& facts = FactsOf(type.id);
  const auto length = static_cast<std::size_t>(facts.length);
  switch (facts.family) {
    case TypeFamily::kInteger:
      if (length > 1) {
        ExpectLength(bytes, 1, 8);
        return SignedOf(bytes);
      }
      ExpectLength(bytes, 1, 1);
      return static_cast<std::int64_t>(
          std::min<std::uint64_t>(LittleOf(bytes), type.id == TypeId::kBit ? 1 : 255));
    case TypeFamily::kReal:
      ExpectLength(bytes, length, length);
      if (length == 8) return std::bit_cast<double>(LittleOf(bytes));
      return double{std::bit_cast<float>(static_cast<std::uint32_t>(LittleOf(bytes)))};
    case TypeFamily::kDecimal:
      ExpectLength(bytes, 2, 17);
      return DecimalText(bytes, type.scale);
    case TypeFamily::kMoney:
      ExpectLength(bytes, length, length);
      if (length == 4) return FormatDecimal({SignedOf(bytes), kMoneyScale});
      return FormatDecimal(
          {static_cast<std::int64_t>(std::rotl(LittleOf(bytes), 32)), kMoneyScale});
    case TypeFamily::kDateTime: {
      ExpectLength(bytes, length, length);
      const std::string_view day = std::string_view(bytes).substr(0, length / 2);
      const auto time =
          static_cast<std::int64_t>(LittleOf(std::string_view(bytes).substr(length / 2)));
      if (length == 8) return SignedOf(day) * kTicksPerDay + time;
      return static_cast<std::int64_t>(LittleOf(day)) * kTicksPerDay + time * kTicksPerMinute;
    }
    case TypeFamily::kText:
      return IsNationalText(type.id) ? Utf16ToUtf8(bytes) : CodePage932::Shared().ToUtf8(bytes);
    case TypeFamily::kGuid:
      ExpectLength(bytes, length, length);
      return Blob{std::move(bytes)};
    case TypeFamily::kBinary:
      return Blob{std::move(bytes)};
    case TypeFamily::kVariant:
      break;
  }
  throw WireError("there is no such type");
}

// The base type of a sql_variant stands before its value.
void DecodeVariant(const std::string& bytes, Parameter& value) {
  ByteReader in(bytes);
  const std::uint8_t token = in.U8();
  const std::size_t head = std::size_t{2} + in.U8();
  if (bytes.size() < head) throw WireError("a value ends early");
  const auto rest = static_cast<std::uint32_t>(bytes.size() - head);
  const Announcement* const row = FindAnnouncement(token, rest);
  if (row == nullptr || row->form == LengthForm::kFourBytes) {
    throw WireError("there is no such type");
  }
  value.type = TypeOf(*row, rest).type;
  if (row->type->TakesPrecision()) ReadPrecision(in, value.type);
  value.value = DecodeValue(bytes.substr(head), value.type);
}

// The length of the value that comes; none for a null.
std::optional<std::size_t> ReadLength(ByteReader& in, const WireType& type, ValuePlace place) {
  const auto unless = [](std::size_t length, std::size_t null) {
    return length == null ? std::nullopt : std::optional(length);
  };
  switch (type.form) {
    case LengthForm::kFixed:
      return type.length;
    case LengthForm::kOneByte:
      return unless(in.U8(), 0);
    case LengthForm::kTwoBytes:
      return unless(in.U16(), kNullTwoBytes);
    case LengthForm::kFourBytes:
      break;
  }
  if (type.type.id == TypeId::kSqlVariant)
    return unless(unless(in.U32(), kNullFourBytes).value_or(0), 0);
  if (place == ValuePlace::kParameter) return unless(in.U32(), kNullFourBytes);
  const std::uint8_t pointer = in.U8();
  if (pointer == 0) return std::nullopt;
  in.Skip(pointer + kTextTimestamp.size());
  return in.U32();
}

}  // namespace

void AppendTypeInfo(const SqlType& type, ByteWriter& out) {
  const TypeFacts& facts = FactsOf(type.id);
  out.U8(facts.token);
  const LengthForm form = FormOf(facts);
  if (facts.TakesPrecision()) {
    const int precision = AnnouncedPrecision(type);
    out.U8(DecimalBytes(precision)).U8(precision).U8(type.scale);
  } else if (form == LengthForm::kOneByte) {
    out.U8(facts.length);
  } else if (form == LengthForm::kTwoBytes) {
    out.U16(MostBytes(type));
  } else {
    out.U32(type.id == TypeId::kSqlVariant ? kVariantBytes : kMostLarge);
  }
  if (facts.family == TypeFamily::kText) out.Raw(kCollation);
}

void AppendValue(const SqlType& type, const RowView& row, std::size_t column, ByteWriter& out) {
  const TypeFacts& facts = FactsOf(type.id);
  if (row.IsNull(column)) {
    const LengthForm form = FormOf(facts);
    if (form == LengthForm::kTwoBytes) {
      out.U16(kNullTwoBytes);
    } else {
      out.Little(0, facts.family == TypeFamily::kVariant ? 4 : 1);
    }
    return;
  }
  const auto append = [&](std::uint64_t bits) {
    std::array<char, 9> bytes{static_cast<char>(facts.length)};
    std::memcpy(&bytes[1], &bits, sizeof bits);
    out.Raw({bytes.data(), static_cast<std::size_t>(facts.length) + 1});
  };
  switch (facts.family) {
    case TypeFamily::kInteger:
      return append(static_cast<std::uint64_t>(row.Integer(column)));
    case TypeFamily::kReal:
      if (facts.length == 8) return append(std::bit_cast<std::uint64_t>(row.Real(column)));
      return append(std::bit_cast<std::uint32_t>(static_cast<float>(row.Real(column))));
    case TypeFamily::kDecimal:
      return AppendDecimal(row.Bytes(column), type, out);
    case TypeFamily::kMoney: {
      const auto units = static_cast<std::uint64_t>(UnitsOf(row.Bytes(column), kMoneyScale));
      return append(facts.length == 8 ? std::rotl(units, 32) : units);  // the high half first
    }
    case TypeFamily::kDateTime:
      return append(DateTimeBits(row.Integer(column), type.id == TypeId::kSmallDateTime));
    case TypeFamily::kGuid: {
      std::string bytes(row.Bytes(column));
      bytes.resize(16);
      out.U8(16).Raw(bytes);
      return;
    }
    case TypeFamily::kText:
    case TypeFamily::kBinary:
      return AppendSized(type, row.Bytes(column), out);
    case TypeFamily::kVariant:
      return AppendVariant(row.Bytes(column), out);
  }
}

WireType ReadTypeInfo(ByteReader& in) {
  const std::uint8_t token = in.U8();
  const Announcement* row = FindAnnouncement(token, std::nullopt);
  if (row == nullptr) throw WireError("there is no such type");
  const auto length = row->form == LengthForm::kFixed
                          ? static_cast<std::uint32_t>(row->type->length)
                      : row->form == LengthForm::kOneByte  ? in.U8()
                      : row->form == LengthForm::kTwoBytes ? in.U16()
                                                           : in.U32();
  row = FindAnnouncement(token, length);
  if (row == nullptr) throw WireError("a type has a wrong length");
  WireType type = TypeOf(*row, length);
  const bool collated = row->type->family == TypeFamily::kText && row->form == FormOf(*row->type);
  if (collated) in.Skip(kCollation.size());
  if (row->type->TakesPrecision()) ReadPrecision(in, type.type);
  return type;
}

void ReadValue(ByteReader& in, const WireType& type, ValuePlace place, Parameter& value) {
  value.type = type.type;
  const std::optional<std::size_t> length = ReadLength(in, type, place);
  if (!length) {
    value.value = {};
  } else if (type.type.id == TypeId::kSqlVariant) {
    DecodeVariant(in.Raw(*length), value);
  } else {
    value.value = DecodeValue(in.Raw(*length), value.type);
  }
}

}  // namespace dbkeeper::server
