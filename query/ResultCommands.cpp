// What is done with an open result: count, export, edit mode, large values.

#include <cstddef>
#include <optional>

#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/Hexadecimal.h"
#include "app/support/Messages.h"
#include "query/QueryMessages.h"
#include "query/ResultExport.h"
#include "query/Unit_Exec_SQL.h"

namespace dbkeeper {

namespace {

// Deliberately fixed and never asked for: operators put files there by hand. Where there are no
// drive letters, the files of these names stand in the program's folder.
constexpr const char* kBlobLoadFile = "D:\\TEST.bmp";
constexpr const char* kBlobSaveFile = "D:\\TEST2.bmp";
constexpr std::size_t kLongestBlob = std::size_t{256} << 20;

}  // namespace

void TFormExecSQL::Sbtn_CountClick() {
  Caption = "RecordCount : " + std::to_string(rows_.RowCount().Rows);
}

void TFormExecSQL::SpeedButton7Click() {
  const auto file = host_.dialogs.SaveFile(
      {"CSVﾌｧｲﾙ(*.csv)|*.csv|ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*", "", ""});
  if (!file) return;
  if (!rows_.Active()) throw SessionError(std::string(messages::kNoResult));
  std::optional<std::string> lacking;
  {
    const BusyScope busy(host_.windows);
    lacking = ExportResult(rows_, PathOf(*file), host_);
  }
  // A row that is being changed is neither in the file nor written, nor left.
  if (rows_.State() == GridState::kBrowse) rows_.First();
  if (lacking) {
    host_.dialogs.ShowMessage(messages::Fill(messages::kExportedAsUtf8, *lacking));
  }
}

// The lock mode is that of the result opened next.
void TFormExecSQL::SBtn_REClick() { pane_.FollowSwitch(); }

std::size_t TFormExecSQL::SelectedField() const {
  const int column = DBGrid1.CurrentColumn;
  if (!rows_.Active() || column < 0 || rows_.CurrentRow() < 0) {
    throw SessionError(std::string(messages::kNoResult));
  }
  return static_cast<std::size_t>(column);
}

void TFormExecSQL::PopupMenu_Grid_Blob_LoadClick() {
  const std::size_t field = SelectedField();
  rows_.Edit();
  const std::string bytes = ReadFile(workbench_.ProgramFolder / kBlobLoadFile, kLongestBlob);
  if (rows_.Fields()[field].kind == FieldKind::kBinary) {
    rows_.SetValue(field, ToHexadecimal(bytes));
  } else {
    const auto text = host_.code_page.ToUtf8(bytes);
    if (!text) throw FileError(messages::Fill(messages::kNotText, kBlobLoadFile));
    rows_.SetValue(field, *text);
  }
  rows_.Post();
}

void TFormExecSQL::PopupMenu_Grid_Blob_SaveClick() {
  const std::size_t field = SelectedField();
  const std::string value(rows_.Value(rows_.CurrentRow(), field).value_or(""));
  const bool binary = rows_.Fields()[field].kind == FieldKind::kBinary;
  ReplaceFile(host_.disk, workbench_.ProgramFolder / kBlobSaveFile,
              binary ? FromHexadecimal(value) : ToAnsi(host_.code_page, value));
}

}  // namespace dbkeeper
