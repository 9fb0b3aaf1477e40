// What a list routine or a dialog works on, without a main window.
#pragma once

#include "app/workbench/Workbench.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper::testing {

// A workbench on a connection of the test's own.
struct WorkbenchOn {
  explicit WorkbenchOn(Connection& server) : session(server, fake.locale) {}

  TemporaryFolder folder;
  FakeHost fake;
  ServerSession session;
  TreeView tree;
  ListView list;
  StatusBar status;
  Options options;
  SettingsFile settings{folder / "DBKEEPER.ini", fake.host};
  Workbench workbench{session, fake.host, tree, list, status, options, settings, folder.Path()};
};

struct OnFakeConnection {
  FakeConnection connection;
};

// A workbench on a fake server.
struct WorkbenchFixture : OnFakeConnection, WorkbenchOn {
  WorkbenchFixture() : WorkbenchOn(connection) {}
};

}  // namespace dbkeeper::testing
