#include "query/ScriptFile.h"

#include <cstddef>
#include <utility>

#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::optional<StepSeparator> ParseSeparator(std::string_view line) {
  constexpr std::string_view kStart = "/* COM";
  constexpr std::size_t kEndLength = 3;  // " */", whatever stands there
  if (line.size() < kStart.size() + 3 || !line.starts_with(kStart)) return std::nullopt;
  std::string_view label = line.substr(kStart.size());
  if (!IsDigit(label[0]) || !IsDigit(label[1]) || label[2] != ':') return std::nullopt;
  const int step = (label[0] - '0') * 10 + (label[1] - '0');
  label.remove_suffix(Utf8Right(label, kEndLength).size());
  return StepSeparator{step, std::string(label)};
}

ScriptPart TakeSteps(const std::vector<std::string>& script, int first_step, int wanted_step) {
  ScriptPart part;
  int step = first_step;
  for (const std::string& line : script) {
    if (auto separator = ParseSeparator(line)) {
      step = separator->step;
      part.labels.push_back(std::move(separator->label));
    } else if (step == wanted_step) {
      part.lines.push_back(line);
    }
  }
  return part;
}

}  // namespace dbkeeper
