#include <QDateTimeEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/qt/Look.h"
#include "platform/qt/binders/ListWidget.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"
#include "testdata/Unit_Table_TestData.h"

namespace dbkeeper::qt {

namespace {

constexpr int kFieldWidth = 240;
constexpr int kListHeight = 220;
constexpr int kWidth = 720;

QHBoxLayout* Row(std::initializer_list<QWidget*> widgets) {
  auto* row = new QHBoxLayout;
  for (QWidget* widget : widgets) row->addWidget(widget);
  row->addStretch();
  return row;
}

// The parameters of all patterns on one line: the form shows those of the chosen one.
QHBoxLayout* MakeParameters(TForm_Table_TestData& form, const Binder& binder) {
  QLineEdit* text = nullptr;
  QHBoxLayout* const row = Row({
      binder.Make(form.Lbl_Param1),
      binder.Make(form.Fne_Start),
      binder.Make(form.DateTimePicker_Start),
      binder.Make(form.Lbl_Param2),
      binder.Make(form.Fne_End),
      binder.Make(form.DateTimePicker_End),
      text = binder.Make(form.Edit_ParamStr),
      binder.Make(form.Sbtn_FileName),
  });
  text->setMinimumWidth(Scaled(*text, kFieldWidth));
  return row;
}

}  // namespace

std::unique_ptr<QWidget> MakeWindow(TForm_Table_TestData& form, const ActionGuard& guard,
                                    QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  const Binder& binder = frame.Controls();
  FieldRows table(binder, kFieldWidth);
  table.Add(form.Edit_DataBase);
  table.Add(form.Edit_TableName);
  frame.Add(table.Grid());

  QWidget* const list = binder.Make(form.ListView);
  list->setMinimumSize(Scaled(*list, kWidth), Scaled(*list, kListHeight));
  frame.Add(list);

  FieldRows column(binder, kFieldWidth);
  column.Add(form.Edit_FieldName);
  column.Add(form.CmbBox_Pattern);
  column.Add(form.Fne_Null);
  frame.Add(column.Grid());
  frame.Add(MakeParameters(form, binder));
  frame.Add(binder.Make(form.Lbl_PHelp));
  frame.Add(Row({binder.Make(form.Sbtn_ParamUp), binder.Make(form.Sbtn_ParamDel)}));

  frame.Add(Row({binder.Make(form.Fne_Max.EditLabel), binder.Make(form.Fne_Max)}));
  frame.AddButtons(form.SBtn_Create, form.Btn_Close,
                   {&form.Sbtn_SaveCfg, &form.Sbtn_LoadCfg, &form.Sbtn_Bulk_ins});
  return frame.Take(DialogSize::kSizable);
}

}  // namespace dbkeeper::qt
