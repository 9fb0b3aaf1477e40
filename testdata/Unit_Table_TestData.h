// The dialog that makes up rows of test data for a table, and has them imported.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/workbench/Workbench.h"
#include "controls/FnpNumericEdit.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"
#include "testdata/Patterns.h"
#include "testdata/RowBuilder.h"

namespace dbkeeper {

class TForm_Table_TestData : public Form {
 public:
  // `workbench` outlives the form.
  explicit TForm_Table_TestData(const Workbench& workbench);

  Edit Edit_DataBase{"Edit_DataBase", "DataBase 名 :"};
  Edit Edit_TableName{"Edit_TableName", "Table名 :"};
  // The table's columns with their settings.
  dbkeeper::ListView ListView{"ListView"};

  // The settings of the chosen column.
  Edit Edit_FieldName{"Edit_FieldName", "列名 : "};
  ComboBox CmbBox_Pattern{"CmbBox_Pattern", ComboStyle::kDropDownList, "パターン : "};
  TFnpNumericEdit Fne_Null;
  Label Lbl_Param1{"Lbl_Param1"};
  Label Lbl_Param2{"Lbl_Param2", "～"};
  TFnpNumericEdit Fne_Start;
  TFnpNumericEdit Fne_End;
  DateTimePicker DateTimePicker_Start{"DateTimePicker_Start"};
  DateTimePicker DateTimePicker_End{"DateTimePicker_End"};
  Edit Edit_ParamStr{"Edit_ParamStr"};
  Button Sbtn_FileName{"Sbtn_FileName", "..."};
  Label Lbl_PHelp{"Lbl_PHelp"};
  Button Sbtn_ParamUp{"Sbtn_ParamUp", "更新"};
  Button Sbtn_ParamDel{"Sbtn_ParamDel", "削除"};

  TFnpNumericEdit Fne_Max;
  Button SBtn_Create{"SBtn_Create", "データ生成"};
  Button Sbtn_Bulk_ins{"Sbtn_Bulk_ins", "BCP Insert"};
  Button Sbtn_SaveCfg{"Sbtn_SaveCfg", "設定保存"};
  Button Sbtn_LoadCfg{"Sbtn_LoadCfg", "設定呼出"};
  Button Btn_Close{"Btn_Close", "閉じる"};

  // Prepares a showing for a table. Throws ServerError.
  void SetUp(const std::string& database, const std::string& table);

  void CmbBox_PatternSelect();
  void ListViewSelectItem();
  // Throws ConvertError for a number that is none.
  void Sbtn_ParamUpClick();
  void Sbtn_ParamDelClick();
  void Sbtn_FileNameClick();
  // Writes the data file. Throws FileError and ConvertError; the rows so far are in the file, and
  // the button stays disabled.
  void SBtn_CreateClick();
  void Sbtn_Bulk_insClick();
  // Both throw FileError.
  void Sbtn_SaveCfgClick();
  void Sbtn_LoadCfgClick();
  void Btn_CloseClick() { Close(); }

 private:
  enum class Outcome { kDone, kStopped };

  void ShowEditors(const PatternRow* pattern);
  void ShowParameters(Pattern pattern, const ListItem& column);
  // Counts the lines of the value files that exist.
  void CountValueFiles(ValueFiles& files);
  Outcome WriteRows(ValueFiles& files);
  std::vector<ColumnSettings> Settings() const;
  std::filesystem::path DataFile() const;
  std::filesystem::path SettingsFile() const;

  const Workbench& workbench_;
};

}  // namespace dbkeeper
