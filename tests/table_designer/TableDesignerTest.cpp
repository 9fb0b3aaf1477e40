// The table designer: what its fields allow, and the statements that its pages send.
#include <gtest/gtest.h>

#include "app/support/Errors.h"
#include "table_designer/Unit_Table.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::TextFields;
using testing::WorkbenchFixture;

using Texts = std::vector<std::string>;

class TableDesignerTest : public ::testing::Test, protected WorkbenchFixture {
 protected:
  TableDesignerTest() {
    connection.Answer(".dbo.sysobjects", {TextFields({"name", "xtype", "crdate"}), {}});
  }
  void OpenNew() {
    form.SetUp("sales");
    form.Open();
  }
  void OpenExisting() {
    form.SetUp("sales", "note", "logical", "T");
    form.Open();
    connection.statements.clear();
  }
  void Type(const std::string& name, const std::string& type, double size = 0, double scale = 0) {
    form.Edit_Column_Name.UserType(name);
    form.ComboBox_Column_Type.UserSelect(form.ComboBox_Column_Type.Items.IndexOf(type));
    form.Fne_Column_Size.SetValue(size);
    form.Fne_Column_MinSize.SetValue(scale);
  }
  void Register() { form.SBtn_Columns_Update.UserClick(); }
  // What a command sent up to the reading of its list.
  Texts Sent() const {
    Texts sent;
    for (const std::string& statement : connection.statements) {
      if (statement.find("sysobjects") != std::string::npos) break;
      sent.push_back(statement);
    }
    return sent;
  }
  Texts Cells(std::size_t row) const {
    Texts cells;
    const ListItem& item = form.ListView.Items().at(row);
    for (std::size_t cell = 0; cell < item.CellCount(); ++cell) cells.emplace_back(item.Cell(cell));
    return cells;
  }
  void GoTo(int page) { form.TabControl1.UserSelect(page); }
  void Agree() { fake.dialogs.answers = {Answer::kOk}; }

  TForm_Table form{workbench};
};

TEST_F(TableDesignerTest, TheTypeDecidesWhichNumbersMayBeGiven) {
  struct Case {
    const char* type;
    bool size, scale, identity;
  };
  const Case cases[] = {
      {"datetime", false, false, false},  {"binary", false, false, false},
      {"varbinary", false, false, false}, {"varchar", true, false, false},
      {"nchar", true, false, false},      {"int", false, false, true},
      {"tinyint", false, false, true},    {"decimal", true, true, false},
      {"money", true, true, false},       {"sysname", true, true, true},
  };
  OpenNew();
  EXPECT_EQ(form.ComboBox_Column_Type.Items.Count(), 26u);
  for (const Case& each : cases) {
    form.SBtn_Columns_New.UserClick();
    form.Fne_Column_Size.SetValue(7);
    Type("c", each.type);
    EXPECT_EQ(form.Fne_Column_Size.ReadOnly(), !each.size) << each.type;
    EXPECT_EQ(form.Fne_Column_MinSize.ReadOnly(), !each.scale) << each.type;
    EXPECT_EQ(form.Fne_Column_Ide_Start.ReadOnly(), !each.identity) << each.type;
    EXPECT_EQ(form.Fne_Column_Ide_Step.ReadOnly(), !each.identity) << each.type;
  }
}

