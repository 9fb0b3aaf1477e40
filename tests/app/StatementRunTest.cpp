#include "app/workbench/StatementRun.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/main/RowCommand.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::WorkbenchFixture;
using Texts = std::vector<std::string>;

class StatementRunTest : public ::testing::Test, protected WorkbenchFixture {
 protected:
  StatementRunTest() {
    session.Open();
    status.SimpleText = "before";
    fake.windows.painted = [this] { painted.push_back(status.SimpleText); };
  }
  Texts painted;  // what the status bar showed when the window painted itself
};

void ListAnew(const Workbench& workbench, const std::string& database) {
  workbench.Session.ADOQuerySystem.Command("list of " + database);
}

TEST_F(StatementRunTest, RunsInOrderAndTellsByItsRule) {
  struct Case {
    StatementRun run;
    Texts statements;
    Texts painted;
    const char* status;
  };
  const Case cases[] = {
      {{.statements = {"a", "b"}}, {"a", "b"}, {" *", " *"}, " >b"},
      {{.use = "use [x]", .statements = {"a"}, .status = "A"},
       {"use [x]", "a"},
       {" *", " *"},
       " >A"},
      {{.statements = {"a"}, .refresh = ListAnew, .database = "x"},
       {"a", "list of x"},
       {" *", " *"},
       " >a"},
      {{.use = "use master", .statements = {"a"}, .rule = StatusRule::kBefore},
       {"use master", "a"},
       {"before", " >a"},
       " >a"},
      {{.statements = {"a"}, .rule = StatusRule::kNone}, {"a"}, {"before", "before"}, "before"},
  };
  for (const Case& c : cases) {
    connection.statements.clear();
    painted.clear();
    status.SimpleText = "before";
    EXPECT_TRUE(RunStatements(workbench, c.run));
    EXPECT_EQ(connection.statements, c.statements);
    EXPECT_EQ(painted, c.painted);
    EXPECT_EQ(status.SimpleText(), c.status);
    EXPECT_EQ(fake.windows.busy, 0);
  }
  EXPECT_TRUE(fake.dialogs.questions.empty());
}

TEST_F(StatementRunTest, TheFirstFailureEndsIt) {
  const Texts all = {"use [x]", "a", "b", "list of x"};
  for (std::size_t failing = 0; failing < all.size(); ++failing) {
    connection.Fail(all[failing], "no");
    connection.statements.clear();
    const StatementRun run = {
        .use = all[0], .statements = {all[1], all[2]}, .refresh = ListAnew, .database = "x"};
    EXPECT_THROW(RunStatements(workbench, run), ServerError);
    EXPECT_EQ(connection.statements, Texts(all.begin(), all.begin() + failing + 1));
    EXPECT_EQ(status.SimpleText(), failing < 3 ? " *" : " >b");
    EXPECT_EQ(fake.windows.busy, 0);
    connection.Answer(all[failing], {});
  }
}

TEST_F(StatementRunTest, AsksFirstAndDoesNothingWhenCancelled) {
  const StatementRun run = {.question = "本当に?", .statements = {"a"}};
  EXPECT_FALSE(RunStatements(workbench, run));
  ASSERT_EQ(fake.dialogs.questions.size(), 1U);
  const Question& asked = fake.dialogs.questions.front();
  EXPECT_EQ(asked.text, "本当に?");
  EXPECT_EQ(asked.caption, "注意");
  EXPECT_EQ(asked.buttons, Buttons::kOkCancel);
  EXPECT_EQ(asked.default_answer, Answer::kCancel);
  EXPECT_EQ(connection.statements, Texts{});
  EXPECT_EQ(status.SimpleText(), "before");
  fake.dialogs.answers = {Answer::kOk};
  EXPECT_TRUE(RunStatements(workbench, run));
  EXPECT_EQ(connection.statements, Texts{"a"});
}

TEST_F(StatementRunTest, ARowCommandWithoutRefreshListsNothing) {
  list.AddItem({"7", "a b"});
  list.Select({0});
  RunRowCommand(workbench, {.statement = "exec x [%N]"});
  EXPECT_EQ(connection.statements, Texts{"exec x [a b]"});
  EXPECT_EQ(status.SimpleText(), " >exec x [a b]");
}

}  // namespace
}  // namespace dbkeeper
