#include "server/types/conversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "server/types/datetime.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

using Integer = std::int64_t;

// What a conversion needs besides the value.
struct Job {
  SqlType from;
  SqlType to;
  int style = 0;
  ConversionKind kind = ConversionKind::kExplicit;

  std::string_view from_name() const { return NameOf(from.id); }
  std::string_view to_name() const { return NameOf(to.id); }
};

[[noreturn]] void Overflow(const Job& job, std::string_view from) {
  throw MakeError(8115, {from, job.to_name()});
}

[[noreturn]] void NotAllowed(const Job& job) {
  const int number = job.kind == ConversionKind::kAssignment ? 257 : 529;
  throw MakeError(number, {job.from_name(), job.to_name()});
}

// ---- to numbers --------------------------------------------------------------------------------

Cell IntegerResult(Integer value, const Job& job, std::string_view from) {
  if (job.to.id == TypeId::kBit) return Integer{value != 0 ? 1 : 0};
  if (!FitsInteger(Decimal{value, 0}, job.to.id)) Overflow(job, from);
  return value;
}

Cell TextToInteger(std::string_view text, const Job& job) {
  const std::string_view trimmed = Trim(text);
  if (trimmed.empty()) return Integer{0};
  const std::optional<Decimal> number = ParseDecimal(trimmed);
  const bool big = job.to.id == TypeId::kBigInt;
  const bool digits_only = trimmed.find('.') == std::string_view::npos &&
                           trimmed.find_first_not_of("+-0123456789") == std::string_view::npos;
  if (digits_only && trimmed.find_first_of("0123456789") != std::string_view::npos &&
      (!number || !FitsInteger(*number, job.to.id))) {
    if (job.to.id == TypeId::kBit) return Integer{1};
    if (big) Overflow(job, "expression");
    if (job.to.id == TypeId::kInt) throw MakeError(248, {job.from_name(), text});
    throw MakeError(244, {job.from_name(), text, job.to.id == TypeId::kTinyInt ? "INT1" : "INT2"});
  }
  if (!number || !digits_only) {
    if (big) throw MakeError(8114, {job.from_name(), "bigint"});
    throw MakeError(245, {job.from_name(), text, job.to_name()});
  }
  return IntegerResult(static_cast<Integer>(number->value), job, "expression");
}

double TextToDouble(std::string_view text, const Job& job) {
  const std::string trimmed(Trim(text));
  if (trimmed.empty()) return 0;
  char* end = nullptr;
  const double value = std::strtod(trimmed.c_str(), &end);
  // strtod also takes hexadecimal numbers, infinity and "nan", which are no numbers here.
  const bool plain = trimmed.find_first_not_of("+-.0123456789eE") == std::string::npos;
  if (!plain || *end != '\0') throw MakeError(8114, {job.from_name(), job.to_name()});
  if (!std::isfinite(value)) Overflow(job, job.from_name());
  return value;
}

// Money in texts may have a currency sign and commas between its digits.
Decimal TextToMoney(std::string_view text) {
  std::string digits;
  bool sign_seen = false;
  for (const char32_t c : DecodeUtf8(Trim(text))) {
    if (c == U'$' || c == U'\\' || c == U'\u00A5' || c == U'\uFFE5') {
      if (sign_seen) throw MakeError(235, {});
      sign_seen = true;
    } else if (c != U',') {
      digits += static_cast<char>(c < 0x80 ? c : U'?');
    }
  }
  if (digits.empty()) return Decimal{};
  const std::optional<Decimal> number = ParseDecimal(digits);
  if (!number) throw MakeError(235, {});
  return *number;
}

Decimal TextToDecimal(std::string_view text, const Job& job) {
  const std::string_view trimmed = Trim(text);
  if (FamilyOf(job.to.id) == TypeFamily::kMoney) return TextToMoney(text);
  if (const std::optional<Decimal> number = ParseDecimal(trimmed)) return *number;
  const bool digits = !trimmed.empty() &&
                      trimmed.find_first_not_of("+-.0123456789") == std::string_view::npos &&
                      std::count(trimmed.begin(), trimmed.end(), '.') <= 1 &&
                      trimmed.find_last_of("+-") == std::string_view::npos;
  if (digits && trimmed.size() > 38) Overflow(job, job.from_name());
  throw MakeError(8114, {job.from_name(), job.to_name()});
}

