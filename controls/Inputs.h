// Controls that hold one value: labels, edits, buttons, boxes and lists to choose from.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/support/DateTimeValue.h"
#include "controls/Control.h"

namespace dbkeeper {

struct Label : Control {
  explicit Label(std::string name = "", std::string caption = "") : Control(std::move(name)) {
    Caption = std::move(caption);
  }

  Property<std::string> Caption;
};

// The name of the label that belongs to a control.
inline std::string LabelName(const std::string& control) { return control + "_Label"; }

// A single-line text with a label of its own.
class Edit : public Control {
 public:
  explicit Edit(std::string name = "", std::string label = "")
      : Control(std::move(name)), EditLabel(LabelName(Name), std::move(label)) {}

  Property<std::string> Text;
  Property<bool> ReadOnly{false};
  Property<dbkeeper::Color> Color{dbkeeper::Color::kWindow};
  Label EditLabel;
  Event OnChange;
  Event OnEnter;
  Event OnExit;  // when it is left with another text

  // Locked: read-only with the button-face colour; otherwise editable with the window colour.
  void Lock(bool locked);
  // What a person types; ignored while read-only or disabled.
  void UserType(std::string text);
  // The keyboard comes here, and goes to another control of the window. Only a text that is another
  // one than at the entry is worth the event of leaving.
  void UserEnter();
  void UserExit();

 private:
  std::string entered_text_;
};

// Whether a button stays down when it is pressed.
enum class ButtonKind { kPush, kToggle };

struct Button : Control {
  explicit Button(std::string name = "", std::string caption = "",
                  ButtonKind kind = ButtonKind::kPush)
      : Control(std::move(name)), Kind(kind) {
    Caption = std::move(caption);
  }

  const ButtonKind Kind;
  Property<std::string> Caption;
  Property<bool> Down{false};
  Event OnClick;

  // A press by mouse or key; a toggle button changes its state before the event.
  void UserClick();
};

struct CheckBox : Control {
  explicit CheckBox(std::string name = "", std::string caption = "", bool checked = false)
      : Control(std::move(name)) {
    Caption = std::move(caption);
    Checked = checked;
  }

  Property<std::string> Caption;
  Property<bool> Checked{false};
  Event OnClick;

  void UserCheck(bool checked);
};

enum class ComboStyle { kEditable, kDropDownList };

// A text with a list of choices. In a drop-down list the text is always the chosen item's.
class ComboBox : public Control {
 public:
  explicit ComboBox(std::string name = "", ComboStyle style = ComboStyle::kDropDownList,
                    std::string label = "");

  const ComboStyle Style;
  StringList Items;
  Property<std::string> Text;
  Label EditLabel;
  Event OnChange;

  // The chosen item, among equal ones the one that was chosen; -1 when there is none.
  int ItemIndex() const;
  // Chooses an item without raising the event; an index out of range chooses none.
  void SetItemIndex(int index);
  // A person chose an item, or typed into an editable box.
  void UserSelect(int index);
  void UserType(std::string text);

 private:
  int chosen_ = -1;
};

struct RadioGroup : Control {
  using Control::Control;

  Property<std::string> Caption;
  StringList Items;
  Property<int> ItemIndex{-1};
  Event OnClick;

  void UserSelect(int index);
};

// A list whose items carry check boxes.
class CheckListBox : public Control {
 public:
  using Control::Control;

  StringList Items;
  Property<std::vector<bool>> Checks;  // as long as Items
  Property<int> ItemIndex{-1};
  Event OnClickCheck;

  void Clear();
  void Add(std::string text, bool checked = false);
  bool Checked(std::size_t index) const { return Checks()[index]; }
  void SetChecked(std::size_t index, bool checked);
  void UserCheck(std::size_t index, bool checked);
};

enum class TextEnd { kStart, kEnd };

// A text of several lines, joined by CR LF, with a label of its own.
class Memo : public Control {
 public:
  explicit Memo(std::string name = "", std::string label = "")
      : Control(std::move(name)), EditLabel(LabelName(Name), std::move(label)) {}

  Property<std::string> Text;
  Property<bool> ReadOnly{false};
  Label EditLabel;
  Event OnChange;
  // The program puts the caret at the text's start or end and scrolls there.
  Signal<TextEnd> CaretRequested;

  std::vector<std::string> Lines() const;
  void SetLines(const std::vector<std::string>& lines);
  void Clear() { Text = std::string(); }
  void UserType(std::string text);
};

// A frame with a title around controls that belong together.
struct GroupBox : Control {
  explicit GroupBox(std::string name = "", std::string caption = "") : Control(std::move(name)) {
    Caption = std::move(caption);
  }

  Property<std::string> Caption;
};

struct Panel : Control {
  using Control::Control;

  Property<int> Height{0};
  Property<int> Width{0};
};

struct StatusBar : Control {
  using Control::Control;

  Property<std::string> SimpleText;
};

class TabControl : public Control {
 public:
  using Control::Control;

  StringList Tabs;
  Property<int> TabIndex{0};  // -1: none is chosen
  Event OnChange;

  void UserSelect(int index);
};

// What a picker lets a person choose.
enum class Picks { kDate, kTime };

struct DateTimePicker : Control {
  explicit DateTimePicker(std::string name = "", Picks kind = Picks::kDate, std::string label = "")
      : Control(std::move(name)), Kind(kind), EditLabel(LabelName(Name), std::move(label)) {}

  const Picks Kind;
  Property<DateTimeValue> Value;
  Label EditLabel;
  Event OnChange;

  void UserPick(const DateTimeValue& value);
};

}  // namespace dbkeeper
