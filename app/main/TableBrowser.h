// The pane below the main list: the rows of one table or view, a filter, and editing on demand.
#pragma once

#include <string>

#include "app/workbench/GridPane.h"
#include "app/workbench/Workbench.h"
#include "controls/DataGrid.h"
#include "controls/Inputs.h"
#include "controls/Navigator.h"

namespace dbkeeper {

class TableBrowser {
 public:
  // The browse query of the workbench's session is this pane's. `workbench` outlives it.
  explicit TableBrowser(const Workbench& workbench);
  TableBrowser(const TableBrowser&) = delete;
  TableBrowser& operator=(const TableBrowser&) = delete;

  Panel Pnl_SQL{"Pnl_SQL"};
  Panel Splitter_SQL{"Splitter_SQL"};
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

  // Shows the table or view of the selected row. Nothing happens without one.
  void OpenSelected();
  // Closes the query and takes the pane away.
  void Hide();
  // Brings the pane in line with a query that an error or a lost connection has closed.
  void Settle();
  // Gives up what is being edited and closes the query; the pane stays.
  void Abandon();

  void Sbtn_TableOpenClick();
  void Sbtn_TableCloseClick();
  void Sbtn_REClick();
  void ComboBox_Table_WhereChange();

 private:
  void OpenQuery();
  void ShowState();
  void ShowFilterRow(bool shown);

  const Workbench& workbench_;
  BrowseQuery& query_;
  GridPane pane_;
};

}  // namespace dbkeeper
