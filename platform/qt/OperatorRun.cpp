// The operator's program: its own file, and the toolkit's event loop.
#include <QApplication>

#include "platform/qt/ProgramRun.h"

namespace dbkeeper::qt {

const char* Usage() {
  return "usage: dbkeeper\n"
         "Administers Microsoft SQL Server 2000 in windows. Its settings file and its folders\n"
         "stand beside the program.\n"
         "  --help     prints this\n"
         "  --version  prints the version\n";
}

std::filesystem::path ProgramFile(int /*argc*/, char** /*argv*/) {
  return std::filesystem::read_symlink("/proc/self/exe");
}

int RunEventLoop(int /*argc*/, char** /*argv*/) { return QApplication::exec(); }

}  // namespace dbkeeper::qt
