// The main window: the tree of operation categories, the main list, its popup menus and the
// commands behind them.
//
// One header; the members stand in several sources, one for each family of commands:
//   UnitMain.cpp          start-up, the system menu, the error log
//   NodeDispatch.cpp      which list a tree node shows
//   ServerCommands.cpp    connect, disconnect, stop, pause, server tools
//   ListCommands.cpp      sorting, capacity, system tables, check boxes, export
//   DatabaseCommands.cpp  states, backup and restore of databases, processes, jobs on the server
//   QueryCommands.cpp     the query window
//   DropCommands.cpp      what deletes the selected row's object
//   TableBrowser.cpp      the pane that shows the rows of a table
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string>

#include "app/session/ServerSession.h"
#include "app/support/Host.h"
#include "app/support/SettingsFile.h"
#include "app/workbench/Workbench.h"
#include "controls/DataGrid.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"
#include "controls/Menu.h"
#include "controls/Navigator.h"
#include "controls/TreeView.h"

namespace dbkeeper {

class TForm_BackupMedia;
class TForm_Database_Property;
class TFormExecSQL;
class TFormLogin;
class TFormRestore;

// The other windows that the main window's commands show.
struct MainForms {
  TForm_Database_Property& Form_Database_Property;
  TFormExecSQL& FormExecSQL;
  TFormLogin& FormLogin;
  TForm_BackupMedia& Form_BackupMedia;
  TFormRestore& FormRestore;
};

class TFormMain : public Form {
 public:
  // `forms` may name forms that are created after this one; nothing of them is used before the
  // first command. The browse query of `session` is the table browser's.
  TFormMain(ServerSession& session, const Host& host, SettingsFile& settings, MainForms forms);

  dbkeeper::TreeView TreeView{"TreeView"};
  ListView ListViewMain{"ListViewMain"};
  StatusBar StatusBar1{"StatusBar1"};
  Panel Pnl_Main{"Pnl_Main"};
  Panel Pnl_SQL{"Pnl_SQL"};
  Panel Splitter_SQL{"Splitter_SQL"};

  // The table browser's pane.
  Panel Pnl_SQL_Tool{"Pnl_SQL_Tool"};
  Button Sbtn_TableClose{"Sbtn_TableClose", "X"};
  Button Sbtn_TableOpen{"Sbtn_TableOpen", "Open", ButtonKind::kToggle};
  Edit Edit_Open_TableName{"Edit_Open_TableName", "Table :"};
  ComboBox ComboBox_Table_Where{"ComboBox_Table_Where"};
  Button Sbtn_RE{"Sbtn_RE", "Edit", ButtonKind::kToggle};
  Panel Pnl_Navigator{"Pnl_Navigator"};
  Navigator DBNavigator1{"DBNavigator1"};
  Edit Edit_Table_Where{"Edit_Table_Where", "where : "};
  DataGrid DBGrid1{"DBGrid1"};

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
  void PopupMenu_Databases_SQLClick();
  void PopupMenu_Minimum_SQLClick();
  void PopupMenu_Table_SQLClick();

  void PopupMenu_Table_OpenClick();
  void Sbtn_TableOpenClick();
  void Sbtn_TableCloseClick();
  void Sbtn_REClick();
  void ComboBox_Table_WhereChange();
  void PopupMenu_Table_Select_ChkBoxClick();
  void PopupMenu_Minimum_CSV_OutClick();

  void PopupMenu_Databases_CreateClick();
  void PopupMenu_Databases_AttachClick();
  void PopupMenu_Databases_PropertyClick();
  // One for the four items below "OnLine", which it tells apart by their captions.
  void PopupMenu_Databases_OnLine_MULTI_RWClick(const MenuItem& sender);
  void PopupMenu_Databases_OffLineClick();
  void PopupMenu_Databases_DetachClick();
  void PopupMenu_Databases_ShrinkClick();
  void PopupMenu_Databases_DropClick();
  void PopupMenu_Databases_Backup_BackupClick();
  void PopupMenu_Databases_Backup_RestoreClick();
  void PopupMenu_DB_BackUp_RestoreClick();
  void PopupMenu_DB_BackUp_Direct_RestoreClick();
  void PopupMenu_DB_BackUp_Drop_LogClick();
  void PopupMenu_BackUp_CreateClick();
  void PopupMenu_Process_Lock_KillClick();
  void PopupMenu_Job_AddJobClick();
  void PopupMenu_Job_DeleteJobClick();

  void PopupMenu_Table_DropClick();
  void PopupMenu_View_DropClick();
  void PopupMenu_Procedure_DropClick();
  void PopupMenu_Login_dropClick();
  void PopupMenu_BackUp_DropClick();
  void PopupMenu_Job_DropClick();
  void PopupMenu_Users_DropClick();
  void PopupMenu_Roles_DropClick();

 private:
  void BuildRoots();
  void ShowApplicationInformation();
  void AppendSystemMenu();
  void OpenProgramFile(const std::string& name);
  void WriteErrorLog(const std::exception& error);
  void PrepareTableBrowser();
  void HideTableBrowser();
  void OpenBrowseQuery();
  void ShowBrowseState();
  void ShowFilterRow(bool shown);
  // Brings the pane in line with a query that an error or a lost connection has closed.
  void SettleTableBrowser();
  void BuildServerNodes();
  void ShowConnectionState(bool connected);

  ServerSession& session_;
  const Host& host_;
  SettingsFile& settings_;
  MainForms forms_;
  Options options_;
  dbkeeper::Workbench workbench_;
  int sort_direction_ = -1;
};

}  // namespace dbkeeper