Integer CheckedTime(Integer time, const Job& job, std::string_view from) {
  if (!InDateTimeRange(time)) Overflow(job, from);
  if (job.to.id == TypeId::kDateTime) return time;
  const Integer minutes = (time + kTicksPerMinute / 2) / kTicksPerMinute;
  if (time < 0 || !InSmallDateTimeRange(minutes * kTicksPerMinute)) {
    if (FamilyOf(job.from.id) == TypeFamily::kText) throw MakeError(296, {});
    if (FamilyOf(job.from.id) == TypeFamily::kDateTime) throw MakeError(298, {});
    Overflow(job, from);
  }
  return minutes * kTicksPerMinute;
}

Cell TextToDateTime(std::string_view text, const Job& job) {
  const bool small = job.to.id == TypeId::kSmallDateTime;
  const ParsedDate parsed = ParseDateTime(text, OrderOfStyle(job.style));
  if (!parsed.fault) return CheckedTime(parsed.time, job, job.from_name());
  const bool syntax = *parsed.fault == DateFault::kSyntax;
  throw MakeError(small ? (syntax ? 295 : 296) : (syntax ? 241 : 242), {});
}

Cell DoubleToDateTime(double days, const Job& job) {
  if (!std::isfinite(days) || std::fabs(days) > 4e6) Overflow(job, "expression");
  const auto ticks = static_cast<Integer>(std::llround(days * static_cast<double>(kTicksPerDay)));
  return CheckedTime(ticks, job, "expression");
}

Cell DoubleToInteger(double value, const Job& job) {
  if (job.to.id == TypeId::kBit) return Integer{value != 0 ? 1 : 0};
  const std::optional<Decimal> whole = FromDouble(std::trunc(value), 0);
  if (!whole || !FitsInteger(*whole, job.to.id)) {
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%f", value);
    if (job.to.id == TypeId::kBigInt) Overflow(job, "expression");
    throw MakeError(232, {job.to_name(), text.data()});
  }
  return static_cast<Integer>(whole->value);
}

Cell RealResult(double value, const Job& job) {
  if (job.to.id == TypeId::kFloat) return value;
  if (std::fabs(value) > std::numeric_limits<float>::max()) Overflow(job, "expression");
  return static_cast<double>(static_cast<float>(value));
}

// ---- to texts and bytes ------------------------------------------------------------------------

// Puts blanks behind a text of a fixed length.
std::string Padded(std::string text, const SqlType& type) {
  const bool national = type.id == TypeId::kNChar;
  if (type.id != TypeId::kChar && !national) return text;
  const int length = national ? Utf16Length(text) : CodePageLength(text);
  if (length < type.length) text.append(static_cast<std::size_t>(type.length - length), ' ');
  return text;
}

Cell TextResult(std::string_view text, const Job& job) {
  if (IsLargeObject(job.to.id)) return std::string(text);
  const TextUnit unit = IsNationalText(job.to.id) ? TextUnit::kUtf16Unit : TextUnit::kCodePageByte;
  const std::string_view kept = CutText(text, job.to.length, unit);
  if (job.kind == ConversionKind::kAssignment &&
      text.find_first_not_of(' ', kept.size()) != std::string_view::npos) {
    throw MakeError(8152, {});
  }
  return Padded(std::string(kept), job.to);
}

// Numbers are never cut: a text too short for one shows a star or is an error.
Cell NumberText(const std::string& text, const Job& job) {
  if (IsLargeObject(job.to.id)) NotAllowed(job);
  if (text.size() <= static_cast<std::size_t>(job.to.length)) return Padded(text, job.to);
  const bool integer = FamilyOf(job.from.id) == TypeFamily::kInteger;
  if (integer && !IsNationalText(job.to.id) && job.kind == ConversionKind::kExplicit) {
    return Padded("*", job.to);
  }
  if (integer) Overflow(job, "expression");
  if (FamilyOf(job.from.id) == TypeFamily::kMoney) throw MakeError(234, {job.to_name()});
  Overflow(job, job.from_name());
}

std::string MoneyText(const Decimal& number, int style) {
  std::string text = FormatDecimal(Rescale(number, style == 2 ? 4 : 2).value_or(number));
  if (style != 1) return text;
  const std::size_t first = text[0] == '-' ? 1 : 0;
  for (std::size_t at = text.find('.'); at > first + 3; at -= 3) text.insert(at - 3, 1, ',');
  return text;
}

Cell BytesResult(std::string bytes, const Job& job) {
  if (job.to.id == TypeId::kImage) return Blob{std::move(bytes)};
  const auto length = static_cast<std::size_t>(job.to.length);
  if (bytes.size() > length) {
    if (job.kind == ConversionKind::kAssignment) throw MakeError(8152, {});
    bytes.resize(length);
  }
  if (job.to.id == TypeId::kBinary) bytes.resize(length, '\0');
  return Blob{std::move(bytes)};
}

