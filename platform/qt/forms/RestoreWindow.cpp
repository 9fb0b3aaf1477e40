#include "platform/qt/forms/RestoreWindow.h"

#include <QCheckBox>
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

constexpr int kFieldWidth = 400;
constexpr int kGap = 8;

void AddGap(QGridLayout& grid) {
  grid.setRowMinimumHeight(grid.rowCount(), Scaled(*grid.parentWidget(), kGap));
}

QGridLayout* MakeFields(TFormRestore& form, const Binder& binder, QWidget& window) {
  auto* fields = new QWidget(&window);
  auto* grid = new QGridLayout(fields);
  grid->setContentsMargins(0, 0, 0, 0);
  FieldRows rows(binder, *grid);
  rows.Add(form.Edit_DatabaseName, "Edit_DatabaseName");
  rows.Add(*binder.Make(form.CheckBox_ChangeName, "CheckBox_ChangeName"));
  AddGap(*grid);
  rows.Add(form.Edit_BackupFName, "Edit_BackupFName", form.Sbtn_BackupFName, "Sbtn_BackupFName");
  rows.Add(*binder.Make(form.CheckBox_Ow, "CheckBox_Ow"));
  AddGap(*grid);
  rows.Add(form.Edit_DatabaseFName, "Edit_DatabaseFName", form.SBtn_DatabaseFName,
           "SBtn_DatabaseFName");
  rows.Add(form.Edit_LogFName, "Edit_LogFName", form.SBtn_LogFName, "SBtn_LogFName");
  AddGap(*grid);
  rows.Add(form.Edit_DataName, "Edit_DataName");
  rows.Add(form.Edit_LogName, "Edit_LogName");
  grid->setColumnMinimumWidth(1, Scaled(window, kFieldWidth));
  return grid;
}

}  // namespace

std::unique_ptr<QWidget> MakeRestoreWindow(TFormRestore& form, const ActionGuard& guard,
                                           QWidget* owner) {
  auto window = std::make_unique<FormDialog>(form, guard, owner);
  window->setObjectName("FormRestore");
  const Binder binder(guard, *window);

  QGridLayout* const fields = MakeFields(form, binder, *window);
  auto* verify = binder.Make(form.SpeedButton1, "SpeedButton1");
  auto* ok = binder.Make(form.SBtn_Update, "SBtn_Update");
  auto* cancel = binder.Make(form.Sbtn_Cancel, "Sbtn_Cancel");
  window->SetDefaultButton(*ok);
  window->SetCancelButton(*cancel);
  // Enter in the name field must leave it first, because leaving it renames the files.
  QObject::connect(ok, &QPushButton::pressed, ok, [ok] { ok->setFocus(); });

  QHBoxLayout* const buttons = MakeButtonRow({ok, cancel});
  buttons->insertWidget(0, verify);
  auto* layout = new QVBoxLayout(window.get());
  layout->addWidget(fields->parentWidget());
  layout->addSpacing(Scaled(*window, kGap));
  layout->addLayout(buttons);
  window->FixSize();
  return window;
}

}  // namespace dbkeeper::qt
