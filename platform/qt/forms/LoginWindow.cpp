#include "platform/qt/forms/LoginWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "platform/qt/FormWindow.h"
#include "platform/qt/Look.h"
#include "platform/qt/binders/Binder.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 220;
}

std::unique_ptr<QWidget> MakeLoginWindow(TFormLogin& form, const ActionGuard& guard,
                                         QWidget* owner) {
  auto window = std::make_unique<FormDialog>(form, guard, owner);
  window->setObjectName("FormLogin");
  const Binder binder(guard, *window);

  auto* login = binder.Make(form.Edit_loginame, "Edit_loginame");
  auto* password = binder.MakePassword(form.Edit_passwd, "Edit_passwd");
  auto* server = binder.Make(form.ComboBox_SQL_Server, "ComboBox_SQL_Server");
  auto* windows_box = binder.Make(form.CheckBox_Windows, "CheckBox_Windows");
  auto* ok = binder.Make(form.SBtn_Update, "SBtn_Update");
  auto* cancel = binder.Make(form.Sbtn_Cancel, "Sbtn_Cancel");
  window->SetDefaultButton(*ok);
  window->SetCancelButton(*cancel);

  auto* password_label = binder.Make(form.Edit_passwd.EditLabel, "Edit_passwd_Label");
  auto* fields = new QGridLayout;
  fields->addWidget(binder.Make(form.Edit_loginame.EditLabel, "Edit_loginame_Label"), 0, 0);
  fields->addWidget(login, 0, 1);
  fields->addWidget(password_label, 1, 0);
  fields->addWidget(password, 1, 1);
  fields->addWidget(binder.Make(form.ComboBox_SQL_Server.EditLabel, "ComboBox_SQL_Server_Label"), 2,
                    0);
  fields->addWidget(server, 2, 1);
  fields->addWidget(windows_box, 3, 1);
  fields->setColumnMinimumWidth(1, Scaled(*window, kFieldWidth));
  // A hidden password keeps its place, so that nothing jumps.
  for (QWidget* hidden : {static_cast<QWidget*>(password_label), static_cast<QWidget*>(password)}) {
    QSizePolicy policy = hidden->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    hidden->setSizePolicy(policy);
  }

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  auto* layout = new QVBoxLayout(window.get());
  layout->addLayout(fields);
  layout->addSpacing(Scaled(*window, 8));
  layout->addLayout(buttons);
  window->FixSize();
  return window;
}

}  // namespace dbkeeper::qt
