// Scripts from text files: the numbered steps that separator lines of the form "/* COM01:label */"
// divide them into.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper {

struct StepSeparator {
  int step = 0;
  std::string label;  // with the step's two digits before it
};

// Absence for an ordinary line.
std::optional<StepSeparator> ParseSeparator(std::string_view line);

// What of a script is loaded, and the labels of its steps in file order.
struct ScriptPart {
  std::vector<std::string> lines;
  std::vector<std::string> labels;
};

// The lines while the step counter, which begins with `first_step` and takes each separator's
// number, is `wanted_step`; separators themselves go nowhere.
ScriptPart TakeSteps(const std::vector<std::string>& script, int first_step, int wanted_step);

// What stands between lines of the one word "go", in any case; batches of blanks are left out. At
// least one: a text without such a line is one batch as it stands.
std::vector<std::string> Batches(const std::string& text);

}  // namespace dbkeeper
