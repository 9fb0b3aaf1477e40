#include "controls/FnpNumericEdit.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/support/Errors.h"

namespace dbkeeper {
namespace {

// What a person does, as one text: characters are typed; '<' is Backspace, '#' Delete, '[' Cut.
void Do(TFnpNumericEdit& edit, const std::string& keys) {
  for (const char key : keys) {
    switch (key) {
      case '<':
        edit.UserKeyPress(8);
        break;
      case '#':
        edit.UserDeleteKey();
        break;
      case '[':
        edit.UserCut();
        break;
      default:
        edit.UserKeyPress(static_cast<unsigned char>(key));
    }
  }
}

// The text with "|" at the caret, or around the selection.
std::string Look(const TFnpNumericEdit& edit) {
  std::string text = edit.Text();
  const TextSelection selection = edit.Selection();
  if (selection.Length > 0) text.insert(selection.End(), "|");
  return text.insert(selection.Start, "|");
}

// Puts such a look in place.
void Put(TFnpNumericEdit& edit, const std::string& look) {
  const std::size_t start = look.find('|');
  const std::size_t end = look.rfind('|');
  std::string text = look;
  text.erase(end, 1);
  if (end != start) text.erase(start, 1);
  edit.Text = text;
  edit.UserSelect(start, end > start ? end - start - 1 : 0);
}

struct Case {
  int decimals;
  const char* before;
  const char* keys;
  const char* after;
};

TEST(FnpNumericEdit, KeepsTheFormatWhateverIsTyped) {
  const Case cases[] = {
      // digits in the integer part
      {2, "|0.00", "5", "5|.00"},
      {2, "0|.00", "5", "5|.00"},
      {2, "5|.00", "7", "57|.00"},
      {2, "|57.00", "9", "9|7.00"},
      {2, "5|7.00", "9", "59|.00"},
      {2, "-|0.00", "5", "-5|.00"},
      {2, "|-0.00", "5", "-5|.00"},
      {2, "-0|.00", "5", "-5|.00"},
      {2, "|-57.00", "9", "-9|7.00"},
      {0, "|0", "42", "42|"},
      {0, "4|2", "7", "47|2"},
      {0, "-|0", "7", "-7|"},
      {0, "-0|", "7", "-7|"},
      // the separator and the decimals
      {2, "|5.00", ".", "5.|00"},
      {2, "5|.00", ".75", "5.75|"},
      {2, "5.|00", "123", "5.12|"},
      {2, "5.00|", "9", "5.00|"},
      {0, "4|2", ".", "4|2"},
      // the sign
      {2, "|5.00", "-", "-|5.00"},
      {2, "5.|00", "--", "5.|00"},
      {2, "|-5.00", "-", "|5.00"},
      {2, "-5.00|", "-", "5.00|"},
      // everything else
      {2, "5|.00", "x ,e+", "5|.00"},
      {2, "|-5.00", "x", "-|5.00"},
      {0, "|-5", ".", "-|5"},
      {2, "5|.00", "\x03\x16\x18\r", "5|.00"},
      // backspace
      {2, "5.7|5", "<", "5.|50"},
      {2, "5.75|", "<", "5.7|0"},
      {2, "5.|75", "<", "5|.75"},
      {2, "5|.00", "<", "0|.00"},
      {2, "-5|.00", "<", "-|0.00"},
      {2, "57|.00", "<", "5|.00"},
      {2, "-57|.00", "<", "-5|.00"},
      {2, "-5|7.00", "<", "-|7.00"},
      {2, "|5.00", "<", "|5.00"},
      {2, "-|5.00", "<", "-|5.00"},
      {2, "|-5.00", "<", "-|5.00"},
      {0, "7|", "<", "0|"},
      {0, "-7|", "<", "-|0"},
      {0, "72|", "<", "7|"},
      // delete
      {2, "5.|75", "#", "5.|50"},
      {2, "5|.75", "#", "5.|75"},
      {2, "|5.75", "#", "0|.75"},
      {2, "|57.00", "#", "|7.00"},
      {2, "-|5.00", "#", "-|0.00"},
      {2, "5.75|", "#", "5.75|"},
      {0, "|7", "#", "0|"},
      {0, "7|2", "#", "7|"},
      // a selection goes once, as if by backspaces from its end
      {2, "5.|75|", "<", "5.|00"},
      {2, "5.|75|", "#", "5.|00"},
      {2, "12|3.4|5", "<", "12|.50"},
      {2, "|123|.45", "<", "0|.45"},
      {2, "|5.00|", "7", "7|.00"},
      // the sign too, when it is selected
      {2, "|-5.00|", "7", "7|.00"},
      {2, "|-57|.00", "<", "|0.00"},
      {2, "|-5|.00", "#", "|0.00"},
      {0, "|-57|", "4", "4|"},
      {2, "-|5.00|", "7", "-7|.00"},
      {2, "|5.00|", "x", "0|.00"},
      {2, "1|23|4.00", "9", "19|.00"},
      {2, "|12|.00", ".", "12.|00"},
      {0, "|123|", "4", "4|"},
      {2, "1|23|.00", "[", "1|.00"},
      {2, "1|23.00", "[", "1|23.00"},
  };
  for (const Case& c : cases) {
    TFnpNumericEdit edit("", '.', c.decimals);
    Put(edit, c.before);
    Do(edit, c.keys);
    EXPECT_EQ(Look(edit), c.after) << c.before << " and " << c.keys;
  }
}

TEST(FnpNumericEdit, PastesThroughTheSameFilter) {
  const struct {
    const char* before;
    const char* pasted;
    const char* after;
  } cases[] = {
      {"|0.00|", "12.34", "12.34|"},
      {"|5.00|", "-1,234.5x\r\n", "-1234.5|0"},
      {"|-5.00|", "-3", "-3|.00"},
      {"|-5.00|", "12.5", "12.5|0"},
      {"5|.00", "", "5|.00"},
      // full-width digits are no digits of the format
      {"5|.00", "１２3", "53|.00"},
      {"5|.00", "\b\b\x18", "5|.00"},
      {"5|.00", "\xff\xfe", "5|.00"},
  };
  for (const auto& c : cases) {
    TFnpNumericEdit edit("", '.');
    Put(edit, c.before);
    edit.UserPaste(c.pasted);
    EXPECT_EQ(Look(edit), c.after) << c.before << " and " << c.pasted;
  }
}

TEST(FnpNumericEdit, ShowsItsValueInTheDisplayFormat) {
  const struct {
    int decimals;
    double value;
    const char* text;
  } cases[] = {
      {2, 0, "0.00"},
      {2, 5, "5.00"},
      {0, 2.5, "3"},
      {2, 2.675, "2.68"},
      {2, -0.004, "0.00"},
      {2, -1.005, "-1.01"},
      {2, 9.999, "10.00"},
      {0, 0.4, "0"},
      {0, 99.5, "100"},
      {9, 1e-9, "0.000000001"},
      {0, 1e15, "1000000000000000"},
  };
  for (const auto& c : cases) {
    TFnpNumericEdit edit("", '.', c.decimals);
    edit.SetValue(c.value);
    EXPECT_EQ(edit.Text(), c.text) << c.value;
  }
  TFnpNumericEdit comma("", ',', 1);
  comma.SetValue(1.5);
  EXPECT_EQ(comma.Text(), "1,5");
  EXPECT_EQ(comma.Value(), 1.5);
}

TEST(FnpNumericEdit, KeepsDecimalsBetweenNoneAndNineAndShowsTheValueAnew) {
  TFnpNumericEdit edit("", '.');
  edit.SetValue(5.25);
  edit.SetDecimals(12);
  EXPECT_EQ(edit.Decimals(), 9);
  EXPECT_EQ(edit.Text(), "5.250000000");
  edit.SetDecimals(-1);
  EXPECT_EQ(edit.Decimals(), 0);
  EXPECT_EQ(edit.Text(), "5");
}

TEST(FnpNumericEdit, RefusesToReadWhatIsNoNumber) {
  for (const char* text : {"", "-", "abc", "1.2.3", "inf", "nan", "1e999"}) {
    TFnpNumericEdit edit("", '.');
    edit.Text = std::string(text);
    EXPECT_THROW(edit.Value(), ConvertError) << text;
  }
}

TEST(FnpNumericEdit, ChecksDifferentBoundsWhenItIsLeft) {
  const struct {
    double low, high, value;
    bool invalid;
  } cases[] = {
      {1, 10, 0, true},     {1, 10, 1, false}, {1, 10, 10, false},
      {1, 10, 10.01, true}, {0, 0, 99, false}, {5, 5, 99, false},
  };
  for (const auto& c : cases) {
    TFnpNumericEdit edit("", '.');
    edit.MinValue = c.low;
    edit.MaxValue = c.high;
    edit.SetValue(c.value);
    std::vector<std::string> events;
    edit.OnInvalidEntry = [&] { events.emplace_back("invalid"); };
    edit.OnExit = [&] { events.emplace_back("exit"); };
    edit.UserExit();
    EXPECT_EQ(events.size(), c.invalid ? 2U : 1U) << c.low << ".." << c.high << " " << c.value;
    EXPECT_EQ(events.back(), "exit");
  }
}

TEST(FnpNumericEdit, SelectsAllWhenItIsEnteredByKeyboardOnly) {
  TFnpNumericEdit edit("", '.');
  edit.UserEnter(TFnpNumericEdit::Entry::kMouse);
  EXPECT_EQ(Look(edit), "|0.00");
  edit.UserEnter(TFnpNumericEdit::Entry::kKeyboard);
  EXPECT_EQ(Look(edit), "|0.00|");
}

TEST(FnpNumericEdit, IsLeftAloneWhileReadOnly) {
  TFnpNumericEdit edit("", '.');
  edit.SetValue(5);
  edit.ReadOnly = true;
  edit.UserSelectAll();
  Do(edit, "7-.<#");
  edit.UserPaste("9");
  EXPECT_EQ(Look(edit), "|5.00|");
  EXPECT_EQ(edit.UserCut(), "5.00");
  EXPECT_EQ(Look(edit), "|5.00|");
}

TEST(FnpNumericEdit, UndoesTheLastChangeAndDoesItAgain) {
  TFnpNumericEdit edit("", '.');
  int changes = 0;
  edit.OnChange = [&] { ++changes; };
  edit.UserPaste("12");
  edit.UserUndo();
  EXPECT_EQ(Look(edit), "|0.00");
  edit.UserUndo();
  EXPECT_EQ(Look(edit), "12|.00");
  EXPECT_EQ(changes, 3);
}

TEST(FnpNumericEdit, LetsItsOwnerDropACharacterFirst) {
  TFnpNumericEdit edit("", '.');
  edit.OnKeyPress = [](char32_t& key) {
    if (key == '7') key = 0;
  };
  Do(edit, "78");
  edit.UserPaste("79");
  EXPECT_EQ(edit.Text(), "89.00");
}

}  // namespace
}  // namespace dbkeeper
