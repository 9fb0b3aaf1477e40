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

[[noreturn]] void Overflow(const Job& job, std::string_view from = "expression") {
  Fail(8115, {from, job.to_name()});
}

[[noreturn]] void NotAllowed(const Job& job) {
  Fail(job.kind == ConversionKind::kAssignment ? 257 : 529, {job.from_name(), job.to_name()});
}

// Which conversions there are, a row for each family that they come from and a letter for each that
// they go to, both in order of TypeFamily: y for one that is always done, c for one that cast and
// convert do, u for one that this server does not know, - for none.
constexpr std::string_view kConversions[] = {
    "yyyyyyy-y",  // integer
    "yyyyyy--y",  // real
    "yyyyyy--u",  // decimal
    "yyyyyy--u",  // money
    "ccccyy--u",  // datetime
    "yyyyyycyy",  // text
    "y----cyyy",  // binary
    "-----yyyu",  // guid
};

void CheckAllowed(const Job& job) {
  const TypeFamily from = FamilyOf(job.from.id);
  const char how =
      kConversions[static_cast<int>(from)][static_cast<std::size_t>(FamilyOf(job.to.id))];
  if (how == 'u') {
    const std::string what = from == TypeFamily::kDateTime ? "datetime"
                             : from == TypeFamily::kGuid   ? "uniqueidentifier"
                                                           : "decimal and money";
    throw Unsupported(what + " values in sql_variant");
  }
  if (how == '-' || (how == 'c' && job.kind == ConversionKind::kAssignment)) NotAllowed(job);
}

// ---- what cells hold ---------------------------------------------------------------------------

Integer IntegerOf(const Cell& cell) {
  if (const auto* value = std::get_if<Integer>(&cell)) return *value;
  return static_cast<Integer>(Truncate(DecimalOfCell(cell)));
}

const std::string& BytesOf(const Cell& cell) {
  if (const auto* blob = std::get_if<Blob>(&cell)) return blob->bytes;
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  Fail(8114, {"numeric", "varbinary"});
}

// What a variant holds shows in its cell.
SqlType BaseTypeOf(const Cell& cell) {
  if (std::holds_alternative<Integer>(cell)) return kIntType;
  if (std::holds_alternative<double>(cell)) return kFloatType;
  if (std::holds_alternative<Blob>(cell)) return {TypeId::kVarBinary, 8000, 0, 0, true};
  return NVarChar(4000);
}

// ---- to numbers --------------------------------------------------------------------------------

Cell IntegerResult(Integer value, const Job& job) {
  if (job.to.id == TypeId::kBit) return Integer{value != 0 ? 1 : 0};
  if (!FitsInteger(Decimal{value, 0}, job.to.id)) Overflow(job);
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
    if (big) Overflow(job);
    if (job.to.id == TypeId::kInt) Fail(248, {job.from_name(), text});
    Fail(244, {job.from_name(), text, job.to.id == TypeId::kTinyInt ? "INT1" : "INT2"});
  }
  if (!number || !digits_only) {
    if (big) Fail(8114, {job.from_name(), "bigint"});
    Fail(245, {job.from_name(), text, job.to_name()});
  }
  return IntegerResult(static_cast<Integer>(number->value), job);
}

double TextToDouble(std::string_view text, const Job& job) {
  const std::string trimmed(Trim(text));
  if (trimmed.empty()) return 0;
  char* end = nullptr;
  const double value = std::strtod(trimmed.c_str(), &end);
  // strtod also takes hexadecimal numbers, infinity and "nan", which are no numbers here.
  const bool plain = trimmed.find_first_not_of("+-.0123456789eE") == std::string::npos;
  if (!plain || *end != '\0') Fail(8114, {job.from_name(), job.to_name()});
  if (!std::isfinite(value)) Overflow(job, job.from_name());
  return value;
}

