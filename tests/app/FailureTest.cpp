// Whichever statement of a flow fails: its words are shown once, nothing is sent after it, the
// waiting cursor is gone and the program goes on.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::FailAtEveryStatement;
using testing::TextFields;

class Program : public AppFixture {
 public:
  using AppFixture::app;
  using AppFixture::Choose;
  using AppFixture::ClickPath;
  using AppFixture::Connect;
  using AppFixture::connection;
  using AppFixture::fake;

  void ListTables() {
    connection.Answer(".dbo.sysobjects", {TextFields({"name", "xtype", "crdate"}),
                                          {{"商品", "U", ""}, {"a b", "U", ""}}});
    app.Start();
    Connect();
    ClickPath({"Database"});
    ClickPath({"Database", "sales", "Table"});
    app.FormMain.ListViewMain.Select({0});
    connection.statements.clear();
    fake.dialogs.answers = {Answer::kOk, Answer::kOk, Answer::kOk};
  }
};

struct Case {
  const char* title;
  std::function<void(Program&)> flow;
  int statements;
};

TEST(Failures, AreShownOnceAndEndTheFlow) {
  const Case cases[] = {
      {"a click on the databases", [](Program& p) { p.ClickPath({"Database"}); }, 1},
      {"a click on tables",
       [](Program& p) {
         p.ClickPath({"Database", "sales", "Table"});
       },
       1},
      {"drop",
       [](Program& p) { p.Choose(p.app.FormMain.Menu("PopupMenu_Table"), "PopupMenu_Table_Drop"); },
       3},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.title);
    const int count = FailAtEveryStatement<Program>(
        [](Program& p) { p.ListTables(); }, c.flow,
        [](Program& p, int place) {
          EXPECT_EQ(p.fake.dialogs.errors, std::vector<std::string>{"この文は失敗します。"});
          EXPECT_EQ(p.connection.statements.size(), static_cast<std::size_t>(place - 1));
          EXPECT_EQ(p.fake.windows.busy, 0);
          p.ClickPath({"Database"});
          EXPECT_EQ(p.fake.dialogs.errors.size(), 1U);
        });
    EXPECT_EQ(count, c.statements);
  }
}

}  // namespace
}  // namespace dbkeeper
