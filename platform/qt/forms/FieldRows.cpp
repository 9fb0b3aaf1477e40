#include "platform/qt/forms/FieldRows.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "platform/qt/Look.h"
#include "platform/qt/forms/PageStack.h"

namespace dbkeeper::qt {

namespace {
constexpr int kChooserWidth = 32;
constexpr int kGap = 8;

}  // namespace

FieldRows::FieldRows(const Binder& binder, int field_width)
    : binder_(binder), grid_(new QGridLayout) {
  grid_->setColumnMinimumWidth(1, Scaled(binder.Window(), field_width));
}

void FieldRows::AddWidget(QWidget& widget) { grid_->addWidget(&widget, row_++, 1, 1, 2); }

void FieldRows::AddLayout(QLayout& layout) { grid_->addLayout(&layout, row_++, 1, 1, 2); }

void FieldRows::AddGap() { grid_->setRowMinimumHeight(row_++, Scaled(binder_.Window(), kGap)); }

QLineEdit* FieldRows::AddPassword(Edit& edit) {
  QLabel* const label = AddLabel(edit.EditLabel);
  QLineEdit* const field = binder_.MakePassword(edit);
  AddField(*field, nullptr);
  KeepPlace(*label);
  KeepPlace(*field);
  return field;
}

QLabel* FieldRows::AddLabel(Label& label) {
  QLabel* const widget = binder_.Make(label);
  grid_->addWidget(widget, row_, 0);
  return widget;
}

void FieldRows::AddField(QWidget& field, QWidget* behind) {
  grid_->addWidget(&field, row_, 1, 1, behind == nullptr ? 2 : 1);
  if (behind != nullptr) grid_->addWidget(behind, row_, 2);
  ++row_;
}

QWidget* FieldRows::MakeBehind(Label& unit) const { return binder_.Make(unit); }

QWidget* FieldRows::MakeBehind(Button& chooser) const {
  QPushButton* const widget = binder_.Make(chooser);
  widget->setFixedWidth(Scaled(*widget, kChooserWidth));
  return widget;
}

}  // namespace dbkeeper::qt
