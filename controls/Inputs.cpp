#include "controls/Inputs.h"

#include <algorithm>
#include <utility>

namespace dbkeeper {

void StringList::Add(std::string text) {
  std::vector<std::string> texts = items_();
  texts.push_back(std::move(text));
  items_ = std::move(texts);
}

int StringList::IndexOf(const std::string& text) const {
  const auto& items = items_();
  const auto found = std::find(items.begin(), items.end(), text);
  return found == items.end() ? -1 : static_cast<int>(found - items.begin());
}

void Edit::Lock(bool locked) {
  ReadOnly = locked;
  Color = locked ? Color::kButtonFace : Color::kWindow;
}

void Edit::UserType(std::string text) {
  if (ReadOnly || !Enabled || Text == text) return;
  Text = std::move(text);
  Raise(OnChange);
}

void Edit::UserEnter() {
  entered_text_ = Text;
  Raise(OnEnter);
}

void Edit::UserExit() {
  if (Text == std::exchange(entered_text_, Text())) return;
  Raise(OnExit);
}

void Button::UserClick() {
  if (!Enabled) return;
  if (Kind == ButtonKind::kToggle) Down = !Down();
  Raise(OnClick);
}

void CheckBox::UserCheck(bool checked) {
  if (!Enabled || Checked == checked) return;
  Checked = checked;
  Raise(OnClick);
}

ComboBox::ComboBox(std::string name, ComboStyle style, std::string label)
    : Control(std::move(name)), Style(style), EditLabel(LabelName(Name), std::move(label)) {}

int ComboBox::ItemIndex() const {
  const bool valid = chosen_ >= 0 && static_cast<std::size_t>(chosen_) < Items.Count();
  if (valid && Items[static_cast<std::size_t>(chosen_)] == Text()) return chosen_;
  return Items.IndexOf(Text);
}

void ComboBox::SetItemIndex(int index) {
  const bool valid = index >= 0 && static_cast<std::size_t>(index) < Items.Count();
  chosen_ = valid ? index : -1;
  Text = valid ? Items[static_cast<std::size_t>(index)] : std::string();
}

void ComboBox::UserSelect(int index) {
  if (!Enabled) return;
  SetItemIndex(index);
  Raise(OnChange);
}

void ComboBox::UserType(std::string text) {
  if (!Enabled || Style != ComboStyle::kEditable || Text == text) return;
  Text = std::move(text);
  Raise(OnChange);
}

void RadioGroup::UserSelect(int index) {
  if (!Enabled || ItemIndex == index) return;
  ItemIndex = index;
  Raise(OnClick);
}

void CheckListBox::Clear() {
  Checks = std::vector<bool>();
  Items.Clear();
  ItemIndex = -1;
}

void CheckListBox::Add(std::string text, bool checked) {
  std::vector<bool> checks = Checks();
  checks.push_back(checked);
  Items.Add(std::move(text));
  Checks = std::move(checks);
}

void CheckListBox::SetChecked(std::size_t index, bool checked) {
  std::vector<bool> checks = Checks();
  checks.at(index) = checked;
  Checks = std::move(checks);
}

void CheckListBox::UserCheck(std::size_t index, bool checked) {
  if (!Enabled || Checked(index) == checked) return;
  SetChecked(index, checked);
  Raise(OnClickCheck);
}

std::vector<std::string> Memo::Lines() const {
  std::vector<std::string> lines;
  const std::string& text = Text();
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const bool has_return = end > start && text[end - 1] == '\r';
    lines.push_back(text.substr(start, end - start - (has_return ? 1 : 0)));
    start = end + 1;
  }
  return lines;
}

void Memo::SetLines(const std::vector<std::string>& lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) text += "\r\n";
    text += lines[i];
  }
  Text = std::move(text);
}

void Memo::UserType(std::string text) {
  if (ReadOnly || !Enabled || Text == text) return;
  Text = std::move(text);
  Raise(OnChange);
}

void TabControl::UserSelect(int index) {
  if (!Enabled || TabIndex == index) return;
  TabIndex = index;
  Raise(OnChange);
}

void DateTimePicker::UserPick(const DateTimeValue& value) {
  if (!Enabled || Value == value) return;
  Value = value;
  Raise(OnChange);
}

}  // namespace dbkeeper
