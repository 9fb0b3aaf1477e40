// What the programs answer before they open a window.
#pragma once

#include <optional>

namespace dbkeeper::qt {

// Prints what --help or --version ask for and gives the exit code; absence where there is something
// to do. `usage` is printed as it stands.
std::optional<int> AnswerCommandLine(int argc, char** argv, const char* usage, const char* version);

// While this object lives, a toolkit that finds no display to show windows on ends the program with
// one sentence and exit code 1, instead of a crash. Make one around the toolkit's start.
class DisplayNeeded {
 public:
  DisplayNeeded();
  DisplayNeeded(const DisplayNeeded&) = delete;
  DisplayNeeded& operator=(const DisplayNeeded&) = delete;
  ~DisplayNeeded();
};

}  // namespace dbkeeper::qt
