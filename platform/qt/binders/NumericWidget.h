// The numeric edit's widget: it forwards keys, mouse and clipboard to the control and shows the
// text, caret and selection that the control decides.
#pragma once

#include <QLineEdit>

#include "controls/ActionGuard.h"
#include "controls/FnpNumericEdit.h"

namespace dbkeeper::qt {

class NumericWidget : public QLineEdit {
 public:
  // Both must outlive the widget.
  NumericWidget(TFnpNumericEdit& edit, const ActionGuard& guard, QWidget* parent);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void FollowControl();
  // Runs a call on the control, then shows what it has made of it.
  template <class Action>
  void Do(Action action);
  void Show();
  void TakeSelection();
  void Cut();
  void Paste(const QString& text);
  bool HandleShortcut(QKeyEvent& event);

  TFnpNumericEdit& edit_;
  const ActionGuard& guard_;
  // Set while the program changes the widget.
  bool mirroring_ = false;
};

}  // namespace dbkeeper::qt
