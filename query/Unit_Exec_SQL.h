// The query window: SQL texts are run against a chosen database, their result is shown, counted,
// exported and edited, and the last texts are stepped through.
//
// One header; the members stand in several sources, one for each family of commands:
//   Unit_Exec_SQL.cpp      the window, the database, running, the history
//   ResultCommands.cpp     count, export, edit mode, large values
//   ScriptCommands.cpp     script files and their steps, templates
//   EasySqlCommands.cpp    the builder of skeleton statements
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/session/Query.h"
#include "app/session/RowStore.h"
#include "app/session/RowView.h"
#include "app/workbench/GridPane.h"
#include "app/workbench/Workbench.h"
#include "controls/DataGrid.h"
#include "controls/FnpNumericEdit.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/Menu.h"
#include "controls/Navigator.h"
#include "query/EasySql.h"
#include "query/MessageLog.h"
#include "query/SqlHistory.h"
#include "query/TemplateStore.h"
#include "query/UnitChooseTable.h"

namespace dbkeeper {

class TFormExecSQL : public Form {
 public:
  explicit TFormExecSQL(const Workbench& workbench);
  ~TFormExecSQL() override;

  // Tool bar.
  Button Sbtn_Select{"Sbtn_Select", "Open", ButtonKind::kToggle};
  Button SpeedButton3{"SpeedButton3", "Exec"};
  Button Sbtn_SQL_Log_Back{"Sbtn_SQL_Log_Back", "↑"};
  Button Sbtn_SQL_Log_Forward{"Sbtn_SQL_Log_Forward", "↓"};
  Button Sbtn_Count{"Sbtn_Count", "Count"};
  Button SpeedButton7{"SpeedButton7", "Export"};
  Button Sbtn_EasySQL{"Sbtn_EasySQL", "EasySQL", ButtonKind::kToggle};
  Button Sbtn_Template{"Sbtn_Template", "ﾃﾝﾌﾟﾚｰﾄ", ButtonKind::kToggle};
  Button Sbtn_ServerMessage{"Sbtn_ServerMessage", "Message", ButtonKind::kToggle};
  Button SBtn_RE{"SBtn_RE", "Edit", ButtonKind::kToggle};
  Navigator DBNavigator1{"DBNavigator1"};
  // The strip at the right end, with the navigator and the database.
  Panel Panel_ToolRight{"Panel_ToolRight"};
  ComboBox ComboBox_DatabaseName{"ComboBox_DatabaseName", ComboStyle::kDropDownList, "DB :"};

  // Beside it: the server that the texts go to; empty without a connection.
  Label Label_Server{"Label_Server"};

  // Template strip.
  Panel Panel_Template{"Panel_Template"};
  ComboBox CmbBox_Template{"CmbBox_Template", ComboStyle::kEditable};
  Button Sbtn_Template_Load{"Sbtn_Template_Load", "呼出し"};
  Button Sbtn_Template_Save{"Sbtn_Template_Save", "保存"};
  Button Sbtn_Template_Serch{"Sbtn_Template_Serch", "検索>>"};

  // Step strip.
  Panel Panel_SQL_CmdSet{"Panel_SQL_CmdSet"};
  Button Sbtn_TableClose{"Sbtn_TableClose", "X"};
  ComboBox CmbBox_CmdSet{"CmbBox_CmdSet", ComboStyle::kDropDownList};
  Button SBtn_CmdSetSet{"SBtn_CmdSetSet", "セット"};

  Memo MemoSQL{"MemoSQL"};
  // Beside the editor's own commands.
  PopupMenu PopupMenu_Memo{"PopupMenu_Memo"};
  // Whether files dropped from the desktop are taken.
  Property<bool> AcceptsFiles{false};

  DataGrid DBGrid1{"DBGrid1"};
  PopupMenu PopupMenu_Grid{"PopupMenu_Grid"};
  Panel Splitter_ServerMessage{"Splitter_ServerMessage"};
  Memo MemoServerMessage{"MemoServerMessage"};

