// The dialog that restores a database from a backup set of the history or from a backup file.
#pragma once

#include <cstdint>
#include <string>

#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"

namespace dbkeeper {

// A backup file with what it holds.
struct BackupFile {
  std::string database;
  std::string file;
  std::string log_logical;
  std::string data_logical;
  std::string log_physical;
  std::string data_physical;
};

class TFormRestore : public Form {
 public:
  // `workbench` outlives the form.
  explicit TFormRestore(const Workbench& workbench);

  Edit Edit_DatabaseName{"Edit_DatabaseName", "Database :"};
  CheckBox CheckBox_ChangeName{"CheckBox_ChangeName", "名前を変えてレストアする"};
  Edit Edit_BackupFName{"Edit_BackupFName", "BackupFile :"};
  Button Sbtn_BackupFName{"Sbtn_BackupFName", "..."};
  CheckBox CheckBox_Ow{"CheckBox_Ow", "上書きを許可する"};
  Edit Edit_DatabaseFName{"Edit_DatabaseFName", "DatabaseFile :"};
  Button SBtn_DatabaseFName{"SBtn_DatabaseFName", "..."};
  Edit Edit_LogFName{"Edit_LogFName", "LogFile :"};
  Button SBtn_LogFName{"SBtn_LogFName", "..."};
  Edit Edit_DataName{"Edit_DataName", "Data :"};
  Edit Edit_LogName{"Edit_LogName", "Log :"};
  Button SpeedButton1{"SpeedButton1", "VERIFYONLY"};
  Button SBtn_Update{"SBtn_Update", "OK"};
  Button Sbtn_Cancel{"Sbtn_Cancel", "Cancel"};

  // Prepares a showing for a backup set of the history; below 1, for a file that the operator will
  // name. From the history the session's current database becomes msdb. Throws ServerError.
  void SetUp(const std::string& database, std::int64_t backup_set_id);
  // Prepares a showing for a backup file whose contents are known.
  void SetUp(const BackupFile& backup);

  void Sbtn_BackupFNameClick();
  void SBtn_DatabaseFNameClick();
  void SBtn_LogFNameClick();
  void CheckBox_ChangeNameClick();
  void Edit_DatabaseNameExit();
  // Leaves the session's current database at master. Throws ServerError.
  void SBtn_UpdateClick();
  void Sbtn_CancelClick();
  void SpeedButton1Click();

 private:
  void BeginSetUp(const std::string& database, std::int64_t backup_set_id);
  void LockFiles();
  void ReadBackupSet();
  void ReadBackupFiles();
  bool Complete() const;
  std::string Statement() const;
  // Runs "use master", then puts the statement into the status bar and runs it.
  void RunInMaster(const std::string& statement, const std::string& batch);

  const Workbench& workbench_;
  std::string database_;
  std::int64_t backup_set_id_ = 0;
};

}  // namespace dbkeeper