TEST_F(TableDesignerTest, ANewTableIsDesignedInTheListAndCreatedWhole) {
  options.Advanced = true;
  OpenNew();
  form.Edit_TableName.UserType("T");
  Type("id", "int");
  form.CheckBox_Column_nullable.UserCheck(false);
  form.Fne_Column_Ide_Start.SetValue(1);
  form.Fne_Column_Ide_Step.SetValue(1);
  Register();
  Type("price", "decimal", 10, 2);
  form.Edit_Column_Default.UserType("(0)");
  form.Edit_Column_Comment.UserType("値段");
  form.Edit_Column_Note.UserType("n");
  Register();
  Type("gone", "varchar", 20);
  Register();
  EXPECT_EQ(connection.statements, Texts{});
  EXPECT_EQ(Cells(0), (Texts{"id", "int", "0", "-", "1,1", "", "", ""}));
  EXPECT_EQ(Cells(1), (Texts{"price", "decimal", "10.2", "null", "", "(0)", "値段", "n"}));

  // The type of a row that stands stays; what is behind it is written.
  form.ListView.UserSelect({2});
  EXPECT_TRUE(form.Edit_Column_Name.ReadOnly());
  EXPECT_EQ(form.Fne_Column_Size.Value(), 20);
  Type("gone", "char", 5);
  Register();
  EXPECT_EQ(Cells(2), (Texts{"gone", "varchar", "5", "null", "", "", "", ""}));
  form.ListView.UserSelect({2});
  form.SBtn_Columns_Drop.UserClick();
  ASSERT_EQ(form.ListView.Items().size(), 2u);

  // The rows survive another page.
  GoTo(1);
  EXPECT_EQ(form.ListView.Items().size(), 0u);
  GoTo(0);
  ASSERT_EQ(form.ListView.Items().size(), 2u);

  form.SBtn_Create.UserClick();
  EXPECT_EQ(Sent(), (Texts{"use [sales]",
                           "create table [T](\r\n"
                           "    [id                              ] int               not null  "
                           "identity(1,1),\r\n"
                           "    [price                           ] decimal          (10,2) null   "
                           "   default (0))",
                           "execute sp_addextendedproperty 'MS_Description', '値段','user', 'dbo', "
                           "'table',[T], 'column', 'price'"}));
  EXPECT_FALSE(form.Visible);
}

TEST_F(TableDesignerTest, AFailedCreationKeepsTheDesign) {
  OpenNew();
  form.Edit_TableName.UserType("T");
  Type("id", "int");
  Register();
  connection.Fail("create table", "no");
  EXPECT_THROW(form.SBtn_Create.UserClick(), ServerError);
  EXPECT_TRUE(form.Visible);
  EXPECT_EQ(form.ListView.Items().size(), 1u);
}

TEST_F(TableDesignerTest, AColumnIsAddedToATableLineByLine) {
  struct Case {
    const char* type;
    double size, scale, start, step;
    const char* default_value;
    const char* statement;
  };
  const Case cases[] = {
      {"varchar", 20, 0, 0, 0, "('x')",
       "alter table [T]  add c varchar\r\n(20\r\n)\r\n null \r\n default ('x') "},
      {"decimal", 10, 0, 0, 0, "", "alter table [T]  add c decimal\r\n(10\r\n)\r\n null "},
      {"decimal", 10, 2, 0, 0, "", "alter table [T]  add c decimal\r\n(10\r\n,2\r\n)\r\n null "},
      {"int", 0, 0, 100, 1, "", "alter table [T]  add c int\r\n null \r\n identity(100,1)"},
      {"int", 0, 0, 100, 0, "", "alter table [T]  add c int\r\n null "},
  };
  OpenExisting();
  for (const Case& each : cases) {
    connection.statements.clear();
    Type("c", each.type, each.size, each.scale);
    form.Fne_Column_Ide_Start.SetValue(each.start);
    form.Fne_Column_Ide_Step.SetValue(each.step);
    form.Edit_Column_Default.UserType(each.default_value);
    Agree();
    Register();
    EXPECT_EQ(fake.dialogs.questions.back().text, "Field:c を追加します。　宜しいですか？");
    EXPECT_EQ(fake.dialogs.questions.back().caption, "注意");
    ASSERT_GE(connection.statements.size(), 2u);
    EXPECT_EQ(connection.statements[0], "use [sales]");
    EXPECT_EQ(connection.statements[1], each.statement);
    EXPECT_EQ(status.SimpleText(), " >alter table [T]  add c " + std::string(each.type));
    EXPECT_EQ(form.Edit_Column_Name.Text(), "");
  }
  connection.statements.clear();
  Type("c", "int");
  Register();  // cancelled
  EXPECT_EQ(connection.statements, Texts{});
  EXPECT_EQ(form.Edit_Column_Name.Text(), "c");
}

