// The windows of forms: caption, showing and closing follow the form.
#pragma once

#include <QDialog>
#include <QMainWindow>
#include <QPointer>

#include "controls/ActionGuard.h"
#include "controls/Form.h"

class QPushButton;

namespace dbkeeper::qt {

// A dialog. Enter presses its default button; Esc and the window's own close button press its
// cancel button, or close the form where it has none. The tab order is the order in which the
// controls were made.
class FormDialog : public QDialog {
 public:
  // Form and guard must outlive the dialog.
  FormDialog(Form& form, const ActionGuard& guard, QWidget* owner);

  void SetDefaultButton(QPushButton& button);
  void SetCancelButton(QPushButton& button) { cancel_ = &button; }
  // A border that cannot be dragged: the layout decides the size.
  void FixSize();

  // Esc.
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void CloseForm();

  Form& form_;
  const ActionGuard& guard_;
  QPushButton* cancel_ = nullptr;
  QPointer<QWidget> entered_from_;  // where Enter was pressed
};

// The program's main window; the program ends when it has been closed. Minimised, it takes the
// second windows along, and brings them back.
class FormMainWindow : public QMainWindow {
 public:
  // Form and guard must outlive the window.
  FormMainWindow(Form& form, const ActionGuard& guard);

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  Form& form_;
  const ActionGuard& guard_;
};

// A window beside the main one: of its own in the task bar, and not closed by Esc.
class FormSecondWindow : public QWidget {
 public:
  // Form and guard must outlive the window.
  FormSecondWindow(Form& form, const ActionGuard& guard);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  Form& form_;
  const ActionGuard& guard_;
};

}  // namespace dbkeeper::qt
