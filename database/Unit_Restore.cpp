#include "database/Unit_Restore.h"

#include <string_view>

#include "app/support/TextHelpers.h"
#include "app/workbench/StatementRun.h"

namespace dbkeeper {

namespace {

constexpr const char* kBackupFilter = "Backupﾌｧｲﾙ(*.bak)|*.bak|全てのﾌｧｲﾙ(*.*)|*.*";
constexpr const char* kDataFilter = "ﾃﾞｰﾀﾍﾞｰｽ･ﾌｧｲﾙ(*.mdf)|*.mdf|全てのﾌｧｲﾙ(*.*)|*.*";
constexpr const char* kLogFilter = "ﾛｸﾞ･ﾌｧｲﾙ(*.ldf)|*.ldf|全てのﾌｧｲﾙ(*.*)|*.*";

// Stands for the old name between the two replacements of a renaming.
constexpr std::string_view kBetween = "@";

// The path with the old name replaced by the new one. An "@" that stands in the path is replaced as
// well. The second replacement passes once, so a new name may hold "@" or the old name.
std::string Renamed(std::string path, const std::string& old_name, const std::string& new_name) {
  if (!old_name.empty() && old_name != kBetween) {
    path = ReplaceAll(std::move(path), old_name, kBetween);
  }
  std::string renamed;
  for (const char c : path) {
    if (c == kBetween.front()) {
      renamed += new_name;
    } else {
      renamed += c;
    }
  }
  return renamed;
}

}  // namespace

TFormRestore::TFormRestore(const Workbench& workbench)
    : Form("FormRestore"), workbench_(workbench) {
  Caption = "レストア";
  for (Edit* edit : {&Edit_DatabaseName, &Edit_BackupFName, &Edit_DatabaseFName, &Edit_LogFName,
                     &Edit_DataName, &Edit_LogName}) {
    edit->Lock(true);
  }
  for (Button* button : {&Sbtn_BackupFName, &SBtn_DatabaseFName, &SBtn_LogFName}) {
    button->Enabled = false;
  }
  CheckBox_Ow.Visible = false;
  SpeedButton1.Visible = false;
  Sbtn_BackupFName.OnClick = [this] { Sbtn_BackupFNameClick(); };
  SBtn_DatabaseFName.OnClick = [this] { SBtn_DatabaseFNameClick(); };
  SBtn_LogFName.OnClick = [this] { SBtn_LogFNameClick(); };
  CheckBox_ChangeName.OnClick = [this] { CheckBox_ChangeNameClick(); };
  Edit_DatabaseName.OnExit = [this] { Edit_DatabaseNameExit(); };
  SpeedButton1.OnClick = [this] { SpeedButton1Click(); };
  SBtn_Update.OnClick = [this] { SBtn_UpdateClick(); };
  Sbtn_Cancel.OnClick = [this] { Sbtn_CancelClick(); };
}

// Deliberately leaves SBtn_Update alone: after a restore that failed it stays disabled until the
// program is started anew.
void TFormRestore::BeginSetUp(const std::string& database, std::int64_t backup_set_id) {
  database_ = database;
  backup_set_id_ = backup_set_id;
  Edit_DatabaseName.Lock(true);
  CheckBox_ChangeName.Checked = false;
  CheckBox_Ow.Checked = false;
  Edit_DatabaseName.Text = database;
}

void TFormRestore::SetUp(const std::string& database, std::int64_t backup_set_id) {
  BeginSetUp(database, backup_set_id);
  if (backup_set_id < 1) {
    // Deliberately a dead end after a fresh start: the fields of the two files keep their state.
    CheckBox_ChangeName.Enabled = false;
    Sbtn_BackupFName.Enabled = true;
    Edit_BackupFName.Lock(false);
    for (Edit* edit : {&Edit_BackupFName, &Edit_DatabaseFName, &Edit_LogFName}) edit->Text = "";
    return;
  }
  Sbtn_BackupFName.Enabled = false;
  Edit_BackupFName.Lock(true);
  ReadBackupSet();
  LockFiles();
}

void TFormRestore::SetUp(const BackupFile& backup) {
  BeginSetUp(backup.database, 0);
  Sbtn_BackupFName.Enabled = false;
  Edit_BackupFName.Lock(true);
  Edit_BackupFName.Text = backup.file;
  Edit_LogName.Text = backup.log_logical;
  Edit_DataName.Text = backup.data_logical;
  Edit_LogFName.Text = backup.log_physical;
  Edit_DatabaseFName.Text = backup.data_physical;
  LockFiles();
}

void TFormRestore::LockFiles() {
  Edit_DatabaseFName.Lock(true);
  Edit_LogFName.Lock(true);
  CheckBox_ChangeName.Enabled = true;
  SBtn_DatabaseFName.Enabled = false;
  SBtn_LogFName.Enabled = false;
}

void TFormRestore::ReadBackupSet() {
  const BusyScope busy(workbench_.Host.windows);
  Query& query = workbench_.Session.ADOQuerySystem;
  const std::string id = std::to_string(backup_set_id_);
  query.Command("use msdb");
  query.Open(
      "select physical_device_name  from backupset           left join backupmediafamily"
      "               on backupset.media_set_id = backupmediafamily.media_set_id"
      " where backup_set_id = " +
      id);
  Edit_BackupFName.Text =
      query.Eof() ? std::string() : query.FieldByName("physical_device_name").AsString();
  Edit_DatabaseFName.Text = "";
  Edit_LogFName.Text = "";
  query.Open("select physical_name,file_type,logical_name  from backupfile where backup_set_id = " +
             id + " order by file_number");
  ReadBackupFiles();
  query.Close();
}

// Of several files of a type the last one counts.
void TFormRestore::ReadBackupFiles() {
  Query& query = workbench_.Session.ADOQuerySystem;
  for (; !query.Eof(); query.Next()) {
    const std::string physical = query.FieldByName("physical_name").AsString();
    const std::string type = query.FieldByName("file_type").AsString();
    const std::string logical = Trim(query.FieldByName("logical_name").AsString());
    if (type == "D") {
      Edit_DataName.Text = logical;
      Edit_DatabaseFName.Text = physical;
    } else if (type == "L") {
      Edit_LogName.Text = logical;
      Edit_LogFName.Text = physical;
    }
  }
}

// A chooser that is cancelled empties its field.
void TFormRestore::Sbtn_BackupFNameClick() {
  Edit_BackupFName.Text =
      workbench_.Host.dialogs.OpenFile({kBackupFilter, "", ""}).value_or(std::string());
}

void TFormRestore::SBtn_DatabaseFNameClick() {
  Edit_DatabaseFName.Text =
      workbench_.Host.dialogs.OpenFile({kDataFilter, Edit_DatabaseFName.Text, ""})
          .value_or(std::string());
}

void TFormRestore::SBtn_LogFNameClick() {
  Edit_LogFName.Text = workbench_.Host.dialogs.OpenFile({kLogFilter, Edit_LogFName.Text, ""})
                           .value_or(std::string());
}

// One way for this showing: the box that was checked cannot be unchecked.
void TFormRestore::CheckBox_ChangeNameClick() {
  if (!CheckBox_ChangeName.Checked) return;
  for (Edit* edit : {&Edit_DatabaseName, &Edit_DatabaseFName, &Edit_LogFName}) edit->Lock(false);
  SBtn_DatabaseFName.Enabled = true;
  SBtn_LogFName.Enabled = true;
  CheckBox_ChangeName.Enabled = false;
}

// The old name stays the one of the set-up.
void TFormRestore::Edit_DatabaseNameExit() {
  const std::string& name = Edit_DatabaseName.Text;
  if (!CheckBox_ChangeName.Checked || name.empty()) return;
  for (Edit* edit : {&Edit_DatabaseFName, &Edit_LogFName}) {
    edit->Text = Renamed(edit->Text, database_, name);
  }
}

bool TFormRestore::Complete() const {
  for (const Edit* edit :
       {&Edit_DatabaseName, &Edit_BackupFName, &Edit_DatabaseFName, &Edit_LogFName}) {
    if (edit->Text().empty()) return false;
  }
  return true;
}

std::string TFormRestore::Statement() const {
  const std::string name = Edit_DatabaseName.Text;
  const std::string file = Edit_BackupFName.Text;
  const std::string replace = CheckBox_Ow.Checked ? ", replace" : "";
  if (!CheckBox_ChangeName.Checked) {
    return "restore database [" + name + "]\r\n" +  //
           " from disk = '" + file + "'" + replace;
  }
  // The brackets around the data file's target, and none around the log's, are deliberate:
  // operators know both forms from the scripts that they keep.
  return "restore database [" + name + "]\r\n" +          //
         "   from disk = '" + file + "'\r\n" + replace +  //
         "   with move '" + Edit_DataName.Text() + "' to '[" + Edit_DatabaseFName.Text() +
         "]',\r\n" +  //
         "        move '" + Edit_LogName.Text() + "' to '" + Edit_LogFName.Text() + "'";
}

void TFormRestore::SBtn_UpdateClick() {
  if (!Complete()) return workbench_.Host.dialogs.ShowMessage("NG:");
  if (!workbench_.ConfirmCaution("データベース「" + Edit_DatabaseName.Text() +
                                 "」を復元してもよろしいですか?\r"
                                 "バックアップ時点に戻りますので、\r"
                                 "現在のデータやデータベース構造は失われてしまいます。")) {
    return;
  }
  workbench_.Status.SimpleText = " *";
  SBtn_Update.Enabled = false;
  // The restore goes out in one batch with a second "use master", so that it cannot run in the
  // database that it replaces.
  const std::string statement = Statement();
  RunInMaster(statement, "use master\r\n" + statement);
  SBtn_Update.Enabled = true;
}

void TFormRestore::SpeedButton1Click() {
  const std::string statement = "restore verifyonly  from disk = '" + Edit_BackupFName.Text() + "'";
  RunInMaster(statement, statement);
}

void TFormRestore::RunInMaster(const std::string& statement, const std::string& batch) {
  RunStatements(workbench_, {.use = "use master",
                             .statements = {batch},
                             .status = statement,
                             .rule = StatusRule::kBefore});
}

void TFormRestore::Sbtn_CancelClick() { Close(); }

}  // namespace dbkeeper
