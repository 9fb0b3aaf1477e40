#include "app/session/CellText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <vector>

#include "app/support/DateText.h"
#include "app/support/Errors.h"
#include "app/support/Hexadecimal.h"
#include "app/support/Messages.h"
#include "app/support/TextHelpers.h"
#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool AllDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), &IsDigit);
}
bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string UpperCase(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
  }
  return text;
}

// The start of a text that has at most `limit` bytes and ends at the end of a character.
std::string_view Cut(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80) --limit;
  return text.substr(0, limit);
}

// A sign that may stand before a number is taken off; a "+" is dropped.
std::string TakeSign(std::string_view& number) {
  if (number.empty() || (number[0] != '-' && number[0] != '+')) return "";
  std::string sign = number[0] == '-' ? "-" : "";
  number.remove_prefix(1);
  return sign;
}

std::optional<std::string> TypedInteger(std::string_view typed, HostLocale&) {
  const std::string sign = TakeSign(typed);
  if (!AllDigits(typed)) return std::nullopt;
  return sign + std::string(typed);
}

std::optional<std::string> TypedDecimal(std::string_view typed, HostLocale& locale) {
  std::string number = TakeSign(typed);
  const std::size_t point = typed.find_first_of(std::string{'.', locale.DecimalSeparator()});
  const std::string_view whole = typed.substr(0, point);
  const std::string_view decimals =
      point == std::string_view::npos ? std::string_view() : typed.substr(point + 1);
  if (whole.empty() && decimals.empty()) return std::nullopt;
  if ((!whole.empty() && !AllDigits(whole)) || (!decimals.empty() && !AllDigits(decimals))) {
    return std::nullopt;
  }
  number += whole.empty() ? "0" : std::string(whole);
  if (!decimals.empty()) number += "." + std::string(decimals);
  return number;
}

std::optional<std::string> TypedReal(std::string_view typed, HostLocale& locale) {
  std::string number = TakeSign(typed) + std::string(typed);
  std::replace(number.begin(), number.end(), locale.DecimalSeparator(), '.');
  double value = 0;
  const char* const end = number.data() + number.size();
  const auto [stop, problem] = std::from_chars(number.data(), end, value);
  if (problem != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
  return number;
}

std::optional<std::string> TypedBit(std::string_view typed, HostLocale&) {
  if (typed == "1" || EqualsIgnoringCase(typed, "true")) return "1";
  if (typed == "0" || EqualsIgnoringCase(typed, "false")) return "0";
  return std::nullopt;
}

std::optional<std::string> TypedBinary(std::string_view typed, HostLocale&) {
  if (typed.starts_with("0x") || typed.starts_with("0X")) typed.remove_prefix(2);
  if (typed.size() % 2 != 0 || !std::all_of(typed.begin(), typed.end(), &IsHexadecimalDigit)) {
    return std::nullopt;
  }
  return UpperCase(std::string(typed));
}

std::optional<std::string> TypedGuid(std::string_view typed, HostLocale&) {
  constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  if (typed.size() == kForm.size() + 2 && typed.front() == '{' && typed.back() == '}') {
    typed = typed.substr(1, kForm.size());
  }
  if (typed.size() != kForm.size()) return std::nullopt;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    if (kForm[i] == '-' ? typed[i] != '-' : !IsHexadecimalDigit(typed[i])) return std::nullopt;
  }
  return UpperCase(std::string(typed));
}

// The places of year, month and day in the host's order of a date.
std::array<std::size_t, 3> DateOrder(std::string_view pattern) {
  const std::array<std::size_t, 3> at = {pattern.find('y'), pattern.find('m'), pattern.find('d')};
  std::array<std::size_t, 3> order{};
  for (std::size_t i = 0; i < 3; ++i) {
    order[i] = static_cast<std::size_t>(
        std::count_if(at.begin(), at.end(), [&](std::size_t other) { return other < at[i]; }));
  }
  return order;
}

struct DateNumbers {
  std::vector<int> numbers;
  std::string fraction;  // three digits
};

// The numbers of a date and time, whatever stands between them.
std::optional<DateNumbers> NumbersOf(std::string_view typed) {
  DateNumbers date;
  date.fraction = "000";
  for (std::size_t at = 0; at < typed.size();) {
    if (!IsDigit(typed[at])) {
      if (std::string_view("/-.: T").find(typed[at]) == std::string_view::npos) return std::nullopt;
      ++at;
      continue;
    }
    const std::size_t start = at;
    while (at < typed.size() && IsDigit(typed[at])) ++at;
    const std::string_view digits = typed.substr(start, at - start);
    if (date.numbers.size() == 6) {
      if (digits.size() > 3 || at != typed.size()) return std::nullopt;
      date.fraction = (std::string(digits) + "00").substr(0, 3);
      return date;
    }
    int number = 0;
    const auto [stop, problem] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (problem != std::errc() || stop != digits.data() + digits.size()) return std::nullopt;
    date.numbers.push_back(number);
  }
  return date;
}

