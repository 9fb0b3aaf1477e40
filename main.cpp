// DB Keeper: the one place that joins the program to the real platform.
#include <QApplication>
#include <clocale>
#include <optional>

#include "app/main/Application.h"
#include "app/support/SettingsFile.h"
#include "platform/host/DesktopLocale.h"
#include "platform/host/DesktopShell.h"
#include "platform/host/IconvCodePage.h"
#include "platform/host/LocalServerProcess.h"
#include "platform/host/PosixDisk.h"
#include "platform/host/SessionSettings.h"
#include "platform/host/SystemClock.h"
#include "platform/host/SystemRandom.h"
#include "platform/odbc/OdbcConnection.h"
#include "platform/qt/CommandLine.h"
#include "platform/qt/Look.h"
#include "platform/qt/ProgramRun.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtFace.h"
#include "platform/qt/QtProgress.h"
#include "platform/qt/QtWindows.h"

int main(int argc, char** argv) {
  using namespace dbkeeper;

  if (const auto code = qt::AnswerCommandLine(argc, argv, qt::Usage(), DBKEEPER_VERSION)) {
    return *code;
  }
  const std::filesystem::path program_file = qt::ProgramFile(argc, argv);
  std::optional<qt::DisplayNeeded> display(std::in_place);
  QApplication application(argc, argv);
  display.reset();
  // The toolkit sets the operator's language; numbers in texts keep their "." all the same.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("DBKEEPER.exe");
  QApplication::setQuitOnLastWindowClosed(false);
  qt::ApplyLook(application);

  host::DesktopShell shell(program_file, DBKEEPER_VERSION);
  qt::QtDialogs dialogs;
  host::SystemClock clock;
  host::SystemRandom random;
  host::IconvCodePage code_page;
  host::DesktopLocale locale;
  qt::QtWindows windows;
  host::PosixDisk disk;
  qt::QtProgress progress;
  const Host outside{shell, dialogs, clock, random, code_page, locale, windows, disk, progress};

  const SettingsFile settings(SettingsPath(program_file), outside);
  LocalServerProcess local_server(host::LocalServerOf(program_file));
  host::LocalServerChoice local(settings, local_server);
  OdbcConnection connection(host::ReadOdbcOptions(settings), local);

  Application program(connection, outside);
  const qt::QtFace face(program, windows);
  program.Start();
  windows.Show(program.FormMain);
  return qt::RunEventLoop(argc, argv);
}