TEST_F(TableDesignerTest, DescriptionsFollowWhatTheRowHeldBefore) {
  struct Case {
    const char* comment;  // of the row
    const char* note;
    const char* new_comment;
    const char* new_note;
    Texts sent;
  };
  const std::string add = "execute sp_addextendedproperty '";
  const std::string update = "execute sp_updateextendedproperty '";
  const std::string drop = "execute sp_dropextendedproperty '";
  const std::string column = "'user', 'dbo', 'table',[T], 'column', 'c'";
  const Case cases[] = {
      {"", "", "", "", {}},
      {"", "", "a", "", {add + "MS_Description', 'a'," + column}},
      {"a", "", "b", "", {update + "MS_Description', 'b'," + column}},
      {"a", "", "", "", {drop + "MS_Description', " + column}},
      {"", "", "", "n", {add + "Note', 'n'," + column}},
      {"", "n", "", "m", {update + "Note', 'm'," + column}},
      {"", "n", "", "", {drop + "Note', " + column}},
      {"a", "n", "b", "", {update + "MS_Description', 'b'," + column, drop + "Note', " + column}},
  };
  options.Advanced = true;
  OpenExisting();
  for (const Case& each : cases) {
    form.ListView.ClearItems();
    form.ListView.AddItem({"c", "varchar", "20", "-", "", "", each.comment, each.note});
    form.ListView.UserSelect({0});
    form.Edit_Column_Comment.UserType(each.new_comment);
    form.Edit_Column_Note.UserType(each.new_note);
    connection.statements.clear();
    Agree();
    Register();
    Texts expected = {"use [sales]", "alter table [T] alter column c varchar(20) not null"};
    expected.insert(expected.end(), each.sent.begin(), each.sent.end());
    ASSERT_GE(connection.statements.size(), expected.size());
    EXPECT_EQ(Texts(connection.statements.begin(),
                    connection.statements.begin() + static_cast<std::ptrdiff_t>(expected.size())),
              expected);
  }
}

// Deliberately the comment's text, and then the row's rule.
TEST_F(TableDesignerTest, TheNoteOfAnAddedColumnIsAddedTwice) {
  options.Advanced = true;
  OpenExisting();
  Type("c", "int");
  form.Edit_Column_Comment.UserType("com");
  form.Edit_Column_Note.UserType("note");
  Agree();
  Register();
  const std::string column = "'user', 'dbo', 'table',[T], 'column', 'c'";
  const Texts expected = {"use [sales]", "alter table [T]  add c int\r\n null ",
                          "execute sp_addextendedproperty 'MS_Description', 'com'," + column,
                          "execute sp_addextendedproperty 'Note', 'com'," + column,
                          "execute sp_addextendedproperty 'Note', 'note'," + column};
  ASSERT_GE(connection.statements.size(), expected.size());
  EXPECT_EQ(Texts(connection.statements.begin(), connection.statements.begin() + 5), expected);
}

TEST_F(TableDesignerTest, AColumnIsDroppedWhenTheOperatorAgrees) {
  OpenExisting();
  form.ListView.AddItem({"c", "int", "0", "-", "", "", ""});
  form.SBtn_Columns_Drop.UserClick();  // nothing is selected
  form.ListView.UserSelect({0});
  form.SBtn_Columns_Drop.UserClick();  // cancelled
  EXPECT_EQ(connection.statements, Texts{});
  Agree();
  form.SBtn_Columns_Drop.UserClick();
  EXPECT_EQ(fake.dialogs.questions.back().text,
            "Field:c を削除してよろしいですか?\r ※ データも消えてしまいます。　宜しいですか？");
  ASSERT_GE(connection.statements.size(), 2u);
  EXPECT_EQ(connection.statements[1], "alter table [T] drop column c");
}

