#include "platform/qt/FormWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLayout>
#include <QPushButton>
#include <QScreen>

#include "platform/qt/Keep.h"
#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

void Follow(Form& form, QWidget& window) {
  Keep(window, form.Caption.Observe([&window](const std::string& caption) {
    window.setWindowTitle(ToQt(caption));
  }));
  Keep(window, form.Visible.Observe([&window](bool visible) { window.setVisible(visible); }));
}

}  // namespace

FormDialog::FormDialog(Form& form, const ActionGuard& guard, QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      form_(form),
      guard_(guard) {
  Follow(form, *this);
}

void FormDialog::SetDefaultButton(QPushButton& button) {
  button.setDefault(true);
  // Enter leaves the field as a click would, and comes back to it where the dialog stays open.
  connect(&button, &QPushButton::pressed, this, [this, &button] {
    entered_from_ = focusWidget() == &button ? nullptr : focusWidget();
    button.setFocus();
  });
  connect(&button, &QPushButton::clicked, this, [this] {
    if (entered_from_ != nullptr && isVisible()) entered_from_->setFocus();
  });
}

void FormDialog::FixSize() { layout()->setSizeConstraint(QLayout::SetFixedSize); }

void FormDialog::reject() { CloseForm(); }

void FormDialog::closeEvent(QCloseEvent* event) {
  event->ignore();
  CloseForm();
}

void FormDialog::showEvent(QShowEvent* event) {
  if (!event->spontaneous()) {
    // Centred on the screen.
    adjustSize();
    move(screen()->availableGeometry().center() - rect().center());
    QWidget* first = nextInFocusChain();
    while (first != this && ((first->focusPolicy() & Qt::TabFocus) == 0 || !first->isEnabled() ||
                             !first->isVisibleTo(this))) {
      first = first->nextInFocusChain();
    }
    if (first != this) first->setFocus();
  }
  QDialog::showEvent(event);
}

void FormDialog::CloseForm() {
  if (cancel_ != nullptr) {
    cancel_->click();
  } else {
    guard_.Run([this] { form_.Close(); });
  }
}

FormMainWindow::FormMainWindow(Form& form, const ActionGuard& guard) : form_(form), guard_(guard) {
  Follow(form, *this);
}

void FormMainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::WindowStateChange) return;
  const bool before =
      static_cast<QWindowStateChangeEvent*>(event)->oldState() & Qt::WindowMinimized;
  if (before == isMinimized()) return;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (dynamic_cast<FormSecondWindow*>(window) == nullptr || !window->isVisible()) continue;
    window->setWindowState(window->windowState().setFlag(Qt::WindowMinimized, isMinimized()));
  }
}

void FormMainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  guard_.Run([this] { form_.Close(); });
  if (!form_.Visible()) QCoreApplication::quit();
}

FormSecondWindow::FormSecondWindow(Form& form, const ActionGuard& guard)
    : form_(form), guard_(guard) {
  Follow(form, *this);
}

void FormSecondWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  guard_.Run([this] { form_.Close(); });
}

}  // namespace dbkeeper::qt
