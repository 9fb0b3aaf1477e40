#include "platform/qt/forms/DialogFrame.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {
constexpr int kGap = 8;
}

DialogFrame::DialogFrame(Form& form, const ActionGuard& guard, QWidget* owner)
    : window_(std::make_unique<FormDialog>(form, guard, owner)),
      binder_(guard, *window_),
      rows_(new QVBoxLayout(window_.get())) {
  window_->setObjectName(ToQt(form.Name));
}

void DialogFrame::Add(QLayout* layout) { rows_->addLayout(layout); }

void DialogFrame::Add(QWidget* widget) { rows_->addWidget(widget); }

void DialogFrame::AddButtons(Button& ok, Button& cancel, std::initializer_list<Button*> others) {
  auto* row = new QHBoxLayout;
  for (Button* button : others) row->addWidget(binder_.Make(*button));
  row->addStretch();
  QPushButton* const ok_widget = binder_.Make(ok);
  QPushButton* const cancel_widget = binder_.Make(cancel);
  row->addWidget(ok_widget);
  row->addWidget(cancel_widget);
  window_->SetDefaultButton(*ok_widget);
  window_->SetCancelButton(*cancel_widget);
  rows_->addSpacing(Scaled(*window_, kGap));
  rows_->addLayout(row);
}

std::unique_ptr<QWidget> DialogFrame::Take(DialogSize size) {
  if (size == DialogSize::kFixed) window_->FixSize();
  return std::move(window_);
}

}  // namespace dbkeeper::qt
