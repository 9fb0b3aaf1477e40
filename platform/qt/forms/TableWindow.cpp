#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QVBoxLayout>

#include "platform/qt/Look.h"
#include "platform/qt/binders/ListWidget.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"
#include "table_designer/Unit_Table.h"

namespace dbkeeper::qt {

namespace {

constexpr int kFieldWidth = 240;
constexpr int kNumberWidth = 64;
constexpr int kNoteHeight = 48;
constexpr int kTextHeight = 96;
constexpr int kKeysHeight = 110;
constexpr int kListHeight = 220;
constexpr int kWidth = 760;

QVBoxLayout* Column(std::initializer_list<QWidget*> widgets) {
  auto* column = new QVBoxLayout;
  for (QWidget* widget : widgets) column->addWidget(widget);
  column->addStretch();
  return column;
}

QWidget* Number(const Binder& binder, TFnpNumericEdit& edit) {
  QWidget* const box = binder.Make(edit);
  box->setFixedWidth(Scaled(*box, kNumberWidth));
  return box;
}

void LimitHeight(QWidget& widget, int height) { widget.setFixedHeight(Scaled(widget, height)); }

QVBoxLayout* Buttons(const Binder& binder, Button& fresh, Button& update, Button& drop) {
  return Column({binder.Make(fresh), binder.Make(update), binder.Make(drop)});
}

QHBoxLayout* PageLayout(QFrame& frame) {
  auto* layout = new QHBoxLayout(&frame);
  layout->setContentsMargins(0, 0, 0, 0);
  return layout;
}

// Size and scale, or start and step of an identity, with their labels between.
QHBoxLayout* Numbers(const Binder& binder, TFnpNumericEdit& first, TFnpNumericEdit& second) {
  auto* row = new QHBoxLayout;
  for (TFnpNumericEdit* edit : {&first, &second}) {
    row->addWidget(binder.Make(edit->EditLabel));
    row->addWidget(Number(binder, *edit));
  }
  row->addStretch();
  return row;
}

QFrame* MakeColumnPage(TForm_Table& form, const Binder& binder) {
  QFrame* const frame = binder.Make(form.Pnl_Columns);
  QHBoxLayout* const page = PageLayout(*frame);
  FieldRows left(binder, kFieldWidth);
  left.Add(form.Edit_Column_Name);
  left.Add(form.ComboBox_Column_Type);
  left.AddLayout(*Numbers(binder, form.Fne_Column_Size, form.Fne_Column_MinSize));
  left.Add(form.CheckBox_Column_nullable);
  left.Add(form.Edit_Column_Default);
  left.AddWidget(*binder.Make(form.Lbl_Column_Default));
  FieldRows right(binder, kFieldWidth);
  right.AddWidget(*binder.Make(form.Lbl_Column_Identify));
  right.AddLayout(*Numbers(binder, form.Fne_Column_Ide_Start, form.Fne_Column_Ide_Step));
  right.Add(form.Edit_Column_Comment);
  LimitHeight(*right.Add(form.Edit_Column_Note), kNoteHeight);
  page->addLayout(left.Grid());
  page->addLayout(right.Grid(), 1);
  page->addLayout(
      Buttons(binder, form.SBtn_Columns_New, form.SBtn_Columns_Update, form.SBtn_Columns_Drop));
  return frame;
}

QFrame* MakeIndexPage(TForm_Table& form, const Binder& binder) {
  QFrame* const frame = binder.Make(form.Pnl_Index);
  QHBoxLayout* const page = PageLayout(*frame);
  FieldRows left(binder, kFieldWidth);
  left.Add(form.Edit_IndexName);
  QWidget* const keys = binder.Make(form.ListView_Index);
  LimitHeight(*keys, kKeysHeight);
  left.AddWidget(*keys);
  page->addLayout(left.Grid());
  page->addLayout(
      Column({binder.Make(form.ComboBox_Fields), binder.Make(form.CheckBox_Index_Desc),
              binder.Make(form.Sbtn_Index_Add_Field), binder.Make(form.Sbtn_Index_Remove_Field)}));
  page->addLayout(Column(
      {binder.Make(form.Lbl_Index_Option), binder.Make(form.CheckBox_Index_Unique),
       binder.Make(form.CheckBox_Index_Clustered), binder.Make(form.CheckBox_Index_PrimaryKey)}));
  page->addStretch();
  page->addLayout(
      Buttons(binder, form.Sbtn_Index_New, form.Sbtn_Index_Update, form.Sbtn_Index_Drop));
  return frame;
}

QFrame* MakeCheckPage(TForm_Table& form, const Binder& binder) {
  QFrame* const frame = binder.Make(form.Pnl_Check);
  QHBoxLayout* const page = PageLayout(*frame);
  FieldRows fields(binder, kFieldWidth);
  fields.Add(form.Edit_CheckName);
  QWidget* const text = binder.Make(form.Memo_Checks);
  LimitHeight(*text, kTextHeight);
  fields.AddWidget(*text);
  page->addLayout(fields.Grid(), 1);
  page->addLayout(
      Buttons(binder, form.SBtn_Check_New, form.SBtn_Check_Update, form.SBtn_Check_Drop));
  return frame;
}

QFrame* MakeTriggerPage(TForm_Table& form, const Binder& binder) {
  QFrame* const frame = binder.Make(form.Pnl_Triger);
  QHBoxLayout* const page = PageLayout(*frame);
  page->addWidget(binder.Make(form.Memo_Trigger), 1);
  page->addLayout(
      Buttons(binder, form.SBtn_Triger_New, form.SBtn_Triger_Update, form.SBtn_Triger_Drop));
  return frame;
}

}  // namespace

std::unique_ptr<QWidget> MakeWindow(TForm_Table& form, const ActionGuard& guard, QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  const Binder& binder = frame.Controls();
  FieldRows header(binder, kFieldWidth);
  header.Add(form.Edit_TableName);
  header.Add(form.Edit_DataBase);
  header.Add(form.Edit_Description);
  LimitHeight(*header.Add(form.Edit_Note, form.SbtnTblInfoUpdate), kNoteHeight);
  frame.Add(header.Grid());

  frame.Add(binder.Make(form.TabControl1));
  frame.Add(MakeColumnPage(form, binder));
  frame.Add(MakeIndexPage(form, binder));
  frame.Add(MakeCheckPage(form, binder));
  frame.Add(MakeTriggerPage(form, binder));
  QWidget* const list = binder.Make(form.ListView);
  list->setMinimumSize(Scaled(*list, kWidth), Scaled(*list, kListHeight));
  frame.Add(list);
  frame.AddButtons(form.SBtn_Create, form.Btn_Close);
  return frame.Take(DialogSize::kSizable);
}

}  // namespace dbkeeper::qt
