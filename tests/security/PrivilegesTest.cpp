#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "security/Unit_Privileges.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::TextFields;
using Texts = std::vector<std::string>;

constexpr int kPermit = 0;
constexpr int kDeny = 1;
constexpr int kNone = 2;

class PrivilegesTest : public ::testing::Test, protected testing::WorkbenchFixture {
 protected:
  PrivilegesTest() {
    connection.Answer("sysusers", {TextFields({"uid", "name"}),
                                   {{"0", "public"}, {"5", "kato"}, {"16400", "課"}}});
    connection.Answer("sysprotects", {TextFields({"id", "name", "uid", "action", "protecttype"}),
                                      {{"77", "items", "5", "193", "205"},
                                       {"77", "items", "5", "195", "206"},
                                       {"77", "items", "5", "197", "204"},
                                       {"77", "items", "5", "26", "205"},
                                       {"77", "items", "16400", "196", "206"},
                                       {"77", "items", "16400", "224", "205"},
                                       {"77", "items", "99", "193", "205"}}});
  }
  std::vector<Texts> Rows() const {
    std::vector<Texts> rows;
    for (const ListItem& item : form.ListView.Items()) {
      Texts cells;
      for (std::size_t i = 0; i < item.CellCount(); ++i) cells.emplace_back(item.Cell(i));
      rows.push_back(cells);
    }
    return rows;
  }
  // The batch that pressing the button sends for the user of a row; empty when it sends none.
  std::string Apply(std::size_t row, const std::vector<std::pair<RadioGroup*, int>>& choices) {
    form.ListView.UserSelect({row});
    for (const auto& [group, choice] : choices) group->UserSelect(choice);
    connection.statements.clear();
    form.SpeedButton2.UserClick();
    Texts sent = connection.statements;
    const bool batch = sent.size() > refill.size();
    EXPECT_EQ(Texts(sent.begin() + (batch ? 1 : 0), sent.end()), refill);
    EXPECT_EQ(form.ListView.SelCount(), 0u);
    return batch ? sent.front() : "";
  }

  const Texts refill = {
      "use [sales]", "select * from sysusers",
      "select sysobjects.id,       sysobjects.name,       sysprotects.uid,       "
      "sysprotects.action,       sysprotects.protecttype  from sysobjects           inner join "
      "sysprotects               on sysobjects.id = sysprotects.id where name = 'items'"};
  TForm_Privileges form{workbench};
};

TEST_F(PrivilegesTest, SaysWhatItIs) {
  EXPECT_EQ(form.Caption(), "権限の設定");
  EXPECT_EQ(form.Edit_Database.EditLabel.Caption(), "Database :");
  EXPECT_EQ(form.Edit_ObjectName.EditLabel.Caption(), "Object :");
  EXPECT_EQ(form.Edit_User.EditLabel.Caption(), "User :");
  const std::pair<RadioGroup*, const char*> groups[] = {{&form.RadioGroup_Select, " Select "},
                                                        {&form.RadioGroup_Insert, " Insert "},
                                                        {&form.RadioGroup_Update, " Update "},
                                                        {&form.RadioGroup_Exec, " Exec "},
                                                        {&form.RadioGroup_Delete, " Delete "}};
  for (const auto& [group, caption] : groups) {
    EXPECT_EQ(group->Caption(), caption);
    EXPECT_EQ(group->Items.All(), (Texts{"Permit", "Deny", "None"}));
  }
  EXPECT_EQ(form.SpeedButton2.Caption(), "適用");
  EXPECT_EQ(form.SpeedButton1.Caption(), "閉じる");
  EXPECT_EQ(form.Lbl_Notice.Caption(),
            "db_owner,db_datareader,db_datawriter等のビルトイン・ロールはここでは表示されませんが、"
            "\r既に相応の権限を保持していますので、Permitを指定する必要はありません。\r"
            "ビルトイン・ロールから権限を奪う(Deny)場合のみ設定してください。");
  const std::vector<ListColumn> columns = {{"id", 48},
                                           {"User", 128},
                                           {"Select", 58, Alignment::kCenter},
                                           {"Insert", 58, Alignment::kCenter},
                                           {"Update", 58, Alignment::kCenter},
                                           {"Delete", 58, Alignment::kCenter},
                                           {"Exec", 58, Alignment::kCenter}};
  EXPECT_EQ(form.ListView.Columns(), columns);
}

TEST_F(PrivilegesTest, ShowsTheRightsOfEveryUser) {
  form.SetUp("sales", "items", "Table");
  EXPECT_EQ(connection.statements, refill);
  EXPECT_EQ(form.Edit_Database.Text(), "sales");
  EXPECT_EQ(form.Edit_ObjectName.Text(), "items");
  EXPECT_EQ(Rows(), (std::vector<Texts>{{"0", "public", "-", "-", "-", "-", "-"},
                                        {"5", "kato", "Permit", "Deny", "-", "-", "-"},
                                        {"16400", "課", "-", "-", "-", "Deny", "-"}}));
  form.ListView.UserSelect({1});
  EXPECT_EQ(form.Edit_User.Text(), "kato");
  EXPECT_EQ(form.RadioGroup_Select.ItemIndex(), kPermit);
  EXPECT_EQ(form.RadioGroup_Insert.ItemIndex(), kDeny);
  EXPECT_EQ(form.RadioGroup_Update.ItemIndex(), kNone);
  EXPECT_EQ(form.RadioGroup_Delete.ItemIndex(), kNone);
  EXPECT_EQ(form.RadioGroup_Exec.ItemIndex(), kNone);
}

