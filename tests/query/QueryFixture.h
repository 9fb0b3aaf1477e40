// The program with its query window open for database "sales".
#pragma once

#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper::testing {

class QueryFixture : public AppFixture {
 protected:
  QueryFixture() {
    app.Start();
    Connect();
    ClickPath({"Database"});
    window.OpenForDatabase("sales");
    fake.windows.Show(window);
    connection.statements.clear();
  }

  // A press on a button, as a person's: what it throws goes to the error box.
  void Press(Button& button) {
    app.Guard().Run([&button] { button.UserClick(); });
  }
  void Run(const std::string& sql, Button& button) {
    window.MemoSQL.UserType(sql);
    Press(button);
  }

  TFormExecSQL& window = app.FormExecSQL;
};

}  // namespace dbkeeper::testing