// Money in texts may have a currency sign and commas between its digits.
Decimal TextToMoney(std::string_view text) {
  std::string digits;
  bool sign_seen = false;
  for (const char32_t c : DecodeUtf8(Trim(text))) {
    if (c == U'$' || c == U'\\' || c == U'\u00A5' || c == U'\uFFE5') {
      if (sign_seen) Fail(235);
      sign_seen = true;
    } else if (c != U',') {
      digits += static_cast<char>(c < 0x80 ? c : U'?');
    }
  }
  if (digits.empty()) return Decimal{};
  const std::optional<Decimal> number = ParseDecimal(digits);
  if (!number) Fail(235);
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
  Fail(8114, {job.from_name(), job.to_name()});
}

Integer CheckedTime(Integer time, const Job& job, std::string_view from) {
  if (!InDateTimeRange(time)) Overflow(job, from);
  if (job.to.id == TypeId::kDateTime) return time;
  const Integer minutes = (time + kTicksPerMinute / 2) / kTicksPerMinute;
  if (time < 0 || !InSmallDateTimeRange(minutes * kTicksPerMinute)) {
    if (FamilyOf(job.from.id) == TypeFamily::kText) Fail(296);
    if (FamilyOf(job.from.id) == TypeFamily::kDateTime) Fail(298);
    Overflow(job, from);
  }
  return minutes * kTicksPerMinute;
}

Cell TextToDateTime(std::string_view text, const Job& job) {
  const bool small = job.to.id == TypeId::kSmallDateTime;
  const ParsedDate parsed = ParseDateTime(text, OrderOfStyle(job.style));
  if (!parsed.fault) return CheckedTime(parsed.time, job, job.from_name());
  const bool syntax = *parsed.fault == DateFault::kSyntax;
  Fail(small ? (syntax ? 295 : 296) : (syntax ? 241 : 242), {});
}

Cell DoubleToInteger(double value, const Job& job) {
  if (job.to.id == TypeId::kBit) return Integer{value != 0 ? 1 : 0};
  const std::optional<Decimal> whole = FromDouble(std::trunc(value), 0);
  if (!whole || !FitsInteger(*whole, job.to.id)) {
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%f", value);
    if (job.to.id == TypeId::kBigInt) Overflow(job);
    Fail(232, {job.to_name(), text.data()});
  }
  return static_cast<Integer>(whole->value);
}

double DoubleOf(const Cell& cell, const Job& job) {
  switch (FamilyOf(job.from.id)) {
    case TypeFamily::kText:
      return TextToDouble(BytesOf(cell), job);
    case TypeFamily::kInteger:
      return static_cast<double>(IntegerOf(cell));
    case TypeFamily::kDateTime:
      return static_cast<double>(IntegerOf(cell)) / static_cast<double>(kTicksPerDay);
    case TypeFamily::kReal:
      if (const auto* value = std::get_if<double>(&cell)) return *value;
      [[fallthrough]];
    default:
      return ToDouble(DecimalOfCell(cell));
  }
}

Decimal DecimalOf(const Cell& cell, const Job& job) {
  switch (FamilyOf(job.from.id)) {
    case TypeFamily::kText:
      return TextToDecimal(BytesOf(cell), job);
    case TypeFamily::kReal:
    case TypeFamily::kDateTime:
      if (const auto number = FromDouble(DoubleOf(cell, job), job.to.scale)) return *number;
      Overflow(job, job.from_name());
    default:
      return DecimalOfCell(cell);
  }
}

Cell ToReal(const Cell& cell, const Job& job) {
  const double value = DoubleOf(cell, job);
  if (job.to.id == TypeId::kFloat) return value;
  if (std::fabs(value) > std::numeric_limits<float>::max()) Overflow(job);
  return static_cast<double>(static_cast<float>(value));
}

Cell ToDateTime(const Cell& cell, const Job& job) {
  const TypeFamily from = FamilyOf(job.from.id);
  if (from == TypeFamily::kText) return TextToDateTime(BytesOf(cell), job);
  if (from == TypeFamily::kDateTime) return CheckedTime(IntegerOf(cell), job, job.from_name());
  const double days = DoubleOf(cell, job);
  if (!std::isfinite(days) || std::fabs(days) > 4e6) Overflow(job);
  return CheckedTime(std::llround(days * static_cast<double>(kTicksPerDay)), job, "expression");
}

