#include "tests/platform/qt/RealWindows.h"

#include <QApplication>

namespace dbkeeper::testing {

RealWindows::RealWindows() {
  const std::string text = "2005-03-08 09:05:07";
  connection.Answer("sysdatabases",
                    {TextFields({"dbid", "name", "status", "status2", "crdate", "filename"}),
                     {{"7", "売上", "16", "0", text, "C:\\MSSQL\\Data\\売上.mdf"},
                      {"1", "master", "24", "1090519040", text, "C:\\MSSQL\\Data\\master.mdf"},
                      {"8", "archive", "1040", "0", text, "C:\\MSSQL\\Data\\archive.mdf"},
                      {"9", "old", "528", "0", text, "C:\\MSSQL\\Data\\old.mdf"}}});
}

Host RealWindows::MakeHost() {
  fake.shell.executable = folder / "DBKEEPER.exe";
  return {fake.shell,  dialogs, fake.clock, fake.random, fake.code_page,
          fake.locale, windows, fake.disk,  progress};
}

void RealWindows::Run(qt::tour::Steps steps) {
  app.Start();
  windows.Show(app.FormMain);
  const char* const pictures = std::getenv("DBKEEPER_TEST_PICTURES");
  qt::tour::Tour tour(std::move(steps), pictures != nullptr ? pictures : folder.Path().string());
  tour.Start();
  QApplication::exec();
  EXPECT_TRUE(tour.Succeeded());
}

}  // namespace dbkeeper::testing
