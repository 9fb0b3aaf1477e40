#include "catalog/BulkCopy.h"

#include <filesystem>
#include <string_view>

#include "app/support/AnsiTextFile.h"
#include "app/support/Files.h"

namespace dbkeeper {

namespace {

// What the two directions say differently.
struct Direction {
  std::string_view title;
  std::string_view arrow;
  std::string_view word;
};

constexpr Direction kExport = {"BCP エクスポート", "↓", " out "};
constexpr Direction kImport = {"BCP インポート", " ↑", " in "};

void RunByBcp(const Workbench& workbench, const Direction& direction, const std::string& server,
              const std::string& database, const std::string& file, const std::string& table) {
  const ServerSession& session = workbench.Session;
  const bool windows = session.LoginMode == Authentication::kWindows;
  const std::string host = workbench.MachineOf(server);
  const std::filesystem::path batch_file = workbench.ProgramFolder / "work" / "DBKEEPER_BCP.bat";

  AnsiTextFile batch(workbench.Host, batch_file, Writing::kWhole);
  batch.Line("echo off");
  batch.Line("echo ┏━━━━━━━━━━━━━━━");
  batch.Line("echo ┃" + std::string(direction.title));
  batch.Line("echo ┃DataBase：" + database);
  batch.Line("echo ┃Table   ：" + table);
  batch.Line("echo ┃" + std::string(direction.arrow));
  batch.Line("echo ┃File    ：" + file);
  batch.Line("echo ┗━━━━━━━━━━━━━━━");
  if (!windows) {
    batch.Line("echo アカウント：" + session.LoginName + "のパスワードを入力してください");
  }
  batch.Line("bcp.exe " + database + ".." + table + std::string(direction.word) + "\"" + file +
             "\" -c -S" + host + (windows ? " -T" : " -U" + session.LoginName));
  batch.Line("pause");
  batch.Line("exit");
  batch.Finish();

  workbench.Host.shell.Open(PathText(batch_file));
  // Deliberately "out" for an import too, and words in brackets in the place of names: operators
  // know it so.
  workbench.Status.SimpleText =
      " >bcp.exe " + database + ".." + table + " out [FileName] -SServerName -UUserName -PPassword";
}

}  // namespace

void ExportByBcp(const Workbench& workbench, const std::string& server, const std::string& database,
                 const std::string& file, const std::string& table) {
  RunByBcp(workbench, kExport, server, database, file, table);
}

void ImportByBcp(const Workbench& workbench, const std::string& server, const std::string& database,
                 const std::string& file, const std::string& table) {
  RunByBcp(workbench, kImport, server, database, file, table);
}

}  // namespace dbkeeper
