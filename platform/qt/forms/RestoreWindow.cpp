#include "database/Unit_Restore.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 400;
}

std::unique_ptr<QWidget> MakeWindow(TFormRestore& form, const ActionGuard& guard, QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  FieldRows rows(frame.Controls(), kFieldWidth);
  rows.Add(form.Edit_DatabaseName);
  rows.Add(form.CheckBox_ChangeName);
  rows.AddGap();
  rows.Add(form.Edit_BackupFName, form.Sbtn_BackupFName);
  rows.Add(form.CheckBox_Ow);
  rows.AddGap();
  rows.Add(form.Edit_DatabaseFName, form.SBtn_DatabaseFName);
  rows.Add(form.Edit_LogFName, form.SBtn_LogFName);
  rows.AddGap();
  rows.Add(form.Edit_DataName);
  rows.Add(form.Edit_LogName);
  frame.Add(rows.Grid());
  frame.AddButtons(form.SBtn_Update, form.Sbtn_Cancel, {&form.SpeedButton1});
  return frame.Take();
}

}  // namespace dbkeeper::qt
