#include "platform/qt/forms/FieldRows.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "platform/qt/Look.h"

namespace dbkeeper::qt {

namespace {
constexpr int kChooserWidth = 32;
}

int FieldRows::AddLabel(Edit& edit, const QString& name) {
  const int row = grid_.rowCount();
  grid_.addWidget(binder_.Make(edit.EditLabel, name + "_Label"), row, 0);
  return row;
}

QLineEdit* FieldRows::Add(Edit& edit, const QString& name) {
  const int row = AddLabel(edit, name);
  QLineEdit* field = binder_.Make(edit, name);
  grid_.addWidget(field, row, 1, 1, 2);
  return field;
}

QLineEdit* FieldRows::Add(Edit& edit, const QString& name, Button& button,
                          const QString& button_name) {
  const int row = AddLabel(edit, name);
  QLineEdit* field = binder_.Make(edit, name);
  grid_.addWidget(field, row, 1);
  QPushButton* chooser = binder_.Make(button, button_name);
  chooser->setFixedWidth(Scaled(*chooser, kChooserWidth));
  grid_.addWidget(chooser, row, 2);
  return field;
}

void FieldRows::Add(QWidget& widget) { grid_.addWidget(&widget, grid_.rowCount(), 1, 1, 2); }

QHBoxLayout* MakeButtonRow(std::initializer_list<QPushButton*> buttons) {
  auto* row = new QHBoxLayout;
  row->addStretch();
  for (QPushButton* button : buttons) row->addWidget(button);
  return row;
}

}  // namespace dbkeeper::qt
