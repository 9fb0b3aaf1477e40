// Scripts from text files: their text whatever its encoding, and the numbered steps that separator
// lines of the form "/* COM01:label */" divide them into.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper {

// The lines of a text file in UTF-8 or UTF-16 with a mark, or in UTF-8 or the ANSI code page
// without. Throws FileError when it cannot be read, is longer than 32 MiB, or is no such text.
std::vector<std::string> ReadTextLines(const std::filesystem::path& file, CodePage& code_page);

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

}  // namespace dbkeeper
