// The guided tour's program: files in a folder of its own, fresh at each start, with everything
// that the settings can show, and a pair of hands in the event loop.
#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "platform/qt/ProgramRun.h"
#include "platform/qt/tour/Chapters.h"

namespace dbkeeper::qt {

const char* Usage() {
  return "usage: dbkeeper-tour DIR\n"
         "Shows the program by itself and writes pictures of it into DIR.\n"
         "  --help     prints this\n"
         "  --version  prints the version\n";
}

namespace {

constexpr int kWrongUse = 2;

std::filesystem::path PictureFolder(int argc, char** argv) {
  if (argc != 2) {
    std::fputs(Usage(), stderr);
    std::exit(kWrongUse);
  }
  return std::filesystem::absolute(argv[1]);
}

}  // namespace

std::filesystem::path ProgramFile(int argc, char** argv) {
  const std::filesystem::path folder = PictureFolder(argc, argv) / "dbkeeper-tour-files";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "DBKEEPER.ini") << "[SYSTEM]\r\nAdvanced=True\r\n";
  return folder / "DBKEEPER.exe";
}

int RunEventLoop(int argc, char** argv) {
  tour::Tour guided(tour::AllSteps(), PictureFolder(argc, argv).string());
  guided.Start();
  QApplication::exec();
  return guided.Succeeded() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace dbkeeper::qt
