// The main window: the tree of operation categories, the main list, its popup menus and the
// commands behind them.
//
// One header; the members stand in several sources, one for each family of commands:
//   UnitMain.cpp        start-up, the system menu, the error log
//   NodeDispatch.cpp    which list a tree node shows
//   ServerCommands.cpp  connect, disconnect, stop, pause, server tools
//   ListCommands.cpp    sorting, capacity, system tables
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string>

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

class TFormLogin;

// The other windows that the main window's commands show.
struct MainForms {
  TFormLogin& FormLogin;
};

class TFormMain : public Form {
 public:
  // `forms` may name forms that are created after this one; nothing of them is used before the
  // first command. The browse query of `session` is the table browser's.
  TFormMain(ServerSession& session, const Host& host, SettingsFile& settings, MainForms forms);

  dbkeeper::TreeView TreeView;
  ListView ListViewMain;
  StatusBar StatusBar1;
  Panel Pnl_Main;
  Panel Pnl_SQL;
  Panel Splitter_SQL;

  const std::unique_ptr<PopupMenu> PopupMenu_SQLServer;
  const std::unique_ptr<PopupMenu> PopupMenuServerCfg;
  const std::unique_ptr<PopupMenu> PopupMenu_Databases;
  const std::unique_ptr<PopupMenu> PopupMenu_Table;
  const std::unique_ptr<PopupMenu> PopupMenu_View;
  const std::unique_ptr<PopupMenu> PopupMenu_Procedure;
  const std::unique_ptr<PopupMenu> PopupMenu_Login;
  const std::unique_ptr<PopupMenu> PopupMenu_Users;
  const std::unique_ptr<PopupMenu> PopupMenu_Roles;
  const std::unique_ptr<PopupMenu> PopupMenu_SvRole;
  const std::unique_ptr<PopupMenu> PopupMenu_Job;
  const std::unique_ptr<PopupMenu> PopupMenu_BackUp;
  const std::unique_ptr<PopupMenu> PopupMenu_Process_Lock;
  const std::unique_ptr<PopupMenu> PopupMenu_DB_BackUp;
  const std::unique_ptr<PopupMenu> PopupMenu_Management;
  const std::unique_ptr<PopupMenu> PopupMenu_Minimum;
  const std::unique_ptr<PopupMenu> PopupMenu1;

  // What dialogs and commands see of this window.
  dbkeeper::Workbench& Workbench() { return workbench_; }

  void FormCreate();
  void FormHide();
  // The choice of a system-menu item by its id.
  void SystemCommand(int id);
  // The program-wide handler of every error that no command catches.
  void ApplicationException(const std::exception& error);

  void TreeViewClick();
  void TreeViewKeyUp();
  void TreeViewMouseDown();
  void ListViewMainColumnClick(std::size_t column);
  void ListViewMainDblClick();

  void PM_OnlineHelpClick();
  void PM_ReadmeClick();
  void PM_GotoHomePageClick();
  void PM_DspSysTblClick();
  void EST1Click();
  void PopupMenu_SQLServer_ConnectClick();
  void PopupMenu_SQLServer_DisConnectClick();
  void PopupMenu_SQLServer_StopClick();
  void PopupMenu_SQLServer_OneStopClick();
  void PopupMenuServerCfg_SvrNetCnClick();
  void PopupMenuServerCfg_OdbcAdClick();
  void PopupMenu_Table_CapacityClick();

 private:
  void BuildRoots();
  void ShowApplicationInformation();
  void AppendSystemMenu();
  void OpenProgramFile(const std::string& name);
  void WriteErrorLog(const std::exception& error);
  void HideTableBrowser();
  void BuildServerNodes();
  void ShowConnectionState(bool connected);
  bool ConfirmCaution(const std::string& text);

  ServerSession& session_;
  const Host& host_;
  SettingsFile& settings_;
  MainForms forms_;
  Options options_;
  dbkeeper::Workbench workbench_;
  int sort_direction_ = -1;
};

}  // namespace dbkeeper