std::optional<std::string> TypedDate(std::string_view typed, HostLocale& locale) {
  const auto date = NumbersOf(typed);
  if (!date || date->numbers.size() < 3 || date->numbers.size() == 4) return std::nullopt;
  const auto& numbers = date->numbers;
  // A number of four digits in front is a year whatever the host's order is.
  const bool year_first = numbers[0] > 999;
  const auto order =
      year_first ? std::array<std::size_t, 3>{0, 1, 2} : DateOrder(locale.ShortDateFormat());
  const auto part = [&](std::size_t index) { return index < numbers.size() ? numbers[index] : 0; };
  const DateTimeValue value{numbers[order[0]], numbers[order[1]], numbers[order[2]],
                            part(3),           part(4),           part(5)};
  if (value.year < 1000 || value.year > 9999 || value.month < 1 || value.month > 12 ||
      value.day < 1 || value.day > 31 || value.hour > 23 || value.minute > 59 ||
      value.second > 59) {
    return std::nullopt;
  }
  return FormatDateTime(value, "yyyy-mm-dd hh:nn:ss") + "." + date->fraction;
}

using Reading = std::optional<std::string> (*)(std::string_view typed, HostLocale& locale);

struct KindRow {
  GridCellKind shown;
  Alignment align;
  Reading read;  // null: any text is a value
};

// In the order of FieldKind.
constexpr std::array<KindRow, 8> kKinds = {{
    {GridCellKind::kText, Alignment::kLeft, nullptr},
    {GridCellKind::kNumber, Alignment::kRight, &TypedInteger},
    {GridCellKind::kNumber, Alignment::kRight, &TypedDecimal},
    {GridCellKind::kNumber, Alignment::kRight, &TypedReal},
    {GridCellKind::kNumber, Alignment::kRight, &TypedBit},
    {GridCellKind::kDate, Alignment::kLeft, &TypedDate},
    {GridCellKind::kBinary, Alignment::kLeft, &TypedBinary},
    {GridCellKind::kText, Alignment::kLeft, &TypedGuid},
}};

const KindRow& KindOf(const Field& field) { return kKinds[static_cast<std::size_t>(field.kind)]; }

// The date of the port in the form that no date format setting of the server reads otherwise.
std::string DateLiteral(const std::string& value) {
  std::string text = value;
  if (text.size() >= 10 && text[4] == '-' && text[7] == '-') {
    text.erase(7, 1);
    text.erase(4, 1);
  }
  return "'" + text + "'";
}

std::string RealLiteral(const Field& field, const std::string& value) {
  const bool has_exponent = value.find_first_of("eE") != std::string::npos;
  const std::string number = has_exponent ? value : value + "e0";
  // Compared with a float, a real is another number than the one it shows.
  return EqualsIgnoringCase(field.type_name, "real") ? "cast(" + number + " as real)" : number;
}

}  // namespace

GridColumn ColumnOf(const Field& field) {
  std::string hint = field.type_name;
  if (field.kind == FieldKind::kDecimal) {
    hint += "(" + std::to_string(field.size) + "," + std::to_string(field.scale) + ")";
  } else if ((field.kind == FieldKind::kText || field.kind == FieldKind::kBinary) &&
             !field.long_value && field.size > 0) {
    hint += "(" + std::to_string(field.size) + ")";
  }
  hint += field.nullable ? " null" : " not null";
  return {.Caption = field.name,
          .TypeHint = std::move(hint),
          .Kind = KindOf(field).shown,
          .Align = KindOf(field).align};
}

std::string_view ShownText(const Field& field, std::string_view value, std::string& room,
                           HostLocale& locale, std::size_t limit) {
  switch (field.kind) {
    case FieldKind::kDateTime:
      room = ServerDateToHostText(value, locale.ShortDateFormat());
      return room;
    case FieldKind::kBinary:
      room = "0x";
      room += value.substr(0, limit);
      return Cut(room, limit);
    default:
      return Cut(value, limit);
  }
}

std::string EditText(const Field& field, std::string_view value) {
  return field.kind == FieldKind::kBinary ? "0x" + std::string(value) : std::string(value);
}

std::optional<std::string> TypedValue(const Field& field, const std::string& typed,
                                      HostLocale& locale) {
  const Reading read = KindOf(field).read;
  if (read == nullptr) return typed;
  const std::string text = Trim(typed);
  if (text.empty()) return std::nullopt;
  auto value = read(text, locale);
  if (!value) throw ConvertError(messages::Fill(messages::kNotAValue, field.name + " = " + text));
  return value;
}

std::string SqlLiteral(const Field& field, const std::optional<std::string>& value) {
  if (!value) return "null";
  switch (field.kind) {
    case FieldKind::kInteger:
    case FieldKind::kDecimal:
    case FieldKind::kBit:
      return *value;
    case FieldKind::kReal:
      return RealLiteral(field, *value);
    case FieldKind::kDateTime:
      return DateLiteral(*value);
    case FieldKind::kBinary:
      return "0x" + *value;
    case FieldKind::kGuid:
      return "'" + *value + "'";
    case FieldKind::kText:
      return QuotedText(*value);
  }
  return "null";
}

std::string BracketedName(std::string_view name) {
  std::string text = "[";
  for (const char c : name) text.append(c == ']' ? 2 : 1, c);
  return text + "]";
}

std::string QuotedText(std::string_view text) {
  std::string quoted = IsAscii(text) ? "'" : "N'";
  for (const char c : text) quoted.append(c == '\'' ? 2 : 1, c);
  return quoted + "'";
}

}  // namespace dbkeeper