TEST_F(TableDesignerTest, TheTablesOwnTextsAreAddedChangedAndDropped) {
  struct Case {
    bool exists;
    const char* text;
    const char* sent;  // null: nothing
  };
  const Case cases[] = {
      {false, "", nullptr},
      {false, "x",
       "execute sp_addextendedproperty 'MS_Description', 'x','user', 'dbo', 'table','T'"},
      {true, "x",
       "execute sp_updateextendedproperty 'MS_Description', 'x','user', 'dbo', 'table','T'"},
      {true, "", "execute sp_dropextendedproperty 'MS_Description', 'user', 'dbo', 'table','T'"},
  };
  OpenExisting();
  form.Edit_Note.UserType("");
  for (const Case& each : cases) {
    connection.Answer("'MS_Description'", {TextFields({"name"}), {}});
    if (each.exists) connection.Answer("name = 'MS_Description'", {TextFields({"name"}), {{"x"}}});
    connection.statements.clear();
    form.Edit_Description.UserType(each.text);
    form.SbtnTblInfoUpdate.UserClick();
    Texts expected = {"use [sales]",
                      "SELECT *  FROM ::fn_listextendedproperty (NULL, 'user', 'dbo', 'table', "
                      "'T', default, default) where name = 'MS_Description'"};
    if (each.sent != nullptr) expected.emplace_back(each.sent);
    expected.emplace_back(
        "SELECT *  FROM ::fn_listextendedproperty (NULL, 'user', 'dbo', 'table', 'T', default, "
        "default) where name = 'Note'");
    EXPECT_EQ(connection.statements, expected);
  }
}

class IndexPageTest : public TableDesignerTest {
 protected:
  IndexPageTest() {
    connection.Answer("Idx_Sum", {TextFields({"Idx_Sum"}), {{"3"}}});
    connection.Answer("syscolumns.name", {TextFields({"name"}), {{"a"}, {"b"}}});
    connection.Answer("sp_helpindex",
                      {TextFields({"index_name", "index_keys", "index_description"}),
                       {{"PK_T", "a", "clustered, unique, primary key located on PRIMARY"},
                        {"IX_T", "a, b(-)", "nonclustered located on PRIMARY"}}});
    OpenExisting();
    GoTo(1);
    connection.statements.clear();
  }
  void AddKey(int field, bool descending) {
    form.ComboBox_Fields.UserSelect(field);
    form.CheckBox_Index_Desc.Checked = descending;
    form.Sbtn_Index_Add_Field.UserClick();
  }
};

TEST_F(IndexPageTest, TheOptionsDecideTheStatement) {
  struct Case {
    bool unique, clustered, key;
    const char* statement;
  };
  const Case cases[] = {
      {false, false, false, "create index i    on [T](a  , b  desc )"},
      {true, false, false, "create unique index i    on [T](a  , b  desc )"},
      {false, true, false, "create clustered  index i    on [T](a  , b  desc )"},
      {true, true, false, "create clustered unique index i    on [T](a  , b  desc )"},
      {true, true, true, "alter table T  add constraint i      primary key(a  , b  desc )"},
  };
  for (const Case& each : cases) {
    form.Edit_IndexName.UserType("i");
    AddKey(0, false);
    AddKey(1, true);
    form.CheckBox_Index_Unique.Checked = each.unique;
    form.CheckBox_Index_Clustered.Checked = each.clustered;
    form.CheckBox_Index_PrimaryKey.Checked = each.key;
    connection.statements.clear();
    form.Sbtn_Index_Update.UserClick();
    ASSERT_GE(connection.statements.size(), 2u);
    EXPECT_EQ(connection.statements[1], each.statement);
  }
  connection.statements.clear();
  form.Edit_IndexName.UserType("i");
  form.Sbtn_Index_Update.UserClick();  // without a key
  EXPECT_EQ(connection.statements, Texts{});
}

