#include "platform/qt/forms/DatabasePropertyWindow.h"

#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/qt/FormWindow.h"
#include "platform/qt/Look.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/forms/FieldRows.h"

namespace dbkeeper::qt {

namespace {

constexpr int kFieldWidth = 360;
constexpr int kGap = 8;

// The sizing controls of one file; `prefix` is "Mdf" or "Ldf".
struct Sizing {
  QString prefix;
  Panel& panel;
  QString panel_name;
  TFnpNumericEdit& init_size;
  CheckBox& auto_growth;
  RadioGroup& growth_type;
  TFnpNumericEdit& file_growth;
  TFnpNumericEdit& max_size;
};

void AddSize(const Binder& binder, QGridLayout& grid, TFnpNumericEdit& edit, const QString& name,
             QWidget* unit) {
  const int row = grid.rowCount();
  grid.addWidget(binder.Make(edit.EditLabel, name + "_Label"), row, 0);
  grid.addWidget(binder.Make(edit, name), row, 1);
  if (unit != nullptr) grid.addWidget(unit, row, 2);
}

QFrame* MakeSizing(const Binder& binder, const Sizing& sizing, Label& size_unit, Label& max_unit) {
  const auto name = [&sizing](const char* pattern) { return QString(pattern).arg(sizing.prefix); };
  QFrame* const frame = binder.Make(sizing.panel, sizing.panel_name);
  auto* grid = new QGridLayout;
  AddSize(binder, *grid, sizing.init_size, name("Fne_%1_Init_Size"),
          binder.Make(size_unit, name("Label_%1_InitSizeUnit")));
  grid->addWidget(binder.Make(sizing.auto_growth, name("CheckBox_%1_AutoGrowth")), grid->rowCount(),
                  0, 1, 3);
  QGroupBox* const type = binder.Make(sizing.growth_type, name("RadioGroup_%1_GrowthType"));
  static_cast<QBoxLayout*>(type->layout())->setDirection(QBoxLayout::LeftToRight);
  AddSize(binder, *grid, sizing.file_growth, name("Fne_%1_FileGrowth"), nullptr);
  AddSize(binder, *grid, sizing.max_size, name("Fne_%1_Max_Size"),
          binder.Make(max_unit, name("Label_%1_MaxSizeUnit")));
  grid->setColumnStretch(2, 1);
  auto* layout = new QHBoxLayout(frame);
  layout->setContentsMargins(Scaled(*frame, 4 * kGap), 0, 0, 0);
  layout->addLayout(grid, 1);
  layout->addWidget(type, 0, Qt::AlignTop);
  return frame;
}

}  // namespace

std::unique_ptr<QWidget> MakeDatabasePropertyWindow(TForm_Database_Property& form,
                                                    const ActionGuard& guard, QWidget* owner) {
  auto window = std::make_unique<FormDialog>(form, guard, owner);
  window->setObjectName("Form_Database_Property");
  const Binder binder(guard, *window);

  auto* grid = new QGridLayout;
  FieldRows rows(binder, *grid);
  rows.Add(form.Edit_DatabaseName, "Edit_DatabaseName");
  rows.Add(form.Edit_DataFileName, "Edit_DataFileName", form.Button3, "Button3");
  const Sizing data = {"Mdf",
                       form.Pnl_MDF,
                       "Pnl_MDF",
                       form.Fne_Mdf_Init_Size,
                       form.CheckBox_Mdf_AutoGrowth,
                       form.RadioGroup_Mdf_GrowthType,
                       form.Fne_Mdf_FileGrowth,
                       form.Fne_Mdf_Max_Size};
  rows.Add(*MakeSizing(binder, data, form.Label_InitSizeUnit, form.Label_MaxSizeUnit));
  rows.Add(form.Edit_LogFileName, "Edit_LogFileName", form.Button4, "Button4");
  const Sizing log = {"Ldf",
                      form.Pnl_LDF,
                      "Pnl_LDF",
                      form.Fne_Ldf_Init_Size,
                      form.CheckBox_Ldf_AutoGrowth,
                      form.RadioGroup_Ldf_GrowthType,
                      form.Fne_Ldf_FileGrowth,
                      form.Fne_Ldf_Max_Size};
  rows.Add(*MakeSizing(binder, log, form.Label_InitSizeUnit, form.Label_MaxSizeUnit));
  grid->setColumnMinimumWidth(1, Scaled(*window, kFieldWidth));

  auto* ok = binder.Make(form.SBtn_Update, "SBtn_Update");
  auto* cancel = binder.Make(form.SBtn_Cancel, "SBtn_Cancel");
  window->SetDefaultButton(*ok);
  window->SetCancelButton(*cancel);

  auto* layout = new QVBoxLayout(window.get());
  layout->addLayout(grid);
  layout->addSpacing(Scaled(*window, kGap));
  layout->addLayout(MakeButtonRow({ok, cancel}));
  window->FixSize();
  return window;
}

}  // namespace dbkeeper::qt