Cell TextToBytes(std::string_view text, const Job& job) {
  if (job.kind == ConversionKind::kAssignment) NotAllowed(job);
  std::string bytes;
  for (const char32_t c : DecodeUtf8(text)) {
    if (IsNationalText(job.from.id)) {
      AppendUtf16(c, bytes);
    } else if (c < 0x80) {
      bytes += static_cast<char>(c);
    } else {
      throw Unsupported("converting Japanese varchar to binary");
    }
  }
  return BytesResult(std::move(bytes), job);
}

Cell BytesToText(const std::string& bytes, const Job& job) {
  std::u32string characters;
  if (IsNationalText(job.to.id)) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      const char32_t low = static_cast<unsigned char>(bytes[i]);
      const char32_t high = static_cast<unsigned char>(bytes[i + 1]);
      characters.push_back(low | high << 8);
    }
  } else {
    for (const char c : bytes) {
      if (static_cast<unsigned char>(c) >= 0x80) {
        throw Unsupported("converting binary beyond ASCII to varchar");
      }
      characters += static_cast<char32_t>(c);
    }
  }
  return TextResult(EncodeUtf8(characters), job);
}

// The last bytes, the highest first.
Cell IntegerToBytes(Integer value, const Job& job) {
  const int own = job.from.id == TypeId::kBit ? 1 : job.from.length;
  const int length = job.to.id == TypeId::kBinary ? job.to.length : std::min(own, job.to.length);
  std::string bytes(static_cast<std::size_t>(length), '\0');
  for (int i = 0; i < std::min({length, own, 8}); ++i) {
    bytes[static_cast<std::size_t>(length - 1 - i)] = static_cast<char>(value >> (8 * i));
  }
  return Blob{std::move(bytes)};
}

Cell BytesToInteger(const std::string& bytes, const Job& job) {
  const int width = std::max(1, job.to.length);
  std::uint64_t value = 0;
  const std::size_t begin = bytes.size() > static_cast<std::size_t>(width)
                                ? bytes.size() - static_cast<std::size_t>(width)
                                : 0;
  for (std::size_t i = begin; i < bytes.size(); ++i) {
    value = value << 8 | static_cast<unsigned char>(bytes[i]);
  }
  switch (job.to.id) {
    case TypeId::kBit:
      return Integer{value != 0 ? 1 : 0};
    case TypeId::kSmallInt:
      return Integer{static_cast<std::int16_t>(value)};
    case TypeId::kInt:
      return Integer{static_cast<std::int32_t>(value)};
    default:
      return static_cast<Integer>(value);
  }
}

// ---- from each family --------------------------------------------------------------------------

Cell FromText(const std::string& text, const Job& job) {
  switch (FamilyOf(job.to.id)) {
    case TypeFamily::kInteger:
      return TextToInteger(text, job);
    case TypeFamily::kReal:
      return RealResult(TextToDouble(text, job), job);
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return StoreDecimal(TextToDecimal(text, job), job.to, job.from_name());
    case TypeFamily::kDateTime:
      return TextToDateTime(text, job);
    case TypeFamily::kText:
      return TextResult(text, job);
    case TypeFamily::kBinary:
      return TextToBytes(text, job);
    case TypeFamily::kGuid:
      if (std::optional<std::string> guid = ParseGuid(Trim(text))) return Blob{*std::move(guid)};
      throw MakeError(8169, {});
    case TypeFamily::kVariant:
      return text;
  }
  NotAllowed(job);
}

Cell FromInteger(Integer value, const Job& job) {
  switch (FamilyOf(job.to.id)) {
    case TypeFamily::kInteger:
      if (job.to.id < TypeId::kInt && job.to.id != TypeId::kBit &&
          !FitsInteger(Decimal{value, 0}, job.to.id)) {
        throw MakeError(220, {job.to_name(), std::to_string(value)});
      }
      return IntegerResult(value, job, "expression");
    case TypeFamily::kReal:
      return RealResult(static_cast<double>(value), job);
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return StoreDecimal(Decimal{value, 0}, job.to, job.from_name());
    case TypeFamily::kDateTime:
      return DoubleToDateTime(static_cast<double>(value), job);
    case TypeFamily::kText:
      return NumberText(std::to_string(value), job);
    case TypeFamily::kBinary:
      return IntegerToBytes(value, job);
    case TypeFamily::kVariant:
      return value;
    case TypeFamily::kGuid:
      break;
  }
  NotAllowed(job);
}