TEST_F(IndexPageTest, WhatStandsIsLoadedAndReplacedOrDropped) {
  form.ListView.UserSelect({1});
  EXPECT_EQ(form.Edit_IndexName.Text(), "IX_T");
  ASSERT_EQ(form.ListView_Index.Items().size(), 2u);
  EXPECT_EQ(form.ListView_Index.Items()[1].Caption(), "b");
  EXPECT_EQ(form.ListView_Index.Items()[1].SubItem(0), "(-)");
  EXPECT_FALSE(form.CheckBox_Index_Clustered.Checked());
  form.Sbtn_Index_Update.UserClick();
  EXPECT_EQ(
      Texts(connection.statements.begin(), connection.statements.begin() + 3),
      (Texts{"use [sales]", "drop index [T].IX_T", "create index IX_T    on [T](a  , b  desc )"}));

  form.ListView.UserSelect({0});
  connection.statements.clear();
  Agree();
  form.Sbtn_Index_Drop.UserClick();
  EXPECT_EQ(fake.dialogs.questions.back().text, "index:PK_T を削除してよろしいですか?");
  EXPECT_EQ(connection.statements[1], "alter table [T] drop constraint PK_T");
  form.ListView.UserSelect({1});
  connection.statements.clear();
  Agree();
  form.Sbtn_Index_Drop.UserClick();
  EXPECT_EQ(connection.statements[1], "drop index T.IX_T");
}

// The old one is gone: another try must not drop it again.
TEST_F(IndexPageTest, ARefusedReplacementShowsWhatStandsAndKeepsTheFields) {
  form.ListView.UserSelect({1});
  connection.Fail("create index", "no");
  connection.Answer("sp_helpindex", {TextFields({"index_name", "index_keys", "index_description"}),
                                     {{"PK_T", "a", "primary key"}}});
  EXPECT_THROW(form.Sbtn_Index_Update.UserClick(), ServerError);
  EXPECT_EQ(form.ListView.Items().size(), 1u);
  EXPECT_EQ(form.Edit_IndexName.Text(), "IX_T");
  EXPECT_EQ(form.ListView_Index.Items().size(), 2u);
  connection.statements.clear();
  EXPECT_THROW(form.Sbtn_Index_Update.UserClick(), ServerError);
  EXPECT_EQ(connection.statements[1], "create index IX_T    on [T](a  , b  desc )");
}

TEST_F(TableDesignerTest, ATableWithoutIndexesIsNotAskedForThem) {
  connection.Answer("Idx_Sum", {TextFields({"Idx_Sum"}), {{std::nullopt}}});
  OpenExisting();
  GoTo(1);
  for (const std::string& statement : connection.statements) {
    EXPECT_EQ(statement.find("sp_helpindex"), std::string::npos) << statement;
  }
}

TEST_F(TableDesignerTest, ChecksAndTriggersAreSentAsTyped) {
  OpenExisting();
  GoTo(2);
  connection.statements.clear();
  form.Edit_CheckName.UserType("CK");
  form.Memo_Checks.UserType("a > 0");
  form.SBtn_Check_Update.UserClick();
  EXPECT_EQ(connection.statements[1],
            "alter table [T]\r\n  add constraint CK\r\n check(\r\na > 0\r\n )");
  EXPECT_EQ(form.Edit_CheckName.Text(), "");

  GoTo(3);
  EXPECT_EQ(form.Memo_Trigger.Text().find("create trigger [Name] on T"), 0u);
  connection.statements.clear();
  form.Memo_Trigger.UserType("create trigger tr on T\r\nfor insert as print 'x'");
  form.SBtn_Triger_Update.UserClick();
  EXPECT_EQ(connection.statements[0], "use [sales]");
  EXPECT_EQ(connection.statements[1], "create trigger tr on T\r\nfor insert as print 'x'");
}

}  // namespace
}  // namespace dbkeeper
