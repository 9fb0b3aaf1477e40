#include "controls/FnpNumericEdit.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

#include "app/support/Errors.h"
#include "app/support/TextHelpers.h"
#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

constexpr char32_t kCtrlC = 3;
constexpr char32_t kBackspace = 8;
constexpr char32_t kCtrlV = 22;
constexpr char32_t kCtrlX = 24;

constexpr int kMaxDecimals = 9;
constexpr std::size_t kUsualMaxLength = 32767;

bool IsDigit(char32_t key) { return key >= '0' && key <= '9'; }

// Adds one to the last digit of a decimal text, carrying over the point.
void RoundUp(std::string& digits) {
  for (std::size_t at = digits.size(); at-- > 0;) {
    if (digits[at] == '.') continue;
    if (digits[at] != '9') {
      ++digits[at];
      return;
    }
    digits[at] = '0';
  }
  digits.insert(0, 1, '1');
}

}  // namespace

// The text, caret and selection while one action of a person works on them.
class TFnpNumericEdit::Editing {
 public:
  Editing(const TFnpNumericEdit& edit, State state)
      : separator_(static_cast<unsigned char>(edit.separator_)),
        decimals_(static_cast<std::size_t>(edit.decimals_)),
        max_length_(edit.MaxLength == 0 ? kUsualMaxLength : edit.MaxLength),
        text_(std::move(state.text)) {
    selection_.Start = std::min(state.selection.Start, text_.size());
    selection_.Length = std::min(state.selection.Length, text_.size() - selection_.Start);
  }

  State Done() && { return {std::move(text_), selection_}; }

  void KeyPress(char32_t key) {
    const bool had_selection = selection_.Length > 0;
    if (key != separator_) {
      DeleteSelection();
    } else {
      PutCaret(selection_.Start);
    }
    if (key == '-') ToggleSign();
    if (key == separator_ && decimals_ > 0) PutCaret(DecimalStart());
    // Nothing can be typed behind the last decimal place.
    const bool at_end = decimals_ > 0 && selection_.Start == text_.size();
    if (Negative() && selection_.Start == 0) PutCaret(1);
    if (key == kBackspace && !had_selection) Backspace();
    if (IsDigit(key) && !at_end) {
      SelectOverwritten();
      Enter(static_cast<char>(key));
    }
  }

  void DeleteKey() {
    if (selection_.Length > 0) {
      DeleteSelection();
    } else {
      DeleteKeepingFormat(selection_.Start + 1, Direction::kForwards);
    }
  }

  // From its end, one backspace for every selected character.
  void DeleteSelection() {
    const std::size_t count = selection_.Length;
    PutCaret(selection_.End());
    for (std::size_t i = 0; i < count; ++i) {
      DeleteKeepingFormat(selection_.Start, Direction::kBackwards);
    }
  }

 private:
  enum class Direction { kBackwards, kForwards };

  void PutCaret(std::size_t place) { selection_ = {std::min(place, text_.size()), 0}; }
  bool Negative() const { return text_.starts_with('-'); }
  // The place behind the separator, or the text's end where there are no decimals.
  std::size_t DecimalStart() const { return text_.size() - std::min(decimals_, text_.size()); }
  // The place behind the integer part.
  std::size_t IntegerEnd() const {
    const std::size_t start = DecimalStart();
    return decimals_ > 0 && start > 0 ? start - 1 : start;
  }

  void ToggleSign() {
    const std::size_t caret = selection_.Start;
    if (text_.find('-') != std::string::npos) {
      text_.erase(0, 1);
      PutCaret(caret > 0 ? caret - 1 : 0);
    } else {
      text_.insert(0, 1, '-');
      PutCaret(caret + 1);
    }
  }

  // Selects the character that a typed digit takes the place of, if any.
  void SelectOverwritten() {
    const std::size_t caret = selection_.Start;
    if (caret < 3 && Negative() && text_.size() > 1 && text_[1] == '0') {
      selection_ = {1, 1};
    } else if (caret < 2 && text_.starts_with('0')) {
      selection_ = {0, 1};
    } else if (decimals_ > 0 && caret != IntegerEnd()) {
      selection_ = {caret, 1};
    }
  }

  void Enter(char digit) {
    if (text_.size() - selection_.Length >= max_length_) {
      PutCaret(selection_.Start);
      return;
    }
    text_.replace(selection_.Start, selection_.Length, 1, digit);
    PutCaret(selection_.Start + 1);
  }

  void Backspace() {
    // A sign alone is taken away by "-"; only with a selection around it is it deleted.
    if (Negative() && selection_.Start == 1) return;
    DeleteKeepingFormat(selection_.Start, Direction::kBackwards);
  }

  // Deletes the character before `place`.
  void DeleteKeepingFormat(std::size_t place, Direction direction) {
    if (place == 0 || place > text_.size()) return;
    const std::size_t sign = Negative() ? 1 : 0;
    const bool single_digit = IntegerEnd() == sign + 1;
    if (decimals_ > 0 && place > DecimalStart()) {
      text_.erase(place - 1, 1);
      text_ += '0';
      PutCaret(place - 1);
    } else if (decimals_ > 0 && place == DecimalStart()) {
      PutCaret(direction == Direction::kBackwards ? place - 1 : place);
    } else if (single_digit && place == sign + 1) {
      text_[place - 1] = '0';
      PutCaret(1);
    } else {
      text_.erase(place - 1, 1);
      PutCaret(place - 1);
    }
  }

