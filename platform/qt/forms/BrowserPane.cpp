#include "platform/qt/forms/BrowserPane.h"

#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/qt/Look.h"

namespace dbkeeper::qt {

namespace {

constexpr int kSide = 3;
constexpr int kCloseWidth = 24;
constexpr int kButtonWidth = 60;
constexpr int kNameWidth = 200;
constexpr int kFilterWidth = 160;
constexpr int kToolHeight = 24;
constexpr int kFilterHeight = 20;

QHBoxLayout* Row(const QWidget& widget) {
  auto* row = new QHBoxLayout;
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(Scaled(widget, kSide));
  return row;
}

QHBoxLayout* MakeToolRow(TableBrowser& form, const Binder& binder, const QWidget& area) {
  auto* close = binder.MakeTool(form.Sbtn_TableClose);
  auto* open = binder.MakeTool(form.Sbtn_TableOpen);
  auto* name = binder.Make(form.Edit_Open_TableName);
  auto* filter = binder.Make(form.ComboBox_Table_Where);
  auto* mode = binder.MakeTool(form.Sbtn_RE);
  close->setFixedWidth(Scaled(area, kCloseWidth));
  open->setFixedWidth(Scaled(area, kButtonWidth));
  mode->setFixedWidth(Scaled(area, kButtonWidth));
  name->setFrame(false);
  name->setFixedWidth(Scaled(area, kNameWidth));
  filter->setFixedWidth(Scaled(area, kFilterWidth));
  for (QWidget* widget : std::initializer_list<QWidget*>{close, open, filter, mode}) {
    widget->setFixedHeight(Scaled(area, kToolHeight));
  }
  auto* navigator = binder.Make(form.Pnl_Navigator);
  auto* inside = Row(area);
  inside->addWidget(binder.Make(form.DBNavigator1));
  navigator->setLayout(inside);

  auto* row = Row(area);
  row->addWidget(close);
  row->addWidget(open);
  row->addWidget(binder.Make(form.Edit_Open_TableName.EditLabel));
  row->addWidget(name);
  row->addWidget(filter);
  row->addWidget(mode);
  row->addWidget(navigator);
  row->addStretch();
  return row;
}

QHBoxLayout* MakeFilterRow(TableBrowser& form, const Binder& binder, const QWidget& area) {
  auto* where = binder.Make(form.Edit_Table_Where);
  where->setFixedHeight(Scaled(area, kFilterHeight));
  auto* row = Row(area);
  row->addWidget(binder.Make(form.Edit_Table_Where.EditLabel));
  row->addWidget(where);
  return row;
}

}  // namespace

void LayOutBrowserPane(TableBrowser& form, const Binder& binder, QFrame& pane) {
  auto* area = binder.Make(form.Pnl_SQL_Tool);
  const int side = Scaled(pane, kSide);
  auto* rows = new QVBoxLayout(area);
  rows->setContentsMargins(side, side, side, side);
  rows->setSpacing(Scaled(pane, 1));
  rows->addLayout(MakeToolRow(form, binder, *area));
  rows->addLayout(MakeFilterRow(form, binder, *area));

  auto* layout = new QVBoxLayout(&pane);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(area);
  layout->addWidget(binder.Make(form.DBGrid1), 1);
}

}  // namespace dbkeeper::qt