// The last bytes count, the highest first.
Cell BytesToInteger(std::string_view bytes, const Job& job) {
  const auto width = static_cast<std::size_t>(std::max(1, job.to.length));
  std::uint64_t value = 0;
  for (const char c : bytes.substr(bytes.size() - std::min(bytes.size(), width))) {
    value = value << 8 | static_cast<unsigned char>(c);
  }
  if (job.to.id == TypeId::kBit) return Integer{value != 0 ? 1 : 0};
  if (job.to.id == TypeId::kTinyInt) return static_cast<Integer>(value);
  const int unused = 64 - 8 * FactsOf(job.to.id).length;
  return static_cast<Integer>(value << unused) >> unused;
}

// Money is rounded where decimals are cut.
Cell DecimalToInteger(const Decimal& number, const Job& job) {
  if (job.to.id == TypeId::kBit) return Integer{number.value != 0 ? 1 : 0};
  const bool money = FamilyOf(job.from.id) == TypeFamily::kMoney;
  const Decimal whole = money ? Rescale(number, 0).value_or(number) : number;
  if (!FitsInteger(whole, job.to.id)) Overflow(job, money ? "expression" : job.from_name());
  return static_cast<Integer>(Truncate(whole));
}

Cell ToInteger(const Cell& cell, const Job& job) {
  switch (FamilyOf(job.from.id)) {
    case TypeFamily::kText:
      return TextToInteger(BytesOf(cell), job);
    case TypeFamily::kBinary:
      return BytesToInteger(BytesOf(cell), job);
    case TypeFamily::kReal:
      return DoubleToInteger(DoubleOf(cell, job), job);
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return DecimalToInteger(DecimalOfCell(cell), job);
    case TypeFamily::kDateTime:
      return IntegerResult(std::llround(DoubleOf(cell, job)), job);
    default:
      break;
  }
  const Integer value = IntegerOf(cell);
  const bool is_small = job.to.id == TypeId::kTinyInt || job.to.id == TypeId::kSmallInt;
  if (is_small && !FitsInteger({value, 0}, job.to.id)) {
    Fail(220, {job.to_name(), std::to_string(value)});
  }
  return IntegerResult(value, job);
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
    Fail(8152);
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
  if (integer) Overflow(job);
  if (FamilyOf(job.from.id) == TypeFamily::kMoney) Fail(234, {job.to_name()});
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
    if (job.kind == ConversionKind::kAssignment) Fail(8152);
    bytes.resize(length);
  }
  if (job.to.id == TypeId::kBinary) bytes.resize(length, '\0');
  return Blob{std::move(bytes)};
}

