// Rows of a dialog: a label, its field, and what stands behind the field.
#pragma once

#include <QString>
#include <initializer_list>

#include "platform/qt/binders/Binder.h"

class QGridLayout;
class QHBoxLayout;
class QLineEdit;
class QPushButton;

namespace dbkeeper::qt {

// Adds rows to a grid of three columns. Controls are made in the order of the calls, which is the
// tab order.
class FieldRows {
 public:
  // Both must outlive this object.
  FieldRows(const Binder& binder, QGridLayout& grid) : binder_(binder), grid_(grid) {}

  // The edit takes the columns of field and button.
  QLineEdit* Add(Edit& edit, const QString& name);
  // An edit with the button that fills it.
  QLineEdit* Add(Edit& edit, const QString& name, Button& button, const QString& button_name);
  // A widget below the field above, without a label.
  void Add(QWidget& widget);

 private:
  int AddLabel(Edit& edit, const QString& name);

  const Binder& binder_;
  QGridLayout& grid_;
};

// The row of buttons at the end of a dialog, right-aligned. The caller gives it to a layout.
QHBoxLayout* MakeButtonRow(std::initializer_list<QPushButton*> buttons);

}  // namespace dbkeeper::qt
