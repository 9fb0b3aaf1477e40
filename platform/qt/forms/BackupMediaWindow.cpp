#include "database/Unit_BackupMedia.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 320;
}

std::unique_ptr<QWidget> MakeWindow(TForm_BackupMedia& form, const ActionGuard& guard,
                                    QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  FieldRows rows(frame.Controls(), kFieldWidth);
  rows.Add(form.Edit_Name);
  rows.Add(form.Edit_FileName, form.Button3);
  frame.Add(rows.Grid());
  frame.AddButtons(form.SBtn_Update, form.Sbtn_Cancel);
  return frame.Take();
}

}  // namespace dbkeeper::qt
