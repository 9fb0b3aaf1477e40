#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "query/ScriptFile.h"
#include "tests/query/QueryFixture.h"

namespace dbkeeper {
namespace {

namespace fs = std::filesystem;
using testing::FileBytes;
using testing::PutFile;
using testing::QueryFixture;
using Texts = std::vector<std::string>;

class ScriptTest : public QueryFixture {
 protected:
  void Drop(const std::string& bytes) {
    PutFile(folder / "s.sql", bytes);
    DropFile(folder / "s.sql");
  }
  void DropFile(const fs::path& file) {
    app.Guard().Run([&] { window.FilesDropped({file.string(), "ignored"}); });
  }
};

TEST(ScriptSeparator, IsRecognisedByItsFirstNineCharacters) {
  struct Case {
    const char* line;
    const char* label;  // null: an ordinary line
    int step;
  };
  const Case cases[] = {
      {"/* COM01:create tables */", "01:create tables", 1},
      {"/* COM07:日本 */", "07:日本", 7},
      {"/* COM12:x", "1", 12},
      {"/* COM99:", "", 99},
      {"/* COM1:x */", nullptr, 0},
      {"/* com01:x */", nullptr, 0},
      {" /* COM01:x */", nullptr, 0},
      {"/* COM01x */", nullptr, 0},
      {"/* COM", nullptr, 0},
      {"", nullptr, 0},
  };
  for (const Case& c : cases) {
    const auto separator = ParseSeparator(c.line);
    EXPECT_EQ(separator.has_value(), c.label != nullptr) << c.line;
    if (!separator) continue;
    EXPECT_EQ(separator->label, c.label) << c.line;
    EXPECT_EQ(separator->step, c.step) << c.line;
  }
}

TEST(ScriptBatches, AreDividedByLinesOfTheOneWordGo) {
  const struct {
    const char* text;
    Texts batches;
  } cases[] = {
      {"", {""}},
      {" \r\n", {" \r\n"}},
      {"select 1\r\n", {"select 1\r\n"}},
      {"going\r\ngo on\r\n-- go", {"going\r\ngo on\r\n-- go"}},
      {"a\r\nb\r\ngo\r\nc", {"a\r\nb", "c"}},
      {"a\r\n GO \r\n\r\ngo\r\n\r\nGo", {"a"}},
      {"go", {""}},
  };
  for (const auto& each : cases) EXPECT_EQ(Batches(each.text), each.batches) << each.text;
}

TEST_F(ScriptTest, BatchesRunOneByOneWhateverBecomesOfThoseBefore) {
  connection.Answer("two", {.affected = 2});
  connection.Answer("three", {.affected = 3});
  Run("two\r\ngo\r\nthree\r\ngo\r\n", window.SpeedButton3);
  EXPECT_EQ(connection.statements, (Texts{"two", "three"}));
  EXPECT_EQ(window.Caption(), "RowsAffected : 5");
  connection.statements.clear();
  connection.Fail("three", "no such user");
  Run("three\r\ngo\r\ntwo\r\ngo\r\nthree\r\ngo\r\ntwo", window.SpeedButton3);
  EXPECT_EQ(connection.statements, (Texts{"three", "two", "three", "two"}));
  EXPECT_EQ(fake.dialogs.errors, Texts{"no such user\r\nno such user"});
  std::string many;
  for (int i = 0; i < 25; ++i) many += "three\r\ngo\r\n";
  Run(many, window.SpeedButton3);
  const std::string& told = fake.dialogs.errors.back();
  EXPECT_TRUE(told.ends_with("no such user\r\n(以下 15 件のメッセージは省略しました)")) << told;
}

TEST_F(ScriptTest, OpenShowsTheRowsOfTheLastBatch) {
  connection.Answer("select", {testing::TextFields({"a"}), {{"1"}}});
  Run("use x\r\ngo\r\nselect a", window.Sbtn_Select);
  EXPECT_EQ(connection.statements, (Texts{"use x", "select a"}));
  EXPECT_TRUE(window.Sbtn_Select.Down);
  Press(window.Sbtn_Select);
  connection.Fail("use x", "no such database");
  connection.statements.clear();
  Run("use x\r\ngo\r\nuse y\r\ngo\r\nselect a", window.Sbtn_Select);
  EXPECT_EQ(connection.statements, (Texts{"use x", "use y"}));
  EXPECT_EQ(fake.dialogs.errors, Texts{"no such database"});
  EXPECT_FALSE(window.Sbtn_Select.Down);
}

TEST_F(ScriptTest, ADropLoadsTheTextBeforeTheStepsAndStepOne) {
  Drop("use x\r\n/* COM01:one */\r\na\r\n\r\nb\r\n/* COM02:two */\r\nc\r\n/* COM03:x */\r\nd");
  EXPECT_EQ(window.MemoSQL.Text(), "use x\r\na\r\n\r\nb");
  EXPECT_TRUE(window.Panel_SQL_CmdSet.Visible);
  EXPECT_EQ(window.CmbBox_CmdSet.Items.All(), (Texts{"01:one", "02:two", "03:x"}));
  EXPECT_EQ(window.CmbBox_CmdSet.Text(), "01:one");
  window.CmbBox_CmdSet.UserSelect(1);
  Press(window.SBtn_CmdSetSet);
  EXPECT_EQ(window.MemoSQL.Text(), "c");
  window.CmbBox_CmdSet.UserSelect(0);
  Press(window.SBtn_CmdSetSet);
  EXPECT_EQ(window.MemoSQL.Text(), "a\r\n\r\nb");
  Press(window.Sbtn_TableClose);
  EXPECT_FALSE(window.Panel_SQL_CmdSet.Visible);
  EXPECT_EQ(window.CmbBox_CmdSet.Items.Count(), 3U);
}

TEST_F(ScriptTest, StepsAreTakenByTheirPlaceAndNotByTheirNumber) {
  Drop("/* COM07:same */\r\na\r\n/* COM02:same */\r\nb\r\n");
  EXPECT_EQ(window.MemoSQL.Text(), "");
  window.CmbBox_CmdSet.UserSelect(1);
  Press(window.SBtn_CmdSetSet);
  EXPECT_EQ(window.MemoSQL.Text(), "b");
  window.CmbBox_CmdSet.UserSelect(0);
  Press(window.SBtn_CmdSetSet);
  EXPECT_EQ(window.MemoSQL.Text(), "");
}

TEST_F(ScriptTest, WithoutAStepSetDoesNothing) {
  window.MemoSQL.Text = std::string("text");
  Press(window.SBtn_CmdSetSet);
  EXPECT_EQ(window.MemoSQL.Text(), "text");
  Drop("plain");
  EXPECT_FALSE(window.Panel_SQL_CmdSet.Visible);
  Press(window.SBtn_CmdSetSet);
  EXPECT_EQ(window.MemoSQL.Text(), "plain");
}

TEST_F(ScriptTest, ReadsEveryEncodingOrRefuses) {
  struct Case {
    std::string bytes;
    const char* text;  // null: refused
  };
  const Case cases[] = {
      {"", ""},
      {"select 'a'\n", "select 'a'"},
      {"\x93\xfa\x96\x7b", "日本"},                          // Shift-JIS
      {"日本", "日本"},                                      // UTF-8
      {"\xEF\xBB\xBF日本", "日本"},                          // with its mark
      {std::string("\xFF\xFE\xE5\x65\x2C\x67", 6), "日本"},  // UTF-16, both ways
      {std::string("\xFE\xFF\x65\xE5\x67\x2C", 6), "日本"},
      {std::string("\xFF\xFE\x3D\xD8\x00\xDE", 6), "😀"},
      {std::string("\xFF\xFE\x3D\xD8", 4), nullptr},  // half a character
      {std::string("\xFF\xFE\x3D", 3), nullptr},
      {std::string("a\0b", 3), nullptr},
      {"\xEF\xBB\xBF\x80", nullptr},
      {"\xFF\x80", nullptr},
  };
  for (const Case& c : cases) {
    fake.dialogs.errors.clear();
    Drop(c.bytes);
    EXPECT_EQ(fake.dialogs.errors.empty(), c.text != nullptr) << c.bytes;
    EXPECT_EQ(window.MemoSQL.Text(), c.text == nullptr ? "" : c.text);
  }
}

TEST_F(ScriptTest, AFileThatCannotBeReadIsToldWithTheEditorCleared) {
  PutFile(folder / "huge.sql", "x");
  fs::resize_file(folder / "huge.sql", 200 << 20);
  for (const fs::path& file : {folder / "missing.sql", folder.Path(), folder / "huge.sql",
                               folder / std::string(300, 'x')}) {
    window.MemoSQL.Text = std::string("text");
    fake.dialogs.errors.clear();
    DropFile(file);
    EXPECT_EQ(fake.dialogs.errors.size(), 1U) << file;
    EXPECT_EQ(window.MemoSQL.Text(), "") << file;
  }
}

TEST_F(ScriptTest, TheEditorsMenuOpensAFileTheSameWay) {
  PutFile(folder / "s.sql", "/* COM01:one */\r\na");
  fake.dialogs.paths.emplace_back((folder / "s.sql").string());
  Choose(window.PopupMenu_Memo, "PopupMenu_Memo_Open");
  EXPECT_EQ(window.MemoSQL.Text(), "a");
  EXPECT_TRUE(window.Panel_SQL_CmdSet.Visible);
}

class TemplateTest : public QueryFixture {
 protected:
  void Save(const std::string& name, const std::string& text) {
    window.CmbBox_Template.UserType(name);
    window.MemoSQL.Text = text;
    Press(window.Sbtn_Template_Save);
  }
  fs::path File(const std::string& name) { return folder / ("template/TMP_" + name + ".txt"); }
};

TEST_F(TemplateTest, TheStripIsShownWhileItsButtonIsDown) {
  EXPECT_FALSE(window.Panel_Template.Visible);
  Press(window.Sbtn_Template);
  EXPECT_TRUE(window.Panel_Template.Visible);
  Press(window.Sbtn_Template);
  EXPECT_FALSE(window.Panel_Template.Visible);
}

TEST_F(TemplateTest, SavesTheEditorsLinesAndLoadsThem) {
  Save("日本_1", "select 'あ'\r\n\r\n");
  EXPECT_EQ(FileBytes(File("sales_日本_1")), "select '\x82\xa0'\r\n\r\n\r\n");
  EXPECT_EQ(window.CmbBox_Template.Items.All(), Texts{"日本_1"});
  window.MemoSQL.Clear();
  Press(window.Sbtn_Template_Load);
  EXPECT_EQ(window.MemoSQL.Text(), "select 'あ'\r\n\r\n");
}

TEST_F(TemplateTest, AnExistingTemplateIsKeptByYesAndOverwrittenByNo) {
  Save("a", "one");
  fake.dialogs.answers = {Answer::kYes};
  Save("a", "two");
  EXPECT_EQ(FileBytes(File("sales_a")), "one\r\n");
  ASSERT_EQ(fake.dialogs.questions.size(), 1U);
  const Question& question = fake.dialogs.questions.front();
  EXPECT_EQ(question.text, "既に同名のテンプレートが存在します。\r上書きしますか？");
  EXPECT_EQ(question.caption, "確認");
  EXPECT_EQ(question.buttons, Buttons::kYesNo);
  EXPECT_EQ(question.default_answer, Answer::kNo);
  fake.dialogs.answers = {Answer::kNo};
  Save("a", "three");
  EXPECT_EQ(FileBytes(File("sales_a")), "three\r\n");
  EXPECT_EQ(window.CmbBox_Template.Items.Count(), 1U);
}

TEST_F(TemplateTest, RefusesWhatCannotNameAFileBeforeOneIsTouched) {
  for (const std::string& name :
       {std::string(), std::string("a/b"), std::string("a\\b"), std::string(".."),
        std::string("../../x"), std::string("a\nb"), std::string(300, 'x')}) {
    fake.dialogs.messages.clear();
    Save(name, "text");
    Press(window.Sbtn_Template_Load);
    ASSERT_EQ(fake.dialogs.messages.size(), 2U) << name;
    if (name.empty()) {
      EXPECT_EQ(fake.dialogs.messages[0], "テンプレート名を入力してください。");
    }
    EXPECT_TRUE(fs::is_empty(folder / "template")) << name;
    EXPECT_EQ(window.MemoSQL.Text(), "text");
  }
  window.CmbBox_Template.UserType("none");
  Press(window.Sbtn_Template_Load);
  EXPECT_EQ(fake.dialogs.messages.back(), "テンプレート・ファイルが存在しません。");
}

TEST_F(TemplateTest, ATextThatTheCodePageLacksIsToldAndNotWritten) {
  Save("a", "naïve");
  EXPECT_EQ(fake.dialogs.errors.size(), 1U);
  EXPECT_FALSE(fs::exists(File("sales_a")));
}

TEST_F(TemplateTest, SearchListsTheTemplatesOfTheChosenDatabase) {
  for (const char* name : {"sales_a", "sales_b_c", "other_d", "sales_e"}) PutFile(File(name), "");
  PutFile(folder / "template/TMP_sales_f.sql", "");
  PutFile(folder / "template/TMP_sales.txt", "");
  window.CmbBox_Template.UserType("typed");
  Press(window.Sbtn_Template_Serch);
  EXPECT_EQ(window.CmbBox_Template.Text(), "");
  Texts names = window.CmbBox_Template.Items.All();
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (Texts{"a", "b_c", "e"}));
}

}  // namespace
}  // namespace dbkeeper
