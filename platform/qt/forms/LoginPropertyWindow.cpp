#include <QFontMetrics>
#include <QLabel>

#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"
#include "security/Unit_Login_Property.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 220;
constexpr int kDescriptionLines = 6;
}  // namespace

std::unique_ptr<QWidget> MakeWindow(TForm_Login_Property& form, const ActionGuard& guard,
                                    QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  FieldRows rows(frame.Controls(), kFieldWidth);
  rows.Add(form.Edit_loginame);
  rows.AddPassword(form.Edit_passwd1);
  rows.AddPassword(form.Edit_passwd2);
  rows.Add(form.CheckBox_Windows);
  // Room for all lines from the beginning, so that nothing jumps.
  QLabel* const description = rows.Add(form.Lbl_Description);
  description->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  description->setMinimumHeight(kDescriptionLines * description->fontMetrics().lineSpacing());
  frame.Add(rows.Grid());
  frame.AddButtons(form.SBtn_Update, form.Sbtn_Cancel);
  return frame.Take();
}

}  // namespace dbkeeper::qt