Cell FromReal(double value, const Job& job) {
  switch (FamilyOf(job.to.id)) {
    case TypeFamily::kInteger:
      return DoubleToInteger(value, job);
    case TypeFamily::kReal:
      return RealResult(value, job);
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney: {
      const std::optional<Decimal> number = FromDouble(value, job.to.scale);
      if (!number) Overflow(job, job.from_name());
      return StoreDecimal(*number, job.to, job.from_name());
    }
    case TypeFamily::kDateTime:
      return DoubleToDateTime(value, job);
    case TypeFamily::kText:
      return NumberText(FormatFloat(value, job.style), job);
    case TypeFamily::kVariant:
      return value;
    default:
      NotAllowed(job);
  }
}

Cell FromDecimal(const Decimal& number, const Job& job) {
  const bool money = FamilyOf(job.from.id) == TypeFamily::kMoney;
  switch (FamilyOf(job.to.id)) {
    case TypeFamily::kInteger: {
      if (job.to.id == TypeId::kBit) return Integer{number.value != 0 ? 1 : 0};
      // Money is rounded where decimals are cut.
      const Decimal whole = money ? Rescale(number, 0).value_or(number) : number;
      if (!FitsInteger(whole, job.to.id)) Overflow(job, money ? "expression" : job.from_name());
      return static_cast<Integer>(Truncate(whole));
    }
    case TypeFamily::kReal:
      return RealResult(ToDouble(number), job);
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return StoreDecimal(number, job.to, job.from_name());
    case TypeFamily::kDateTime:
      return DoubleToDateTime(ToDouble(number), job);
    case TypeFamily::kText:
      return NumberText(money ? MoneyText(number, job.style) : FormatDecimal(number), job);
    case TypeFamily::kVariant:
      throw Unsupported("decimal and money values in sql_variant");
    default:
      NotAllowed(job);
  }
}

Cell FromDateTime(Integer time, const Job& job) {
  const double days = static_cast<double>(time) / static_cast<double>(kTicksPerDay);
  switch (FamilyOf(job.to.id)) {
    case TypeFamily::kDateTime:
      return CheckedTime(time, job, job.from_name());
    case TypeFamily::kText: {
      const std::optional<std::string> text = FormatDateTime(time, job.style);
      if (!text) throw MakeError(281, {std::to_string(job.style), job.from_name()});
      return TextResult(*text, job);
    }
    case TypeFamily::kInteger:
    case TypeFamily::kReal:
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      if (job.kind == ConversionKind::kAssignment) NotAllowed(job);
      if (FamilyOf(job.to.id) == TypeFamily::kInteger) {
        return IntegerResult(std::llround(days), job, "expression");
      }
      return FromReal(days, job);
    case TypeFamily::kVariant:
      throw Unsupported("datetime values in sql_variant");
    default:
      NotAllowed(job);
  }
}

Cell FromBytes(const std::string& bytes, const Job& job) {
  switch (FamilyOf(job.to.id)) {
    case TypeFamily::kInteger:
      return BytesToInteger(bytes, job);
    case TypeFamily::kText:
      if (job.kind == ConversionKind::kAssignment) NotAllowed(job);
      return BytesToText(bytes, job);
    case TypeFamily::kBinary:
      return BytesResult(bytes, job);
    case TypeFamily::kGuid: {
      std::string guid = bytes;
      guid.resize(16, '\0');
      return Blob{std::move(guid)};
    }
    case TypeFamily::kVariant:
      return Blob{bytes};
    default:
      NotAllowed(job);
  }
}

Cell FromGuid(const std::string& bytes, const Job& job) {
  switch (FamilyOf(job.to.id)) {
    case TypeFamily::kGuid:
      return Blob{bytes};
    case TypeFamily::kText:
      if (job.to.length < 36) throw MakeError(8170, {});
      return TextResult(FormatGuid(bytes), job);
    case TypeFamily::kBinary:
      return BytesResult(bytes, job);
    case TypeFamily::kVariant:
      throw Unsupported("uniqueidentifier values in sql_variant");
    default:
      NotAllowed(job);
  }
}

