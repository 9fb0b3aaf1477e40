// The event loop of the measured program: ends at the first painted main window.
#include <QApplication>

#include "bench/start_common.h"
#include "platform/qt/ProgramRun.h"

namespace dbkeeper::qt {

std::filesystem::path ProgramFile(int /*argc*/, char** /*argv*/) {
  return std::filesystem::read_symlink("/proc/self/exe");
}

int RunEventLoop(int /*argc*/, char** /*argv*/) {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->objectName() == "FormMain") new bench::FirstPaint(*window);
  }
  return QApplication::exec();
}

}  // namespace dbkeeper::qt