  const char32_t separator_;
  const std::size_t decimals_;
  const std::size_t max_length_;
  std::string text_;
  TextSelection selection_;
};

TFnpNumericEdit::TFnpNumericEdit(std::string name, char decimal_separator, int decimals,
                                 std::string label)
    : Control(std::move(name)),
      EditLabel(LabelName(Name), std::move(label)),
      separator_(decimal_separator),
      decimals_(std::clamp(decimals, 0, kMaxDecimals)) {
  SetValue(0);
}

double TFnpNumericEdit::Value() const {
  std::string number = Trim(Text());
  std::replace(number.begin(), number.end(), separator_, '.');
  double value = 0;
  const char* end = number.data() + number.size();
  const auto [stop, problem] = std::from_chars(number.data(), end, value);
  if (problem != std::errc() || stop != end || !std::isfinite(value)) {
    throw ConvertError("'" + Text() + "' is not a valid floating point value");
  }
  return value;
}

void TFnpNumericEdit::SetValue(double value) {
  Text = Format(value);
  Selection = TextSelection();
  before_last_change_.reset();
}

void TFnpNumericEdit::SetDecimals(int decimals) {
  const double value = Value();
  decimals_ = std::clamp(decimals, 0, kMaxDecimals);
  SetValue(value);
}

// Rounds the shortest text that means the number, half away from zero, so that 2.675 becomes 2.68
// as a reader expects, and not what its binary neighbour says.
std::string TFnpNumericEdit::Format(double value) const {
  if (!std::isfinite(value)) throw ConvertError("The value is no finite number");
  std::vector<char> buffer(1100);  // the longest fixed text of a double has 1,077 characters
  const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::abs(value),
                                  std::chars_format::fixed)
                        .ptr;
  std::string digits(static_cast<const char*>(buffer.data()), end);
  std::size_t point = digits.find('.');
  if (point == std::string::npos) point = digits.size();
  const std::size_t kept = point + (decimals_ > 0 ? 1 + static_cast<std::size_t>(decimals_) : 0);
  const std::size_t next = decimals_ > 0 ? kept : point + 1;
  const bool up = next < digits.size() && digits[next] >= '5';
  if (digits.size() == point && decimals_ > 0) digits += '.';
  digits.resize(kept, '0');
  if (up) RoundUp(digits);
  std::replace(digits.begin(), digits.end(), '.', separator_);
  const bool zero = digits.find_first_of("123456789") == std::string::npos;
  return value < 0 && !zero ? "-" + digits : digits;
}

std::string TFnpNumericEdit::SelectedText() const {
  return Text().substr(std::min(Selection().Start, Text().size()), Selection().Length);
}

void TFnpNumericEdit::Lock(bool locked) {
  ReadOnly = locked;
  Color = locked ? Color::kButtonFace : Color::kWindow;
}

void TFnpNumericEdit::Commit(State state) {
  if (Text == state.text) {
    Selection = state.selection;
    return;
  }
  before_last_change_ = State{Text(), Selection()};
  Text = std::move(state.text);
  Selection = state.selection;
  Raise(OnChange);
}

void TFnpNumericEdit::UserKeyPress(char32_t key) {
  if (!Enabled) return;
  if (OnKeyPress) OnKeyPress(key);
  if (key == 0 || ReadOnly || key == kCtrlC || key == kCtrlV || key == kCtrlX) return;
  Editing editing(*this, {Text(), Selection()});
  editing.KeyPress(key);
  Commit(std::move(editing).Done());
}

void TFnpNumericEdit::UserDeleteKey() {
  if (!Enabled || ReadOnly) return;
  Editing editing(*this, {Text(), Selection()});
  editing.DeleteKey();
  Commit(std::move(editing).Done());
}

std::string TFnpNumericEdit::UserCut() {
  std::string copied = SelectedText();
  if (!copied.empty()) UserDeleteKey();
  return copied;
}

void TFnpNumericEdit::UserPaste(std::string_view text) {
  if (!Enabled || ReadOnly || text.empty()) return;
  Editing editing(*this, {Text(), Selection()});
  editing.DeleteSelection();
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = Utf8Length(text, at);
    char32_t key = Utf8Decode(text.substr(at, length));
    at += length;
    if (OnKeyPress) OnKeyPress(key);
    // A pasted control character is no key that was pressed.
    if (key >= ' ') editing.KeyPress(key);
  }
  Commit(std::move(editing).Done());
}

void TFnpNumericEdit::UserUndo() {
  if (!Enabled || ReadOnly || !before_last_change_) return;
  Commit(*std::exchange(before_last_change_, std::nullopt));
}

void TFnpNumericEdit::UserSelect(std::size_t start, std::size_t length) {
  start = std::min(start, Text().size());
  Selection = TextSelection{start, std::min(length, Text().size() - start)};
}

void TFnpNumericEdit::UserEnter(Entry entry) {
  if (AutoSelect && entry == Entry::kKeyboard) UserSelectAll();
  Raise(OnEnter);
}

void TFnpNumericEdit::UserExit() {
  const bool checked = MinValue() != MaxValue();
  if (checked && (Value() < MinValue() || Value() > MaxValue())) Raise(OnInvalidEntry);
  Raise(OnExit);
}

}  // namespace dbkeeper
