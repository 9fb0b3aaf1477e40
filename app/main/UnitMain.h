// The main window: the tree of operation categories, the main list, its popup menus, and the
// program-wide handler of errors. What the menus do stands in app/main/nodes/, a file for each kind
// of node.
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/main/ErrorLog.h"
#include "app/main/TableBrowser.h"
#include "app/session/ServerSession.h"
#include "app/support/Host.h"
#include "app/support/SettingsFile.h"
#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"
#include "controls/Menu.h"
#include "controls/TreeView.h"

namespace dbkeeper {

class Application;

class TFormMain : public Form {
 public:
  // `program` may hold windows that are created after this one; nothing of them is used before the
  // first command.
  TFormMain(ServerSession& session, const Host& host, SettingsFile& settings, Application& program);

  dbkeeper::TreeView TreeView{"TreeView"};
  ListView ListViewMain{"ListViewMain"};
  StatusBar StatusBar1{"StatusBar1"};
  Panel Pnl_Main{"Pnl_Main"};

 private:
  ServerSession& session_;
  const Host& host_;
  SettingsFile& settings_;
  Options options_;
  dbkeeper::Workbench workbench_;
  ErrorLog error_log_;

 public:
  TableBrowser Browser;

  // What dialogs and commands see of this window.
  const dbkeeper::Workbench& Workbench() const { return workbench_; }
  // The popup menu of that name. Throws std::out_of_range when there is none.
  PopupMenu& Menu(std::string_view name) const;

  void FormCreate() override;
  void FormHide();
  // The choice of a system-menu item by its id.
  void SystemCommand(int id);
  // The program-wide handler of every error that no command catches.
  void ApplicationException(const std::exception& error);

  // The session is connected to that server: names it everywhere, and takes away what is left of
  // one before.
  void ShowServer(const std::string& server);
  // Offers the nodes and commands of a connected server.
  void ShowConnected();
  // Closes the session and takes away what belonged to it.
  void Disconnect();

  void TreeViewClick();
  void TreeViewKeyUp();
  void TreeViewMouseDown();
  void ListViewMainColumnClick(std::size_t column);
  void ListViewMainDblClick();
  void PM_OnlineHelpClick();
  void PM_ReadmeClick();
  void PM_GotoHomePageClick();

 private:
  // Shows a connection that was lost, the first time it is seen.
  void SettleConnection();
  void NameServer(const std::string& node, const std::string& title);
  void BuildRoots();
  void BuildServerNodes();
  void ShowConnectionState();
  void ClearList();
  void ShowApplicationInformation();
  void AppendSystemMenu();
  void OpenProgramFile(const std::string& name);

  enum class Link { kNone, kConnected, kLost };

  Application& program_;
  Link link_ = Link::kNone;  // what the windows show
  std::vector<std::unique_ptr<PopupMenu>> menus_;
  int sort_direction_ = -1;
  bool log_failure_told_ = false;
};

}  // namespace dbkeeper
