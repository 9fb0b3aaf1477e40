#include <QComboBox>
#include <QDragEnterEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <string>
#include <vector>

#include "platform/qt/FormWindow.h"
#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/MenuBinder.h"
#include "platform/qt/editor/FindBar.h"
#include "platform/qt/editor/SqlEditor.h"
#include "platform/qt/forms/DialogFrame.h"
#include "platform/qt/forms/FieldRows.h"
#include "platform/qt/forms/Windows.h"
#include "query/Unit_Exec_SQL.h"

namespace dbkeeper::qt {

namespace {

constexpr int kWidth = 1000;
constexpr int kHeight = 660;
constexpr int kEditorHeight = 260;
constexpr int kMessagesHeight = 120;
constexpr int kBuilderWidth = 200;
constexpr int kSide = 3;
constexpr int kButtonMargin = 16;
constexpr int kNameWidth = 260;

// The tab order is the order in which the parts are made. Files are taken wherever they are dropped
// on the window.
class ExecSqlWindow : public FormSecondWindow {
 public:
  ExecSqlWindow(TFormExecSQL& form, const ActionGuard& guard)
      : FormSecondWindow(form, guard), form_(form), guard_(guard), binder_(guard, *this) {
    setObjectName(ToQt(form.Name));
    LayOut();
    AddShortcut(Qt::Key_F5, [this] { form_.RunOpen(); });
    AddShortcut(Qt::CTRL | Qt::Key_E, [this] { form_.SpeedButton3.UserClick(); });
    AddShortcut(Qt::CTRL | Qt::Key_O, [this] { form_.PopupMenu_Memo_OpenClick(); });
    AddShortcut(Qt::CTRL | Qt::Key_F, [this] { find_->Open(); });
    Keep(*this, form.AcceptsFiles.Observe([this](bool accepts) { setAcceptDrops(accepts); }));
    editor_->setFocus();
    resize(Scaled(*this, kWidth), Scaled(*this, kHeight));
  }

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override {
    if (!LocalFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
  }
  void dropEvent(QDropEvent* event) override {
    event->acceptProposedAction();
    TakeFiles(LocalFiles(*event->mimeData()));
  }

 private:
  void TakeFiles(const QStringList& files) {
    std::vector<std::string> paths;
    for (const QString& file : files) paths.push_back(FromQt(file));
    guard_.Run([this, &paths] { form_.FilesDropped(paths); });
  }

  template <class Action>
  void AddShortcut(const QKeySequence& keys, Action action) {
    auto* shortcut = new QShortcut(keys, this);
    connect(shortcut, &QShortcut::activated, this, [this, action] { guard_.Run(action); });
  }

  void LayOut() {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(MakeToolBar());
    auto* halves = new QSplitter(Qt::Vertical, this);
    halves->setObjectName("Splitter_Result");
    halves->setChildrenCollapsible(false);
    halves->addWidget(MakeEditorSide());
    halves->addWidget(binder_.Make(form_.DBGrid1));
    halves->addWidget(binder_.Make(form_.MemoServerMessage));
    halves->setSizes({Scaled(*this, kEditorHeight),
                      Scaled(*this, kHeight - kEditorHeight - kMessagesHeight),
                      Scaled(*this, kMessagesHeight)});
    halves->setStretchFactor(1, 1);
    layout->addWidget(halves, 1);
  }

  // A button as narrow as the widest of its captions so far, for there are many in a row.
  QPushButton* Narrow(Button& button) {
    QPushButton* const widget = binder_.MakeTool(button);
    Keep(*widget, button.Caption.Observe([widget](const std::string& caption) {
      const int text = widget->fontMetrics().horizontalAdvance(ToQt(caption));
      widget->setFixedWidth(
          std::max(widget->minimumWidth(), text + Scaled(*widget, kButtonMargin)));
    }));
    return widget;
  }

  QHBoxLayout* Row() {
    auto* row = new QHBoxLayout;
    const int side = Scaled(*this, kSide);
    row->setContentsMargins(side, side, side, side);
    row->setSpacing(side);
    return row;
  }

  QHBoxLayout* MakeToolBar() {
    Button* const buttons[] = {
        &form_.Sbtn_Select,        &form_.SpeedButton3,
        &form_.Sbtn_SQL_Log_Back,  &form_.Sbtn_SQL_Log_Forward,
        &form_.Sbtn_Count,         &form_.SpeedButton7,
        &form_.Sbtn_EasySQL,       &form_.Sbtn_Template,
        &form_.Sbtn_ServerMessage, &form_.SBtn_RE,
    };
    auto* bar = Row();
    for (Button* button : buttons) bar->addWidget(Narrow(*button));
    bar->addStretch();
    bar->addWidget(MakeRightStrip());
    return bar;
  }

  QFrame* MakeRightStrip() {
    QFrame* const strip = binder_.Make(form_.Panel_ToolRight);
    auto* row = new QHBoxLayout(strip);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Scaled(*this, kSide));
    row->addWidget(binder_.Make(form_.DBNavigator1));
    row->addWidget(binder_.Make(form_.ComboBox_DatabaseName.EditLabel));
    row->addWidget(binder_.Make(form_.ComboBox_DatabaseName), 1);
    row->addWidget(binder_.Make(form_.Label_Server));
    return strip;
  }

