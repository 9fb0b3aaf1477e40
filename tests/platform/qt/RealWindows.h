// The whole program in its real windows, on a fake server: tests drive it by keys and mouse.
#pragma once

#include <gtest/gtest.h>

#include "app/main/Application.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtFace.h"
#include "platform/qt/QtProgress.h"
#include "platform/qt/QtWindows.h"
#include "platform/qt/tour/Tour.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper::testing {

class RealWindows : public ::testing::Test {
 protected:
  RealWindows();

  // Shows the main window and runs the steps; the test fails at the first that does not show what
  // it should.
  void Run(qt::tour::Steps steps);

  TemporaryFolder folder;
  FakeHost fake;
  FakeConnection connection;
  qt::QtDialogs dialogs;
  qt::QtWindows windows;
  qt::QtProgress progress;

 private:
  Host MakeHost();

 public:
  const Host host{MakeHost()};
  Application app{connection, host};
  qt::QtFace face{app, windows};
};

}  // namespace dbkeeper::testing
