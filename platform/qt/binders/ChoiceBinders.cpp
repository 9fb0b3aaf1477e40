// Buttons, boxes and lists to choose from.
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QFrame>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QWheelEvent>

#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/CellEditor.h"

namespace dbkeeper::qt {

namespace {

// The wheel turns a list that is open; over a closed one it goes to what scrolls around it.
class ChoiceWidget : public QComboBox {
 public:
  explicit ChoiceWidget(QWidget* parent) : QComboBox(parent) { setFocusPolicy(Qt::StrongFocus); }

 protected:
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

void ShowChoice(const ComboBox& box, QComboBox& widget) {
  if (box.Style == ComboStyle::kDropDownList) {
    widget.setCurrentIndex(box.ItemIndex());
  } else if (widget.currentText() != ToQt(box.Text())) {
    widget.setEditText(ToQt(box.Text()));
  }
}

void ShowItems(const ComboBox& box, QComboBox& widget) {
  widget.clear();
  for (const std::string& item : box.Items.All()) widget.addItem(ToQt(item));
  ShowChoice(box, widget);
}

void ShowChecks(const CheckListBox& list, QListWidget& widget) {
  const std::vector<bool>& checks = list.Checks();
  for (int row = 0; row < widget.count(); ++row) {
    const auto index = static_cast<std::size_t>(row);
    const bool checked = index < checks.size() && checks[index];
    widget.item(row)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
  }
}

void ShowItems(const CheckListBox& list, QListWidget& widget) {
  widget.clear();
  for (const std::string& text : list.Items.All()) {
    auto* item = new QListWidgetItem(ToQt(text), &widget);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
  }
  ShowChecks(list, widget);
}

QDateTime ToQtMoment(const DateTimeValue& value) {
  return {QDate(value.year, value.month, value.day), QTime(value.hour, value.minute, value.second)};
}

DateTimeValue FromQtMoment(const QDateTime& value) {
  const QDate date = value.date();
  const QTime time = value.time();
  return {date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second()};
}

}  // namespace

QPushButton* Binder::Make(Button& button) const {
  auto* widget = new QPushButton(&window_);
  // Only the button that the form names answers to Enter.
  widget->setAutoDefault(false);
  widget->setCheckable(button.Kind == ButtonKind::kToggle);
  BindCommon(button, *widget);
  Keep(*widget, button.Caption.Observe(
                    [widget](const std::string& text) { widget->setText(ToQtCaption(text)); }));
  Keep(*widget, button.Down.Observe([widget](bool down) { widget->setChecked(down); }));
  QObject::connect(widget, &QPushButton::clicked, widget, [guard = &guard_, &button, widget] {
    if (FinishTyping()) guard->Run([&] { button.UserClick(); });
    widget->setChecked(button.Down());
  });
  return widget;
}

QPushButton* Binder::MakeTool(Button& button) const {
  QPushButton* const widget = Make(button);
  widget->setFocusPolicy(Qt::NoFocus);
  return widget;
}

QCheckBox* Binder::Make(CheckBox& box) const {
  auto* widget = new QCheckBox(&window_);
  BindCommon(box, *widget);
  Keep(*widget, box.Caption.Observe(
                    [widget](const std::string& text) { widget->setText(ToQtCaption(text)); }));
  Keep(*widget, box.Checked.Observe([widget](bool checked) { widget->setChecked(checked); }));
  QObject::connect(widget, &QCheckBox::clicked, widget,
                   [guard = &guard_, &box, widget](bool checked) {
                     guard->Run([&] { box.UserCheck(checked); });
                     widget->setChecked(box.Checked());
                   });
  return widget;
}

QComboBox* Binder::Make(ComboBox& box) const {
  auto* widget = new ChoiceWidget(&window_);
  const bool editable = box.Style == ComboStyle::kEditable;
  widget->setEditable(editable);
  widget->setInsertPolicy(QComboBox::NoInsert);
  // Completion ignores case and would change what was typed; "(LOCAL)" is not "(local)".
  if (editable) widget->setCompleter(nullptr);
  BindCommon(box, *widget);
  Keep(*widget, box.Items.Observe(
                    [&box, widget](const std::vector<std::string>&) { ShowItems(box, *widget); }));
  Keep(*widget, box.Text.Observe([&box, widget](const std::string&) { ShowChoice(box, *widget); }));
  QObject::connect(widget, &QComboBox::activated, widget, [guard = &guard_, &box, widget](int row) {
    guard->Run([&] { box.UserSelect(row); });
    ShowChoice(box, *widget);
  });
  if (editable) {
    QObject::connect(widget->lineEdit(), &QLineEdit::textEdited, widget,
                     [guard = &guard_, &box, widget](const QString& text) {
                       guard->Run([&] { box.UserType(FromQt(text)); });
                       ShowChoice(box, *widget);
                     });
  }
  return widget;
}

QGroupBox* Binder::Make(RadioGroup& group) const {
  auto* widget = new QGroupBox(&window_);
  auto* layout = new QVBoxLayout(widget);
  auto* choices = new QButtonGroup(widget);
  BindCommon(group, *widget);
  Keep(*widget, group.Caption.Observe(
                    [widget](const std::string& text) { widget->setTitle(ToQtCaption(text)); }));
  const auto show_choice = [&group, choices] {
    const int index = group.ItemIndex();
    // An exclusive group never lets its last pressed button go.
    choices->setExclusive(false);
    for (QAbstractButton* button : choices->buttons()) {
      button->setChecked(choices->id(button) == index);
    }
    choices->setExclusive(true);
  };
  Keep(*widget, group.Items.Observe([=](const std::vector<std::string>& items) {
    for (QAbstractButton* button : choices->buttons()) {
      choices->removeButton(button);
      button->hide();
      // Later: it may be the one whose click is being handled.
      button->deleteLater();
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
      auto* button = new QRadioButton(ToQtCaption(items[i]), widget);
      layout->addWidget(button);
      choices->addButton(button, static_cast<int>(i));
    }
    show_choice();
  }));
  Keep(*widget, group.ItemIndex.Observe([show_choice](int) { show_choice(); }));
  QObject::connect(choices, &QButtonGroup::idClicked, widget,
                   [guard = &guard_, &group, show_choice](int index) {
                     guard->Run([&] { group.UserSelect(index); });
                     show_choice();
                   });
  return widget;
}

QListWidget* Binder::Make(CheckListBox& list) const {
  auto* widget = new QListWidget(&window_);
  BindCommon(list, *widget);
  // Set while the program changes the items: the widget tells every change of an item alike.
  auto mirroring = std::make_shared<bool>(false);
  const auto mirror = [mirroring](auto show) {
    *mirroring = true;
    show();
    *mirroring = false;
  };
  Keep(*widget, list.Items.Observe([=, &list](const std::vector<std::string>&) {
    mirror([&] { ShowItems(list, *widget); });
  }));
  Keep(*widget, list.Checks.Observe([=, &list](const std::vector<bool>&) {
    mirror([&] { ShowChecks(list, *widget); });
  }));
  Keep(*widget,
       list.ItemIndex.Observe([=](int index) { mirror([&] { widget->setCurrentRow(index); }); }));
  QObject::connect(widget, &QListWidget::itemChanged, widget,
                   [=, guard = &guard_, &list](const QListWidgetItem* item) {
                     if (*mirroring) return;
                     const auto row = static_cast<std::size_t>(widget->row(item));
                     const bool checked = item->checkState() == Qt::Checked;
                     guard->Run([&] { list.UserCheck(row, checked); });
                     mirror([&] { ShowChecks(list, *widget); });
                   });
  QObject::connect(widget, &QListWidget::currentRowChanged, widget, [mirroring, &list](int row) {
    if (!*mirroring) list.ItemIndex = row;
  });
  return widget;
}

QGroupBox* Binder::Make(GroupBox& group) const {
  auto* widget = new QGroupBox(&window_);
  BindCommon(group, *widget);
  Keep(*widget, group.Caption.Observe(
                    [widget](const std::string& text) { widget->setTitle(ToQtCaption(text)); }));
  return widget;
}

QFrame* Binder::Make(Panel& panel) const {
  auto* widget = new QFrame(&window_);
  BindCommon(panel, *widget);
  Keep(*widget, panel.Height.Observe([widget](int height) {
    if (height > 0) widget->setFixedHeight(Scaled(*widget, height));
  }));
  Keep(*widget, panel.Width.Observe([widget](int width) {
    if (width > 0) widget->setFixedWidth(Scaled(*widget, width));
  }));
  return widget;
}

QDateTimeEdit* Binder::Make(DateTimePicker& picker) const {
  auto* widget = new QDateTimeEdit(&window_);
  const bool date = picker.Kind == Picks::kDate;
  widget->setDisplayFormat(date ? "yyyy/MM/dd" : "HH:mm:ss");
  widget->setCalendarPopup(date);
  BindCommon(picker, *widget);
  const auto show = [&picker, widget] {
    const QSignalBlocker quiet(widget);
    widget->setDateTime(ToQtMoment(picker.Value()));
  };
  Keep(*widget, picker.Value.Observe([show](const DateTimeValue&) { show(); }));
  QObject::connect(widget, &QDateTimeEdit::dateTimeChanged, widget,
                   [guard = &guard_, &picker, show](const QDateTime& value) {
                     guard->Run([&] { picker.UserPick(FromQtMoment(value)); });
                     show();
                   });
  return widget;
}

}  // namespace dbkeeper::qt
