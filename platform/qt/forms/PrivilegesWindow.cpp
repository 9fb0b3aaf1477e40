#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>

#include "platform/qt/Look.h"
#include "platform/qt/binders/ListWidget.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"
#include "security/Unit_Privileges.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 360;
constexpr int kListWidth = 500;
constexpr int kListHeight = 220;
}  // namespace

std::unique_ptr<QWidget> MakeWindow(TForm_Privileges& form, const ActionGuard& guard,
                                    QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  const Binder& binder = frame.Controls();
  FieldRows rows(binder, kFieldWidth);
  rows.Add(form.Edit_Database);
  rows.Add(form.Edit_ObjectName);
  rows.Add(form.Edit_User);
  frame.Add(rows.Grid());
  auto* groups = new QHBoxLayout;
  for (RadioGroup* group :
       {&form.RadioGroup_Select, &form.RadioGroup_Insert, &form.RadioGroup_Update,
        &form.RadioGroup_Exec, &form.RadioGroup_Delete}) {
    groups->addWidget(binder.Make(*group));
  }
  frame.Add(groups);
  ListWidget* const users = binder.Make(form.ListView);
  users->setMinimumSize(Scaled(*users, kListWidth), Scaled(*users, kListHeight));
  frame.Add(users);
  frame.Add(binder.Make(form.Lbl_Notice));
  frame.AddButtons(form.SpeedButton2, form.SpeedButton1);
  return frame.Take(DialogSize::kSizable);
}

}  // namespace dbkeeper::qt
