// The whole program on a fake machine, with a fake server or on a connection of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "app/main/Application.h"
#include "tests/support/FailingConnection.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper::testing {

class AppTest : public ::testing::Test {
 protected:
  explicit AppTest(Connection& server) : app{server, SetExecutable(fake, folder)} {}

  // Connects to the local server with Windows authentication, as an operator does.
  void Connect() {
    fake.windows.modal.emplace_back([this](Form&) {
      TFormLogin& login = app.FormLogin;
      login.ComboBox_SQL_Server.Text = std::string(kLocalServer);
      app.Guard().Run([&] { login.CheckBox_Windows.UserCheck(true); });
      app.Guard().Run([&] { login.SBtn_Update.UserClick(); });
    });
    Choose(app.FormMain.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_Connect");
  }

  // Pops the menu up and chooses an item by its name.
  void Choose(PopupMenu& menu, const std::string& name) {
    app.Guard().Run([&] { menu.UserPopup(); });
    MenuItem* const item = menu.Find(name);
    ASSERT_NE(item, nullptr) << name;
    app.Guard().Run([&] { item->UserChoose(); });
  }

  // The node at the end of a path of texts; the server's root is named by "".
  TreeNode& Node(const std::vector<std::string>& path) {
    TreeNode* node = app.FormMain.TreeView.Roots().front().get();
    for (const std::string& text : path) {
      TreeNode* next = nullptr;
      for (const auto& child : node->Children()) {
        if (child->Text() == text) next = child.get();
      }
      if (next == nullptr) throw std::out_of_range("no node " + text);
      node = next;
    }
    return *node;
  }

  void Click(TreeNode& node) {
    app.Guard().Run([&] { app.FormMain.TreeView.UserClick(&node); });
  }
  void ClickPath(const std::vector<std::string>& path) { Click(Node(path)); }

  const std::string& Status() { return app.FormMain.StatusBar1.SimpleText(); }

  // The program asks for its file when it is made.
  static const Host& SetExecutable(FakeHost& host, const TemporaryFolder& program_folder) {
    host.shell.executable = program_folder / "DBKEEPER.exe";
    return host.host;
  }

  TemporaryFolder folder;
  FakeHost fake;
  Application app;
};

// What must be there before the program that uses it.
struct HasFakeConnection {
  FakeConnection connection;
  FailingConnection failing{connection};
};

class AppFixture : protected HasFakeConnection, public AppTest {
 protected:
  AppFixture() : AppTest(failing) {
    connection.Answer("sysdatabases",
                      {TextFields({"dbid", "name", "status", "status2", "crdate", "filename"}),
                       {{"1", "master", "8", "0", "2003-01-01 00:00:00", "C:\\master.mdf"},
                        {"7", "sales", "16", "0", "2005-03-08 09:05:07", "C:\\sales.mdf"}}});
  }
};

}  // namespace dbkeeper::testing
