// The table designer: a table's columns, indexes, checks and triggers, each on a page of its own
// over one list. A new table is designed in the list and created whole; what is done to an existing
// one is done on the server at once.
//
// One class; its members stand in a source for each page:
//   Unit_Table.cpp       the frame: header, pages, creation of a new table
//   ColumnPage.cpp       columns
//   IndexPage.cpp        indexes and the primary key
//   CheckPage.cpp        check constraints
//   TriggerPage.cpp      triggers
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/workbench/StatementRun.h"
#include "app/workbench/Workbench.h"
#include "catalog/TableDefinition.h"
#include "controls/FnpNumericEdit.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"
#include "controls/Pages.h"
#include "controls/RecordMode.h"
#include "table_designer/ColumnText.h"

namespace dbkeeper {

class TForm_Table : public Form {
 public:
  // `workbench` outlives the form.
  explicit TForm_Table(const Workbench& workbench);

  Edit Edit_TableName{"Edit_TableName", "Table名 :"};
  Edit Edit_DataBase{"Edit_DataBase", "DataBase 名 :"};
  Edit Edit_Description{"Edit_Description", "論理名 :"};
  Memo Edit_Note{"Edit_Note", "説明 :"};
  Button SbtnTblInfoUpdate{"SbtnTblInfoUpdate", "更新"};
  TabControl TabControl1{"TabControl1"};
  // What the chosen page shows.
  dbkeeper::ListView ListView{"ListView"};

  // Columns.
  Panel Pnl_Columns{"Pnl_Columns"};
  Edit Edit_Column_Name{"Edit_Column_Name", "列名 :"};
  ComboBox ComboBox_Column_Type{"ComboBox_Column_Type", ComboStyle::kDropDownList, "ﾃﾞｰﾀ型 :"};
  TFnpNumericEdit Fne_Column_Size;
  TFnpNumericEdit Fne_Column_MinSize;
  CheckBox CheckBox_Column_nullable{"CheckBox_Column_nullable", "Null :", true};
  Edit Edit_Column_Default{"Edit_Column_Default", "Default :"};
  Label Lbl_Column_Default{"Lbl_Column_Default", "例：(0), (Getdate()), ('M')"};
  Label Lbl_Column_Identify{"Lbl_Column_Identify", "Identify :"};
  TFnpNumericEdit Fne_Column_Ide_Start;
  TFnpNumericEdit Fne_Column_Ide_Step;
  Edit Edit_Column_Comment{"Edit_Column_Comment", "Comment :"};
  Memo Edit_Column_Note{"Edit_Column_Note", "Note :"};
  Button SBtn_Columns_New{"SBtn_Columns_New", "新規"};
  Button SBtn_Columns_Update{"SBtn_Columns_Update", "登録"};
  Button SBtn_Columns_Drop{"SBtn_Columns_Drop", "削除"};

  // Indexes.
  Panel Pnl_Index{"Pnl_Index"};
  Edit Edit_IndexName{"Edit_IndexName", "Index名 :"};
  dbkeeper::ListView ListView_Index{"ListView_Index"};
  ComboBox ComboBox_Fields{"ComboBox_Fields"};
  Button Sbtn_Index_Add_Field{"Sbtn_Index_Add_Field", "<<"};
  Button Sbtn_Index_Remove_Field{"Sbtn_Index_Remove_Field", ">>"};
  CheckBox CheckBox_Index_Desc{"CheckBox_Index_Desc", "Desc"};
  Label Lbl_Index_Option{"Lbl_Index_Option", "Option :"};
  CheckBox CheckBox_Index_Unique{"CheckBox_Index_Unique", "unique"};
  CheckBox CheckBox_Index_Clustered{"CheckBox_Index_Clustered", "clustered"};
  CheckBox CheckBox_Index_PrimaryKey{"CheckBox_Index_PrimaryKey", "primary key"};
  Button Sbtn_Index_New{"Sbtn_Index_New", "新規"};
  Button Sbtn_Index_Update{"Sbtn_Index_Update", "登録"};
  Button Sbtn_Index_Drop{"Sbtn_Index_Drop", "削除"};

  // Checks.
  Panel Pnl_Check{"Pnl_Check"};
  Edit Edit_CheckName{"Edit_CheckName", "Check名 :"};
  Memo Memo_Checks{"Memo_Checks"};
  Button SBtn_Check_New{"SBtn_Check_New", "新規"};
  Button SBtn_Check_Update{"SBtn_Check_Update", "登録"};
  Button SBtn_Check_Drop{"SBtn_Check_Drop", "削除"};

