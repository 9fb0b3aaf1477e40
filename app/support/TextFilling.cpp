#include "app/support/TextFilling.h"

#include <algorithm>

#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Reads the "-16" of a place, as far as it is one; gives the width, 0 when there is none.
std::size_t TakeWidth(std::string_view& rest) {
  if (rest.size() < 2 || rest[0] != '-' || !IsDigit(rest[1])) return 0;
  rest.remove_prefix(1);
  std::size_t width = 0;
  for (; !rest.empty() && IsDigit(rest.front()); rest.remove_prefix(1)) {
    width = width * 10 + static_cast<std::size_t>(rest.front() - '0');
  }
  return width;
}

}  // namespace

std::string FillText(std::string_view text, std::initializer_list<PlaceValue> places) {
  std::string filled;
  while (!text.empty()) {
    const std::size_t percent = text.find('%');
    filled += text.substr(0, percent);
    if (percent == std::string_view::npos) break;
    text.remove_prefix(percent + 1);
    std::string_view rest = text;
    const std::size_t width = TakeWidth(rest);
    const auto* const place =
        std::find_if(places.begin(), places.end(), [&](const PlaceValue& candidate) {
          return !rest.empty() && rest.front() == candidate.mark;
        });
    if (place == places.end()) {
      filled += '%';
      continue;
    }
    filled += PadRight(place->value, width);
    text = rest.substr(1);
  }
  return filled;
}

std::string PadRight(std::string_view text, std::size_t width) {
  const std::size_t length = Utf8Count(text);
  return std::string(text) + std::string(length < width ? width - length : 0, ' ');
}

}  // namespace dbkeeper