  // Builder of skeleton statements.
  Panel Panel_EasySQL{"Panel_EasySQL"};
  Panel Splitter_EasySQL{"Splitter_EasySQL"};
  Button Sbtn_EasySQL_Get_Columns{"Sbtn_EasySQL_Get_Columns", "ﾚｲｱｳﾄ取得"};
  ComboBox ComboBox_EasySQL_Mode{"ComboBox_EasySQL_Mode"};
  Button Sbtn_EasySQL_Select{"Sbtn_EasySQL_Select", "<< 項目"};
  Button Sbtn_EasySQL_Where{"Sbtn_EasySQL_Where", "<< 条件"};
  Button Sbtn_EasySQL_OrderBy{"Sbtn_EasySQL_OrderBy", "<< 並順"};
  Button Sbtn_EasySQL_Clear{"Sbtn_EasySQL_Clear", "ｸﾘｱ >>"};
  TFnpNumericEdit Fne_EasySQL_Top;
  CheckListBox CheckListBox_EasySQL{"CheckListBox_EasySQL"};
  TFormChooseTable FormChooseTable;

  // Fills the list of databases, chooses one, and makes it the session's current one. Throws
  // ServerError when it cannot be used.
  void OpenForDatabase(const std::string& database);
  // The same for a node's list of tables: an empty editor, the builder shown, and where a table is
  // selected its columns in it.
  void OpenForTables(const std::string& database);
  // Another server, or with an empty name none, is connected: what came from the one before closes
  // and its databases go.
  void ShowServer(const std::string& server);
  // Closes the result and puts a text into the editor.
  void ShowText(const std::string& text);
  // Runs the editor's text as the Open button does, whether a result is open already or not.
  void RunOpen();
  // What the desktop drops on the window; the first file counts. Throws FileError.
  void FilesDropped(const std::vector<std::string>& files);

  void FormCreate() override;
  void FormShow();
  void FormClose();
  void FormDestroy();
  void ComboBox_DatabaseNameChange();
  void Sbtn_SelectClick();
  void SpeedButton3Click();
  void Sbtn_SQL_Log_BackClick();
  void Sbtn_SQL_Log_ForwardClick();
  void Sbtn_CountClick();
  void SpeedButton7Click();
  void SBtn_REClick();
  void Sbtn_ServerMessageClick();
  void Sbtn_TableCloseClick();
  void SBtn_CmdSetSetClick();
  void PopupMenu_Memo_OpenClick();
  void Sbtn_TemplateClick();
  void Sbtn_Template_SaveClick();
  void Sbtn_Template_LoadClick();
  void Sbtn_Template_SerchClick();
  void PopupMenu_Grid_Blob_LoadClick();
  void PopupMenu_Grid_Blob_SaveClick();
  void Sbtn_EasySQLClick();
  void Sbtn_EasySQL_Get_ColumnsClick();
  void Sbtn_EasySQL_SelectClick();
  void Sbtn_EasySQL_WhereClick();
  void Sbtn_EasySQL_OrderByClick();
  void Sbtn_EasySQL_ClearClick();

 private:
  void JoinEvents();
  void BuildMenus();
  // Runs batches without rows, each one whatever became of those before, and gives the rows that
  // they affected. Throws ServerError with what the failed ones were told.
  std::int64_t RunBatches(std::span<const std::string> batches);
  // Runs opened_sql_, after what goes before it, and shows its result; false when it gives none.
  // What it throws, and false, leave the Open button released.
  bool OpenResult(std::span<const std::string> before = {});
  // Null when the text gives no result.
  std::unique_ptr<RowStore> ReadResult();
  void CloseResult();
  void ReleaseOpen();
  void SetToEditor(const std::vector<std::string>& lines);
  void RecordHistory();
  // Runs `run` with what the server says about it going to the message pane.
  void Logged(const std::string& sql, const std::function<void()>& run);
  void NoteMessages();
  void ShowMessages();
  std::size_t SelectedField() const;
  void UseDatabase(const std::string& database);
  // Empties the builder where it holds columns of another database than the chosen one.
  void SettleBuilder();
  bool TemplateNameUsable();
  std::optional<std::string> SelectedTable() const;
  std::optional<std::string> AskForTable();
  void GetColumns(const std::string& table);
  easy_sql::Action EasySqlAction() const;
  easy_sql::Columns TickedColumns() const;

  const Workbench& workbench_;
  ServerSession& session_;
  const Host& host_;
  Query query_;
  RowView rows_;
  GridPane pane_;
  SqlHistory history_;
  MessageLog messages_;
  TemplateStore templates_;
  std::string opened_sql_;
  std::string dropped_file_;
  std::string easy_sql_table_;
  std::string easy_sql_database_;  // where the table stands
};

}  // namespace dbkeeper
