// The operator's program: its own file, and the toolkit's event loop.
#include <QApplication>

#include "platform/qt/ProgramRun.h"

namespace dbkeeper::qt {

std::filesystem::path ProgramFile(int /*argc*/, char** /*argv*/) {
  return std::filesystem::read_symlink("/proc/self/exe");
}

int RunEventLoop(int /*argc*/, char** /*argv*/) { return QApplication::exec(); }

}  // namespace dbkeeper::qt
