// How the program is run: by an operator, or by the guided tour. The two programs are made of the
// same sources and differ only in which definition of these functions is linked.
#pragma once

#include <filesystem>

namespace dbkeeper::qt {

// What --help prints.
const char* Usage();

// The file that the program takes itself to be: its settings and folders stand beside it. Call it
// before the windows are made.
std::filesystem::path ProgramFile(int argc, char** argv);

// Runs until the program ends; gives its exit code.
int RunEventLoop(int argc, char** argv);

}  // namespace dbkeeper::qt
