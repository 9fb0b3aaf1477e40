#include "query/ScriptFile.h"

#include <cstddef>
#include <utility>

#include "app/support/Files.h"
#include "app/support/TextHelpers.h"
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

std::vector<std::string> Batches(const std::string& text) {
  const std::vector<std::string> lines = SplitLines(text);
  const auto separates = [](const std::string& line) { return LowerCase(Trim(line)) == "go"; };
  if (std::ranges::none_of(lines, separates)) return {text};
  std::vector<std::string> batches;
  std::string batch;
  const auto end_batch = [&] {
    if (!Trim(batch).empty()) batches.push_back(batch);
    batch.clear();
  };
  for (const std::string& line : lines) {
    if (separates(line)) {
      end_batch();
    } else {
      batch += (batch.empty() ? "" : "\r\n") + line;
    }
  }
  end_batch();
  if (batches.empty()) batches.emplace_back();
  return batches;
}

}  // namespace dbkeeper
