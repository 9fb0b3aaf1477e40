#include "app/main/UnitLogin.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 220;
}

std::unique_ptr<QWidget> MakeWindow(TFormLogin& form, const ActionGuard& guard, QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  FieldRows rows(frame.Controls(), kFieldWidth);
  rows.Add(form.Edit_loginame);
  rows.AddPassword(form.Edit_passwd);
  rows.Add(form.ComboBox_SQL_Server);
  rows.Add(form.CheckBox_Windows);
  frame.Add(rows.Grid());
  frame.AddButtons(form.SBtn_Update, form.Sbtn_Cancel);
  return frame.Take();
}

}  // namespace dbkeeper::qt
