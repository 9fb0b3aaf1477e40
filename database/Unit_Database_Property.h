// The dialog that creates a database or attaches the files of one.
#pragma once

#include <string>
#include <string_view>

#include "app/workbench/Workbench.h"
#include "controls/FnpNumericEdit.h"
#include "controls/Form.h"
#include "controls/Inputs.h"

namespace dbkeeper {

// Whether the database's files are made or exist already.
enum class DatabaseFiles { kAttach, kCreate };

class TForm_Database_Property : public Form {
 public:
  // `workbench` outlives the form.
  explicit TForm_Database_Property(const Workbench& workbench);

  Edit Edit_DatabaseName{"Edit_DatabaseName", "名前 :"};
  Edit Edit_DataFileName{"Edit_DataFileName", "データファイル :"};
  Button Button3{"Button3", "..."};
  Edit Edit_LogFileName{"Edit_LogFileName", "ログファイル :"};
  Button Button4{"Button4", "..."};

  // The sizing group of one file.
  Panel Pnl_MDF{"Pnl_MDF"};
  TFnpNumericEdit Fne_Mdf_Init_Size;
  CheckBox CheckBox_Mdf_AutoGrowth{"CheckBox_Mdf_AutoGrowth", "自動拡張", true};
  RadioGroup RadioGroup_Mdf_GrowthType{"RadioGroup_Mdf_GrowthType"};
  TFnpNumericEdit Fne_Mdf_FileGrowth;
  TFnpNumericEdit Fne_Mdf_Max_Size;

  Panel Pnl_LDF{"Pnl_LDF"};
  TFnpNumericEdit Fne_Ldf_Init_Size;
  CheckBox CheckBox_Ldf_AutoGrowth{"CheckBox_Ldf_AutoGrowth", "自動拡張", true};
  RadioGroup RadioGroup_Ldf_GrowthType{"RadioGroup_Ldf_GrowthType"};
  TFnpNumericEdit Fne_Ldf_FileGrowth;
  TFnpNumericEdit Fne_Ldf_Max_Size;

  // Beside the fields of both groups.
  Label Label_InitSizeUnit{"Label_InitSizeUnit", "(MB)"};
  Label Label_MaxSizeUnit{"Label_MaxSizeUnit", "(MB) 0の場合、無制限"};

  Button SBtn_Update{"SBtn_Update", "OK"};
  Button SBtn_Cancel{"SBtn_Cancel", "Cancel"};

  // Prepares a showing: name and files are empty, the sizes stay as they were left.
  void SetUp(DatabaseFiles files);

  void Button3Click();
  void Button4Click();
  // Throws ServerError, with the dialog still open; ConvertError where a size is no number.
  void SBtn_UpdateClick();
  void SBtn_CancelClick();

 private:
  std::string ChooseFile(const std::string& present, const std::string& filter,
                         std::string_view suffix) const;
  void Create();
  void Attach();

  const Workbench& workbench_;
  DatabaseFiles files_ = DatabaseFiles::kCreate;
};

}  // namespace dbkeeper
