#include <QLabel>

#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"
#include "security/Unit_User.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 260;
}

std::unique_ptr<QWidget> MakeWindow(TForm_User& form, const ActionGuard& guard, QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  FieldRows rows(frame.Controls(), kFieldWidth);
  rows.Add(form.Edit_Database);
  rows.Add(form.CmbBox_Login);
  rows.AddGap();
  rows.Add(form.Lbl_Note);
  frame.Add(rows.Grid());
  frame.AddButtons(form.SBtn_Update, form.Sbtn_Cancel);
  return frame.Take();
}

}  // namespace dbkeeper::qt