TEST_F(PrivilegesTest, AnObjectHasTheGroupsOfItsKind) {
  for (const char* kind : {"Table", "View", "Procedure"}) {
    form.SetUp("sales", "items", kind);
    const bool with_rows = std::string(kind) != "Procedure";
    for (const RadioGroup* group : {&form.RadioGroup_Select, &form.RadioGroup_Insert,
                                    &form.RadioGroup_Update, &form.RadioGroup_Delete}) {
      EXPECT_EQ(group->Enabled, with_rows) << kind;
    }
    EXPECT_EQ(form.RadioGroup_Exec.Enabled, !with_rows) << kind;
    EXPECT_EQ(form.Edit_User.Text(), "");
    EXPECT_EQ(form.RadioGroup_Select.ItemIndex(), -1);
  }
}

TEST_F(PrivilegesTest, EveryStepFromOneStateToAnotherHasItsStatements) {
  form.SetUp("sales", "items", "Table");
  const auto batch = [](const std::string& statements) {
    return "use [sales]\r\nbegin \r\n" + statements + "end;";
  };
  const std::string select = " select on [items] to [kato]\r\n";
  const std::string insert = " insert on [items] to [kato]\r\n";
  const std::string update = " update on [items] to [kato]\r\n";
  const struct {
    std::vector<std::pair<RadioGroup*, int>> choices;
    std::string statements;
  } cases[] = {
      // What stays as it was loaded is sent again.
      {{}, " grant" + select + " deny" + insert},
      {{{&form.RadioGroup_Select, kDeny}},
       " revoke" + select + " deny" + select + " deny" + insert},
      {{{&form.RadioGroup_Select, kNone}}, " revoke" + select + " deny" + insert},
      {{{&form.RadioGroup_Select, kNone}, {&form.RadioGroup_Insert, kPermit}},
       " revoke" + select + " revoke" + insert + " grant" + insert},
      {{{&form.RadioGroup_Select, kNone}, {&form.RadioGroup_Insert, kNone}},
       " revoke" + select + " revoke" + insert},
      {{{&form.RadioGroup_Update, kPermit}},
       " grant" + select + " deny" + insert + " grant" + update},
      {{{&form.RadioGroup_Update, kDeny}}, " grant" + select + " deny" + insert + " deny" + update},
      {{{&form.RadioGroup_Delete, kPermit}, {&form.RadioGroup_Exec, kPermit}},
       " grant" + select + " deny" + insert + " grant delete on [items] to [kato]\r\n"},
  };
  for (const auto& each : cases) EXPECT_EQ(Apply(1, each.choices), batch(each.statements));
  EXPECT_EQ(Apply(0, {}), "");
  EXPECT_EQ(Apply(0, {{&form.RadioGroup_Delete, kDeny}}),
            batch(" deny delete on [items] to [public]\r\n"));
  form.SetUp("sales", "items", "Procedure");
  EXPECT_EQ(Rows().at(2), (Texts{"16400", "課", "-", "-", "-", "-", "Permit"}));
  EXPECT_EQ(Apply(2, {{&form.RadioGroup_Delete, kPermit}}),
            batch(" grant execute on [items] to [課]\r\n"));
  EXPECT_EQ(Apply(2, {{&form.RadioGroup_Exec, kNone}}),
            batch(" revoke execute on [items] to [課]\r\n"));
}

TEST_F(PrivilegesTest, WithoutAUserOrARowNothingHappens) {
  form.SetUp("sales", "items", "Table");
  connection.statements.clear();
  form.SpeedButton2.UserClick();
  form.Edit_User.UserType("kato");
  form.SpeedButton2.UserClick();
  form.ListView.UserSelect({1});
  form.Edit_User.UserType("");
  form.SpeedButton2.UserClick();
  EXPECT_EQ(connection.statements, Texts{});
}

TEST_F(PrivilegesTest, AFailedBatchLeavesTheListAsItIs) {
  form.SetUp("sales", "items", "Table");
  form.ListView.UserSelect({1});
  connection.statements.clear();
  connection.Fail("begin", "no such user");
  EXPECT_THROW(form.SpeedButton2.UserClick(), ServerError);
  EXPECT_EQ(connection.statements.size(), 1u);
  EXPECT_EQ(form.ListView.SelCount(), 1u);
  EXPECT_EQ(Rows().at(1), (Texts{"5", "kato", "Permit", "Deny", "-", "-", "-"}));
}

}  // namespace
}  // namespace dbkeeper
