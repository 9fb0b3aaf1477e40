#include <QBoxLayout>
#include <QGroupBox>

#include "platform/qt/Look.h"
#include "platform/qt/binders/ListWidget.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"
#include "security/Unit_Role.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 220;
constexpr int kListWidth = 330;
constexpr int kListHeight = 220;
}  // namespace

std::unique_ptr<QWidget> MakeWindow(TFormRole& form, const ActionGuard& guard, QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  const Binder& binder = frame.Controls();
  FieldRows rows(binder, kFieldWidth);
  rows.Add(form.Edit_Database);
  rows.Add(form.Edit_RoleName);
  rows.Add(form.Edit_User);
  QGroupBox* const choices = rows.Add(form.RadioGroup_Role);
  static_cast<QBoxLayout*>(choices->layout())->setDirection(QBoxLayout::LeftToRight);
  frame.Add(rows.Grid());
  ListWidget* const members = binder.Make(form.ListView);
  members->setMinimumSize(Scaled(*members, kListWidth), Scaled(*members, kListHeight));
  frame.Add(members);
  frame.AddButtons(form.SBtn_Update, form.SBtn_Close);
  return frame.Take(DialogSize::kSizable);
}

}  // namespace dbkeeper::qt
