// What a dialog or a command may see of the main window: the session, the tree, the list, the
// status bar, the settings and the machine.
#pragma once

#include <filesystem>
#include <string>

#include "app/session/ServerSession.h"
#include "app/support/Host.h"
#include "app/support/SettingsFile.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"
#include "controls/TreeView.h"

namespace dbkeeper {

// The two switches of section SYSTEM.
struct Options {
  bool Advanced = false;         // note columns and fields are shown
  bool ShowSystemTables = true;  // system tables are listed
};

struct Workbench {
  ServerSession& Session;
  const dbkeeper::Host& Host;
  dbkeeper::TreeView& Tree;
  ListView& List;
  StatusBar& Status;
  Options& Switches;
  SettingsFile& Settings;
  std::filesystem::path ProgramFolder;

  // The machine's name where the server is the local one, the server's name otherwise.
  std::string MachineOf(const std::string& server) const {
    return server == kLocalServer ? Host.shell.ComputerName() : server;
  }
  std::string ServerMachine() const { return MachineOf(Session.ServerName); }

  // The question before something that destroys or alters; Cancel is the default.
  bool ConfirmCaution(const std::string& text) const {
    return Host.dialogs.Ask({text, "注意", Buttons::kOkCancel, Icon::kStop, Answer::kCancel}) ==
           Answer::kOk;
  }
};

// Refills the main list for a kind of tree node. `database` is the database that the node stands
// in, or that it is; empty where there is none.
using ListRoutine = void (*)(const Workbench& workbench, const std::string& database);

// Shows that a statement runs: " *" and the waiting cursor, then " >" and what has run. Leaving the
// scope by an exception takes the cursor back and leaves the " *".
class RunningStatus {
 public:
  explicit RunningStatus(const Workbench& workbench)
      : status_(workbench.Status), busy_(Show(workbench)) {}
  void Done(const std::string& text) { status_.SimpleText = " >" + text; }

 private:
  static Windows& Show(const Workbench& workbench) {
    workbench.Status.SimpleText = " *";
    return workbench.Host.windows;
  }

  StatusBar& status_;
  BusyScope busy_;
};

}  // namespace dbkeeper
