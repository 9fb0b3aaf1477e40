// Runs the tests with the windows drawn into memory, so that they need no display.
#include <gtest/gtest.h>

#include <QApplication>

#include "platform/qt/Look.h"

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  dbkeeper::qt::ApplyLook(*qApp);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
