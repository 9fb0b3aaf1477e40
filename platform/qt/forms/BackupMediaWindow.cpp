#include "platform/qt/forms/BackupMediaWindow.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/qt/FormWindow.h"
#include "platform/qt/Look.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/forms/FieldRows.h"

namespace dbkeeper::qt {

namespace {
constexpr int kFieldWidth = 320;
}

std::unique_ptr<QWidget> MakeBackupMediaWindow(TForm_BackupMedia& form, const ActionGuard& guard,
                                               QWidget* owner) {
  auto window = std::make_unique<FormDialog>(form, guard, owner);
  window->setObjectName("Form_BackupMedia");
  const Binder binder(guard, *window);

  auto* grid = new QGridLayout;
  FieldRows rows(binder, *grid);
  rows.Add(form.Edit_Name, "Edit_Name");
  rows.Add(form.Edit_FileName, "Edit_FileName", form.Button3, "Button3");
  grid->setColumnMinimumWidth(1, Scaled(*window, kFieldWidth));

  auto* ok = binder.Make(form.SBtn_Update, "SBtn_Update");
  auto* cancel = binder.Make(form.Sbtn_Cancel, "Sbtn_Cancel");
  window->SetDefaultButton(*ok);
  window->SetCancelButton(*cancel);

  auto* layout = new QVBoxLayout(window.get());
  layout->addLayout(grid);
  layout->addSpacing(Scaled(*window, 8));
  layout->addLayout(MakeButtonRow({ok, cancel}));
  window->FixSize();
  return window;
}

}  // namespace dbkeeper::qt
