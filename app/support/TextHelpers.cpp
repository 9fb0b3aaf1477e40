#include "app/support/TextHelpers.h"

#include <algorithm>
#include <stdexcept>

namespace dbkeeper {

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

}  // namespace

std::string TextBetween(std::string_view text, std::string_view start, std::string_view end) {
  const std::size_t found = text.find(start);
  if (found == std::string_view::npos) return {};
  const std::size_t from = found + start.size();
  const std::size_t to = text.find(end, from);
  if (to == std::string_view::npos) return {};
  return std::string(text.substr(from, to - from));
}

std::string ReplaceAll(std::string text, std::string_view search, std::string_view replacement) {
  if (replacement.find(search) != std::string_view::npos) {
    throw std::invalid_argument("The replacement holds the searched text.");
  }
  // A new occurrence can only begin where the replacement may complete one: fewer than
  // search.size() places before it. Going on from there finds what a search from the beginning
  // would find.
  std::size_t from = 0;
  while ((from = text.find(search, from)) != std::string::npos) {
    text.replace(from, search.size(), replacement);
    from -= std::min(from, search.size() - 1);
  }
  return text;
}

std::vector<std::string> Split(std::string_view text, char delimiter) {
  std::vector<std::string> parts;
  std::size_t end = 0;
  while ((end = text.find(delimiter)) != std::string_view::npos) {
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  if (!text.empty()) parts.emplace_back(text);
  return parts;
}

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
  return lower;
}

std::string Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return std::string(text);
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::optional<std::string> LeadingUseStatement(std::string_view sql) {
  while (!sql.empty() && IsBlank(sql.front())) sql.remove_prefix(1);
  if (sql.size() < 4 || !EqualsIgnoringCase(sql.substr(0, 3), "use")) return std::nullopt;
  if (!IsBlank(sql[3]) && sql[3] != '[') return std::nullopt;
  sql.remove_prefix(3);
  while (!sql.empty() && IsBlank(sql.front())) sql.remove_prefix(1);
  if (sql.empty()) return std::nullopt;
  if (sql.front() == '[') {
    const std::size_t end = sql.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    return std::string(sql.substr(1, end - 1));
  }
  const auto* const end =
      std::find_if(sql.begin(), sql.end(), [](char c) { return IsBlank(c) || c == ';'; });
  return std::string(sql.begin(), end);
}

}  // namespace dbkeeper
