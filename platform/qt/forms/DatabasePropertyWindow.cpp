#include <QBoxLayout>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>

#include "database/Unit_Database_Property.h"
#include "platform/qt/Look.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"

namespace dbkeeper::qt {

namespace {

constexpr int kFieldWidth = 360;
constexpr int kSizeWidth = 100;
constexpr int kIndent = 32;

// The sizing controls of one file.
struct Sizing {
  Panel& panel;
  TFnpNumericEdit& init_size;
  CheckBox& auto_growth;
  RadioGroup& growth_type;
  TFnpNumericEdit& file_growth;
  TFnpNumericEdit& max_size;
};

QFrame* MakeSizing(const Binder& binder, const Sizing& sizing, Label& size_unit, Label& max_unit) {
  QFrame* const frame = binder.Make(sizing.panel);
  FieldRows rows(binder, kSizeWidth);
  rows.Add(sizing.init_size, size_unit);
  rows.Add(sizing.auto_growth);
  QGroupBox* const type = binder.Make(sizing.growth_type);
  static_cast<QBoxLayout*>(type->layout())->setDirection(QBoxLayout::LeftToRight);
  rows.Add(sizing.file_growth);
  rows.Add(sizing.max_size, max_unit);
  auto* layout = new QHBoxLayout(frame);
  layout->setContentsMargins(Scaled(*frame, kIndent), 0, 0, 0);
  layout->addLayout(rows.Grid(), 1);
  layout->addWidget(type, 0, Qt::AlignTop);
  return frame;
}

}  // namespace

std::unique_ptr<QWidget> MakeWindow(TForm_Database_Property& form, const ActionGuard& guard,
                                    QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  const Binder& binder = frame.Controls();
  FieldRows rows(binder, kFieldWidth);
  rows.Add(form.Edit_DatabaseName);
  rows.Add(form.Edit_DataFileName, form.Button3);
  rows.AddWidget(
      *MakeSizing(binder,
                  {form.Pnl_MDF, form.Fne_Mdf_Init_Size, form.CheckBox_Mdf_AutoGrowth,
                   form.RadioGroup_Mdf_GrowthType, form.Fne_Mdf_FileGrowth, form.Fne_Mdf_Max_Size},
                  form.Label_InitSizeUnit, form.Label_MaxSizeUnit));
  rows.Add(form.Edit_LogFileName, form.Button4);
  rows.AddWidget(
      *MakeSizing(binder,
                  {form.Pnl_LDF, form.Fne_Ldf_Init_Size, form.CheckBox_Ldf_AutoGrowth,
                   form.RadioGroup_Ldf_GrowthType, form.Fne_Ldf_FileGrowth, form.Fne_Ldf_Max_Size},
                  form.Label_InitSizeUnit, form.Label_MaxSizeUnit));
  frame.Add(rows.Grid());
  frame.AddButtons(form.SBtn_Update, form.SBtn_Cancel);
  return frame.Take();
}

}  // namespace dbkeeper::qt