// What a variant holds shows in its cell.
Cell FromVariant(const Cell& cell, Job job) {
  if (FamilyOf(job.to.id) == TypeFamily::kVariant) return cell;
  if (const auto* integer = std::get_if<Integer>(&cell)) {
    job.from = SqlType{TypeId::kInt, 4, 10, 0, true};
    return FromInteger(*integer, job);
  }
  if (const auto* real = std::get_if<double>(&cell)) {
    job.from = SqlType{TypeId::kFloat, 8, 53, 0, true};
    return FromReal(*real, job);
  }
  if (const auto* blob = std::get_if<Blob>(&cell)) {
    job.from = SqlType{TypeId::kVarBinary, 8000, 0, 0, true};
    return FromBytes(blob->bytes, job);
  }
  job.from = SqlType{TypeId::kNVarChar, 4000, 0, 0, true};
  return FromText(std::get<std::string>(cell), job);
}

Integer IntegerOf(const Cell& cell) {
  if (const auto* value = std::get_if<Integer>(&cell)) return *value;
  return static_cast<Integer>(Truncate(DecimalOfCell(cell)));
}

double DoubleOf(const Cell& cell) {
  if (const auto* value = std::get_if<double>(&cell)) return *value;
  return ToDouble(DecimalOfCell(cell));
}

const std::string& BytesOf(const Cell& cell) {
  if (const auto* blob = std::get_if<Blob>(&cell)) return blob->bytes;
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  throw MakeError(8114, {"numeric", "varbinary"});
}

}  // namespace

Decimal DecimalOfCell(const Cell& cell) {
  std::optional<Decimal> number;
  if (const auto* integer = std::get_if<Integer>(&cell)) number = Decimal{*integer, 0};
  if (const auto* text = std::get_if<std::string>(&cell)) number = ParseDecimal(*text);
  if (const auto* real = std::get_if<double>(&cell)) number = FromDouble(*real, 10);
  if (!number) throw MakeError(8114, {"expression", "numeric"});
  return *number;
}

Cell StoreDecimal(const Decimal& number, const SqlType& type, std::string_view from_name) {
  const std::string_view name = NameOf(type.id);
  if (FamilyOf(type.id) == TypeFamily::kInteger) {
    if (!FitsInteger(number, type.id)) throw MakeError(8115, {from_name, name});
    return static_cast<Integer>(Truncate(number));
  }
  const std::optional<Decimal> scaled = Rescale(number, type.scale);
  bool fits = scaled && FitsPrecision(*scaled, type.precision);
  if (FamilyOf(type.id) == TypeFamily::kMoney) {
    fits = fits && FitsBits(scaled->value, type.id == TypeId::kMoney ? 64 : 32);
  }
  if (!fits) {
    throw MakeError(8115, {from_name == "decimal" ? "numeric" : from_name,
                           name == "decimal" ? "numeric" : name});
  }
  return FormatDecimal(*scaled);
}

Cell ConvertCell(const Cell& cell, const SqlType& from, const SqlType& to, int style,
                 ConversionKind kind) {
  if (IsNullCell(cell)) return cell;
  const Job job{from, to, style, kind};
  switch (FamilyOf(from.id)) {
    case TypeFamily::kInteger:
      return FromInteger(IntegerOf(cell), job);
    case TypeFamily::kReal:
      return FromReal(DoubleOf(cell), job);
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return FromDecimal(DecimalOfCell(cell), job);
    case TypeFamily::kDateTime:
      return FromDateTime(IntegerOf(cell), job);
    case TypeFamily::kText:
      if (const auto* text = std::get_if<std::string>(&cell)) return FromText(*text, job);
      return FromVariant(cell, job);
    case TypeFamily::kBinary:
      return FromBytes(BytesOf(cell), job);
    case TypeFamily::kGuid:
      return FromGuid(BytesOf(cell), job);
    case TypeFamily::kVariant:
      return FromVariant(cell, job);
  }
  NotAllowed(job);
}

std::string FloatLiteral(std::string_view text) {
  std::string number(text);
  // "1e" is one.
  if (!number.empty() && (number.back() == 'e' || number.back() == 'E')) number += '0';
  const double value = std::strtod(number.c_str(), nullptr);
  if (!std::isfinite(value)) return "";
  std::array<char, 40> digits{};
  std::snprintf(digits.data(), digits.size(), "%.17e", value);
  return digits.data();
}

std::string FormatFloat(double number, int style) {
  std::array<char, 64> digits{};
  if (style == 1 || style == 2) {
    std::snprintf(digits.data(), digits.size(), style == 1 ? "%.7e" : "%.15e", number);
  } else {
    std::snprintf(digits.data(), digits.size(), "%.6g", number);
  }
  std::string text = digits.data();
  // The server writes three digits of an exponent.
  const std::size_t exponent = text.find('e');
  if (exponent != std::string::npos && text.size() - exponent == 4)
    text.insert(exponent + 2, 1, '0');
  return text;
}

}  // namespace dbkeeper::server