  // Triggers.
  Panel Pnl_Triger{"Pnl_Triger"};
  Memo Memo_Trigger{"Memo_Trigger"};
  Button SBtn_Triger_New{"SBtn_Triger_New", "新規"};
  Button SBtn_Triger_Update{"SBtn_Triger_Update", "登録"};
  Button SBtn_Triger_Drop{"SBtn_Triger_Drop", "削除"};

  Button SBtn_Create{"SBtn_Create", "新規作成"};
  Button Btn_Close{"Btn_Close", "閉じる"};

  // Prepares a showing for a new table, or for one that exists, with its note and logical name.
  void SetUp(const std::string& database);
  void SetUp(const std::string& database, const std::string& note, const std::string& description,
             const std::string& table);

  // Each of these throws ServerError, with the fields as they stand.
  void FormShow();
  void FormClose();
  void TabControl1Change();
  void SBtn_CreateClick();
  void SbtnTblInfoUpdateClick();
  void Btn_CloseClick() { Close(); }
  void ListViewSelectItem();
  void ListViewClick();

  void ComboBox_Column_TypeChange();
  void SBtn_Columns_NewClick();
  void SBtn_Columns_UpdateClick();
  void SBtn_Columns_DropClick();

  void Sbtn_Index_NewClick();
  void Sbtn_Index_Add_FieldClick();
  void Sbtn_Index_Remove_FieldClick();
  void Sbtn_Index_UpdateClick();
  void Sbtn_Index_DropClick();

  void SBtn_Check_NewClick();
  void SBtn_Check_UpdateClick();
  void SBtn_Check_DropClick();

  void SBtn_Triger_NewClick();
  void SBtn_Triger_UpdateClick();
  void SBtn_Triger_DropClick();

 private:
  // A page's part in what the frame does.
  struct PageKind {
    std::string_view caption;
    Panel TForm_Table::*panel;
    void (TForm_Table::*show)();    // when its tab is chosen
    void (TForm_Table::*select)();  // when a row of its list is
    void (TForm_Table::*renew)();   // when a click has left no row selected
  };
  static const PageKind kPages[];
  const PageKind& CurrentPage() const { return kPages[TabControl1.TabIndex()]; }

  static std::vector<Page> PagesOf(TForm_Table& form);
  void BeginSetUp(const std::string& database, const std::string& table, Record record);
  Query& Shared() { return workbench_.Session.ADOQuerySystem; }
  std::string UseText() const;
  std::string BracketedTable() const { return "[" + Edit_TableName.Text() + "]"; }
  std::string SelectedCell(std::size_t cell) const;
  void UpdateTableProperty(std::string_view property, const std::string& text);
  // False when the operator cancels.
  bool Drop(const std::string& what, const std::string& statement);
  // Runs what drops the object of that name, where it exists, and makes it anew; then its list.
  void Replace(const StatementRun& run, RecordMode& mode, const std::string& name,
               void (TForm_Table::*list)());
  void ListWhatStands(void (TForm_Table::*list)());

  void BindColumnPage();
  void ShowColumns();
  void SelectColumn();
  void ListTableColumns();
  ColumnFields Fields() const;
  void RegisterDesignedColumn();
  // False when the operator cancels.
  bool AddColumn();
  bool AlterColumn();

  void BindIndexPage();
  void ShowIndexes();
  void ListIndexes();
  void SelectIndex();
  // The table's name stands as it is given.
  std::string DropIndexText(const std::string& table) const;
  std::string CreateIndexText() const;

  void BindCheckPage();
  void ShowChecks();
  void ListChecks();
  void SelectCheck();
  std::string DropCheckText() const;

  void BindTriggerPage();
  void ShowTriggers();
  void ListTriggers();
  void SelectTrigger();

  const Workbench& workbench_;
  Pages pages_;
  RecordMode table_;
  RecordMode column_;
  RecordMode index_;
  RecordMode check_;
  RecordMode trigger_;
  std::vector<ListItem> designed_;  // a new table's columns while another page is shown
  bool columns_shown_ = false;      // the list holds columns
  bool primary_key_chosen_ = false;
  std::vector<TableTrigger> triggers_;  // in the order of their list
};

}  // namespace dbkeeper
