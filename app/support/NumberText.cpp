#include "app/support/NumberText.h"

#include <array>
#include <charconv>

#include "app/support/Errors.h"
#include "app/support/Messages.h"

namespace dbkeeper {

namespace {

template <typename Number>
Number Parse(std::string_view text, std::string_view message) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, number);
  if (problem != std::errc() || stop != end || number - number != 0) {
    throw ConvertError(messages::Fill(message, text));
  }
  return number;
}

}  // namespace

std::int64_t ParseInteger(std::string_view text) {
  return Parse<std::int64_t>(text, messages::kNotAnInteger);
}

double ParseDecimal(std::string_view text) { return Parse<double>(text, messages::kNotADecimal); }

std::string DecimalText(double number) {
  std::array<char, 512> text{};  // the longest has 309 digits
  const auto [end, problem] =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return {text.data(), problem == std::errc() ? end : text.data()};
}

}  // namespace dbkeeper