  QWidget* MakeEditorSide() {
    auto* editing = new QWidget(this);
    auto* column = new QVBoxLayout(editing);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(MakeTemplateStrip());
    column->addWidget(MakeStepStrip());
    column->addWidget(MakeEditor(), 1);
    find_ = new FindBar(*editor_, editing);
    column->addWidget(find_);

    auto* sides = new QSplitter(this);
    sides->setObjectName("Splitter_EasySQL");
    sides->setChildrenCollapsible(false);
    sides->addWidget(editing);
    sides->addWidget(MakeBuilder());
    sides->setStretchFactor(0, 1);
    sides->setSizes({Scaled(*this, kWidth - kBuilderWidth), Scaled(*this, kBuilderWidth)});
    return sides;
  }

  QFrame* MakeTemplateStrip() {
    QFrame* const strip = binder_.Make(form_.Panel_Template);
    auto* row = Row();
    QComboBox* const name = binder_.Make(form_.CmbBox_Template);
    name->setFixedWidth(Scaled(*this, kNameWidth));
    row->addWidget(name);
    row->addWidget(Narrow(form_.Sbtn_Template_Load));
    row->addWidget(Narrow(form_.Sbtn_Template_Save));
    row->addWidget(Narrow(form_.Sbtn_Template_Serch));
    row->addStretch();
    strip->setLayout(row);
    return strip;
  }

  QFrame* MakeStepStrip() {
    QFrame* const strip = binder_.Make(form_.Panel_SQL_CmdSet);
    auto* row = Row();
    row->addWidget(Narrow(form_.Sbtn_TableClose));
    QComboBox* const steps = binder_.Make(form_.CmbBox_CmdSet);
    steps->setFixedWidth(Scaled(*this, kNameWidth));
    row->addWidget(steps);
    row->addWidget(Narrow(form_.SBtn_CmdSetSet));
    row->addStretch();
    strip->setLayout(row);
    return strip;
  }

  QWidget* MakeEditor() {
    editor_ = new SqlEditor(this);
    binder_.Bind(form_.MemoSQL, *editor_);
    editor_->OnFiles = [this](const QStringList& files) { TakeFiles(files); };
    editor_->OnContextMenu = [this](QMenu& menu) {
      menu.addSeparator();
      FillMenu(menu, form_.PopupMenu_Memo.Items(), guard_, *this);
    };
    return editor_;
  }

  QFrame* MakeBuilder() {
    QFrame* const panel = binder_.Make(form_.Panel_EasySQL);
    const int side = Scaled(*this, kSide);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(side, side, side, side);
    column->setSpacing(side);
    column->addWidget(binder_.MakeTool(form_.Sbtn_EasySQL_Get_Columns));
    auto* top = new QHBoxLayout;
    top->addWidget(binder_.Make(form_.ComboBox_EasySQL_Mode), 1);
    top->addWidget(binder_.Make(form_.Fne_EasySQL_Top.EditLabel));
    QLineEdit* const count = binder_.Make(form_.Fne_EasySQL_Top);
    count->setFixedWidth(count->minimumWidth());
    top->addWidget(count);
    column->addLayout(top);
    auto* buttons = new QGridLayout;
    buttons->setSpacing(side);
    buttons->addWidget(binder_.MakeTool(form_.Sbtn_EasySQL_Select), 0, 0);
    buttons->addWidget(binder_.MakeTool(form_.Sbtn_EasySQL_Where), 0, 1);
    buttons->addWidget(binder_.MakeTool(form_.Sbtn_EasySQL_OrderBy), 1, 0);
    buttons->addWidget(binder_.MakeTool(form_.Sbtn_EasySQL_Clear), 1, 1);
    column->addLayout(buttons);
    column->addWidget(binder_.Make(form_.CheckListBox_EasySQL), 1);
    return panel;
  }

  TFormExecSQL& form_;
  const ActionGuard& guard_;
  Binder binder_;
  SqlEditor* editor_ = nullptr;
  FindBar* find_ = nullptr;
};

}  // namespace

std::unique_ptr<QWidget> MakeWindow(TFormExecSQL& form, const ActionGuard& guard,
                                    QWidget* /*owner*/) {
  return std::make_unique<ExecSqlWindow>(form, guard);
}

std::unique_ptr<QWidget> MakeWindow(TFormChooseTable& form, const ActionGuard& guard,
                                    QWidget* owner) {
  DialogFrame frame(form, guard, owner);
  FieldRows rows(frame.Controls(), kNameWidth);
  rows.Add(form.ComboBox_Table);
  frame.Add(rows.Grid());
  frame.AddButtons(form.SBtn_Ok, form.Sbtn_Cancel);
  return frame.Take();
}

}  // namespace dbkeeper::qt