Cell TextToBytes(std::string_view text, const Job& job) {
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
  if (IsNationalText(job.to.id)) return TextResult(Utf16ToUtf8(bytes), job);
  const auto beyond_ascii = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
  if (std::ranges::any_of(bytes, beyond_ascii)) {
    throw Unsupported("converting binary beyond ASCII to varchar");
  }
  return TextResult(bytes, job);
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

std::string FormatFloat(double number, int style) {
  std::array<char, 64> digits{};
  const char* const format = style == 1 ? "%.7e" : style == 2 ? "%.15e" : "%.6g";
  std::snprintf(digits.data(), digits.size(), format, number);
  std::string text = digits.data();
  // The server writes three digits of an exponent.
  const std::size_t exponent = text.find('e');
  if (exponent != std::string::npos && text.size() - exponent == 4) {
    text.insert(exponent + 2, 1, '0');
  }
  return text;
}

Cell ToText(const Cell& cell, const Job& job) {
  switch (FamilyOf(job.from.id)) {
    case TypeFamily::kInteger:
      return NumberText(std::to_string(IntegerOf(cell)), job);
    case TypeFamily::kReal:
      return NumberText(FormatFloat(DoubleOf(cell, job), job.style), job);
    case TypeFamily::kDecimal:
      return NumberText(FormatDecimal(DecimalOfCell(cell)), job);
    case TypeFamily::kMoney:
      return NumberText(MoneyText(DecimalOfCell(cell), job.style), job);
    case TypeFamily::kDateTime:
      if (const auto text = FormatDateTime(IntegerOf(cell), job.style)) {
        return TextResult(*text, job);
      }
      Fail(281, {std::to_string(job.style), job.from_name()});
    case TypeFamily::kBinary:
      return BytesToText(BytesOf(cell), job);
    case TypeFamily::kGuid:
      if (job.to.length < 36) Fail(8170);
      return TextResult(FormatGuid(BytesOf(cell)), job);
    default:
      return TextResult(BytesOf(cell), job);
  }
}

Cell ToBytes(const Cell& cell, const Job& job) {
  const TypeFamily from = FamilyOf(job.from.id);
  if (from == TypeFamily::kInteger) return IntegerToBytes(IntegerOf(cell), job);
  if (from == TypeFamily::kText) return TextToBytes(BytesOf(cell), job);
  return BytesResult(BytesOf(cell), job);
}

Cell ToGuid(const Cell& cell, const Job& job) {
  std::string bytes = BytesOf(cell);
  if (FamilyOf(job.from.id) == TypeFamily::kText) {
    std::optional<std::string> guid = ParseGuid(Trim(bytes));
    if (!guid) Fail(8169);
    bytes = *std::move(guid);
  }
  bytes.resize(16, '\0');
  return Blob{std::move(bytes)};
}

}  // namespace

Decimal DecimalOfCell(const Cell& cell) {
  std::optional<Decimal> number;
  if (const auto* integer = std::get_if<Integer>(&cell)) number = Decimal{*integer, 0};
  if (const auto* text = std::get_if<std::string>(&cell)) number = ParseDecimal(*text);
  if (const auto* real = std::get_if<double>(&cell)) number = FromDouble(*real, 10);
  if (!number) Fail(8114, {"expression", "numeric"});
  return *number;
}

Cell StoreDecimal(const Decimal& number, const SqlType& type, std::string_view from_name) {
  const std::string_view name = NameOf(type.id);
  if (FamilyOf(type.id) == TypeFamily::kInteger) {
    if (!FitsInteger(number, type.id)) Fail(8115, {from_name, name});
    return static_cast<Integer>(Truncate(number));
  }
  const std::optional<Decimal> scaled = Rescale(number, type.scale);
  bool fits = scaled && FitsPrecision(*scaled, type.precision);
  if (FamilyOf(type.id) == TypeFamily::kMoney) {
    fits = fits && FitsBits(scaled->value, type.id == TypeId::kMoney ? 64 : 32);
  }
  if (!fits) {
    Fail(8115,
         {from_name == "decimal" ? "numeric" : from_name, name == "decimal" ? "numeric" : name});
  }
  return FormatDecimal(*scaled);
}

Cell ConvertCell(const Cell& cell, const SqlType& from, const SqlType& to, int style,
                 ConversionKind kind) {
  if (IsNullCell(cell)) return cell;
  Job job{from, to, style, kind};
  const bool text = FamilyOf(from.id) == TypeFamily::kText;
  if (FamilyOf(from.id) == TypeFamily::kVariant ||
      (text && !std::holds_alternative<std::string>(cell))) {
    job.from = BaseTypeOf(cell);
  }
  CheckAllowed(job);
  switch (FamilyOf(to.id)) {
    case TypeFamily::kInteger:
      return ToInteger(cell, job);
    case TypeFamily::kReal:
      return ToReal(cell, job);
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return StoreDecimal(DecimalOf(cell, job), to, job.from_name());
    case TypeFamily::kDateTime:
      return ToDateTime(cell, job);
    case TypeFamily::kText:
      return ToText(cell, job);
    case TypeFamily::kBinary:
      return ToBytes(cell, job);
    case TypeFamily::kGuid:
      return ToGuid(cell, job);
    case TypeFamily::kVariant:
      break;
  }
  return cell;
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

}  // namespace dbkeeper::server
