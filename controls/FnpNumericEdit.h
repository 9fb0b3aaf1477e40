// The numeric edit: a single-line box whose text is a decimal number of a fixed display format, and
// is the only place where the value is kept. What is typed, deleted or pasted keeps the format.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "controls/Control.h"
#include "controls/Inputs.h"

namespace dbkeeper {

enum class TextAlignment { kLeft, kRight, kCenter };

// A stretch of a text, in characters; the caret where nothing is selected.
struct TextSelection {
  std::size_t Start = 0;
  std::size_t Length = 0;
  std::size_t End() const { return Start + Length; }
  bool operator==(const TextSelection&) const = default;
};

class TFnpNumericEdit : public Control {
 public:
  // By what the keyboard focus came.
  enum class Entry { kKeyboard, kMouse };

  // The separator is the host's.
  TFnpNumericEdit(std::string name, char decimal_separator, int decimals = 2,
                  std::string label = "");

  Property<std::string> Text;
  Property<TextSelection> Selection;
  Property<TextAlignment> Alignment{TextAlignment::kRight};
  Property<bool> ReadOnly{false};
  Property<dbkeeper::Color> Color{dbkeeper::Color::kWindow};
  // The bounds are looked at when the box is left, and only when they differ; they never change the
  // text.
  Property<double> MaxValue{0};
  Property<double> MinValue{0};
  bool AutoSelect = true;
  // The longest text that can be typed, in characters; 0 for the usual limit of an edit box.
  std::size_t MaxLength = 0;
  Label EditLabel;

  Event OnInvalidEntry;  // the box is left with a value out of its bounds
  Event OnChange;
  Event OnEnter;
  Event OnExit;
  // Sees each typed or pasted character first, and may change it or put 0 in its place to drop it.
  std::function<void(char32_t& key)> OnKeyPress;

  // Throws ConvertError when the text is no decimal number.
  double Value() const;
  // Shows the number in the display format, unchecked against the bounds. Throws ConvertError for
  // what is no finite number.
  void SetValue(double value);
  int Decimals() const { return decimals_; }
  // 0 to 9; what is outside is brought inside. Shows the present value anew; throws like Value.
  void SetDecimals(int decimals);
  std::string_view Version() const { return "1.00.01"; }
  std::string SelectedText() const;
  // Locked: read-only with the button-face colour; otherwise editable with the window colour.
  void Lock(bool locked);

  // What a person does.
  // A character arrives: printable, Backspace (8), or the codes of Ctrl+C, Ctrl+V and Ctrl+X, whose
  // work the three calls further below do.
  void UserKeyPress(char32_t key);
  void UserDeleteKey();
  // Gives the text for the clipboard.
  std::string UserCut();
  void UserPaste(std::string_view text);
  // Takes the last change of the text back, and a second time puts it there again.
  void UserUndo();
  // Caret and selection moves; what reaches past the text is cut off.
  void UserSelect(std::size_t start, std::size_t length);
  void UserSelectAll() { UserSelect(0, Text().size()); }
  void UserEnter(Entry entry);
  void UserExit();

 private:
  struct State {
    std::string text;
    TextSelection selection;
  };
  class Editing;

  void Commit(State state);
  std::string Format(double value) const;

  const char separator_;
  int decimals_;
  std::optional<State> before_last_change_;
};

}  // namespace dbkeeper
