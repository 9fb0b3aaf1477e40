// Makes the widget of a control and ties the two together: what the program assigns appears in the
// widget, what a person does reaches the control's User... methods, through the one guard.
#pragma once

#include <functional>

#include "controls/ActionGuard.h"
#include "controls/DataGrid.h"
#include "controls/FnpNumericEdit.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"
#include "controls/Navigator.h"
#include "controls/TreeView.h"

class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QStatusBar;
class QTabBar;
class QWidget;

namespace dbkeeper::qt {

class ListWidget;
class TreeWidget;

class Binder {
 public:
  // The widgets become children of `window`; a layout may give them another parent. Guard and
  // controls must outlive them. A widget is named as its control.
  Binder(const ActionGuard& guard, QWidget& window) : guard_(guard), window_(window) {}

  QWidget& Window() const { return window_; }

  QLabel* Make(Label& label) const;
  // The edit alone; its label is made with Make(edit.EditLabel).
  QLineEdit* Make(Edit& edit) const;
  // As Make, showing "*" for each character.
  QLineEdit* MakePassword(Edit& edit) const;
  QPushButton* Make(Button& button) const;
  // As Make, for a button of a tool bar: it never takes the keyboard, neither by a click nor by
  // Tab, so that a key that follows goes where it was meant to. What is being typed into a cell is
  // given to the cell first; where it is refused there, the click does nothing.
  QPushButton* MakeTool(Button& button) const;
  QCheckBox* Make(CheckBox& box) const;
  QComboBox* Make(ComboBox& box) const;
  QGroupBox* Make(RadioGroup& group) const;
  QListWidget* Make(CheckListBox& list) const;
  QPlainTextEdit* Make(Memo& memo) const;
  // As Make, for a text of a language: letters of one width, and no line is broken.
  QPlainTextEdit* MakeCode(Memo& memo) const;
  // Ties a memo to an editor that the form has made. What the program puts in can be undone.
  void Bind(Memo& memo, QPlainTextEdit& editor) const;
  // The box alone, as with an edit.
  QLineEdit* Make(TFnpNumericEdit& edit) const;
  // An empty frame; the form's layout fills it. A Height or Width of 0 leaves it to the layout.
  QFrame* Make(Panel& panel) const;
  // As with a panel, with a title.
  QGroupBox* Make(GroupBox& group) const;
  QStatusBar* Make(StatusBar& bar) const;
  QTabBar* Make(TabControl& tabs) const;
  QDateTimeEdit* Make(DateTimePicker& picker) const;
  ListWidget* Make(ListView& list) const;
  TreeWidget* Make(TreeView& tree) const;
  // The grid with the line below it that says why rows cannot be edited.
  QWidget* Make(DataGrid& grid) const;
  QWidget* Make(Navigator& navigator) const;

 private:
  // Name, enabling, visibility, hint and focus, which every control has.
  void BindCommon(Control& control, QWidget& widget) const;
  // Focus entering and leaving the widget.
  void BindFocus(Edit& edit, QLineEdit& widget) const;

  const ActionGuard& guard_;
  QWidget& window_;
};

}  // namespace dbkeeper::qt
