// Databases looked after: one is made, backed up, changed, and restored under another name.
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <memory>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr const char* kList = "ListViewMain";
constexpr int kName = 1;
constexpr const char* kMade = "在庫";
constexpr const char* kRestored = "在庫控";
const std::vector<QString> kDatabaseNode = {"SQL Server :(local)", "Database"};

constexpr const char* kFill =
    "create table [在庫].dbo.[品目] (番号 int not null primary key, 品名 nvarchar(20), 数量 int) "
    "insert [在庫].dbo.[品目] values (1, N'鉛筆', 120)";
constexpr const char* kChange = "update [在庫].dbo.[品目] set 数量 = 95";
constexpr const char* kRead = "select 品名, 数量 from [在庫].dbo.[品目]";
constexpr const char* kReadBoth =
    "select 'before' as 時点, 数量 from [在庫控]..[品目] union all "
    "select 'after', 数量 from [在庫]..[品目]";

void ExpectNoBox() {
  if (IsShown("MessageBox")) Require(false, "a box: " + BoxText().toStdString());
}

QString Field(const QString& name) { return FindA<QLineEdit>(name).text(); }

// A path in the file chooser that is open.
void ChooseFile(const QString& path) {
  TypeInto("fileNameEdit", path);
  PressKey(Qt::Key_Return);
}

// Runs a statement, then opens a query, both typed into the query window.
void RunAndRead(const QString& statement, const QString& query) {
  TypeInto("MemoSQL", statement);
  PressKey(Qt::Key_E, Qt::ControlModifier);
  TypeInto("MemoSQL", query);
  PressKey(Qt::Key_F5);
}

void ExpectRows(const std::vector<std::vector<QString>>& wanted) {
  ExpectNoBox();
  std::vector<std::vector<QString>> seen;
  const QAbstractItemModel& model = *FindA<QTableView>("DBGrid1").model();
  for (int row = 0; row < model.rowCount(); ++row) {
    auto& cells = seen.emplace_back();
    for (int column = 0; column < model.columnCount(); ++column) {
      cells.push_back(model.index(row, column).data().toString());
    }
  }
  Require(seen == wanted, "other rows");
}

void ExpectListed(const std::vector<QString>& names) {
  const std::vector<QString> listed = Column(kList, kName);
  for (const QString& name : names) {
    Require(std::find(listed.begin(), listed.end(), name) != listed.end(),
            name.toStdString() + " is not listed");
  }
}

// A picture of the row's menu, and one of what its item opens.
void AddChoice(Steps& steps, const std::string& picture, const QString& row,
               const std::vector<QString>& items, const std::function<void()>& expect) {
  steps.push_back({picture + "-menu", [row] { ClickRow(kList, kName, row, Press::kRight); },
                   [] { OpenMenu(); }});
  for (std::size_t i = 0; i < items.size(); ++i) {
    const bool last = i + 1 == items.size();
    steps.push_back({picture + (last ? "" : "-menu-" + std::to_string(i + 2)),
                     [item = items[i]] { ChooseItem(item); }, last ? expect : [] { OpenMenu(); }});
  }
}

void AddCreation(Steps& steps, const QString& folder) {
  AddChoice(steps, "create", "master", {"新規ﾃﾞｰﾀﾍﾞｰｽ ..."}, [] {
    RequireEqual(Find("Form_Database_Property").windowTitle(), "Database設定");
    RequireEqual(Field("Fne_Mdf_Init_Size"), "10");
  });
  steps.push_back({"create-folder",
                   [] {
                     TypeInto("Edit_DatabaseName", kMade);
                     Click("Button3");
                   },
                   [] { Find("fileNameEdit"); }});
  steps.push_back(
      {"create-files", [folder] { ChooseFile(folder); },
       [folder] { RequireEqual(Field("Edit_DataFileName"), folder + "\\在庫_dat.mdf"); }});
  steps.push_back({"create-filled",
                   [folder] {
                     TypeInto("Edit_LogFileName", folder + "\\在庫_log.ldf");
                     TypeInto("Fne_Mdf_Max_Size", "200");
                   },
                   [] { RequireEqual(Field("Fne_Mdf_Max_Size"), "200"); }});
  steps.push_back({"created", [] { Click("SBtn_Update"); },
                   [] {
                     ExpectNoBox();
                     Require(!IsShown("Form_Database_Property"), "the dialog is still open");
                   }});
  steps.push_back({"created-listed", [] { ClickNode("TreeView", kDatabaseNode); },
                   [] { ExpectListed({kMade}); }});
}

void AddFilling(Steps& steps) {
  AddChoice(steps, "fill", kMade, {"SQL 発行..."}, [] { Find("FormExecSQL"); });
  steps.push_back({"filled", [] { RunAndRead(kFill, kRead); },
                   [] {
                     ExpectRows({{"鉛筆", "120"}});
                   }});
}

void AddBackup(Steps& steps, const QString& file) {
  AddChoice(steps, "backup", kMade, {"バックアップ", "指定データベースの手動バックアップ ..."},
            [] { Find("fileNameEdit"); });
  steps.push_back(
      {"backup-question", [file] { ChooseFile(file); },
       [] { RequireEqual(BoxText(), "ﾃﾞｰﾀﾍﾞｰｽ:在庫 のバックアップを実行してよろしいですか?"); }});
  steps.push_back({"backed-up", [] { ClickButton("OK"); },
                   [] {
                     ExpectNoBox();
                     RequireEqual(StatusText(),
                                  " >backup database 在庫 to DISK=xxx.bak with description=yyy, "
                                  "format");
                   }});
  steps.push_back({"changed", [] { RunAndRead(kChange, kRead); },
                   [] {
                     ExpectRows({{"鉛筆", "95"}});
                   }});
}

void AddRestore(Steps& steps, const QString& folder, const QString& file) {
  AddChoice(steps, "restore", kMade,
            {"バックアップ", "バックアップファイルを指定してのレストア ..."},
            [] { Find("fileNameEdit"); });
  steps.push_back({"restore-media", [file] { ChooseFile(file); },
                   [] {
                     Require(BoxText().contains("　・DatabaseName：在庫\n　・Description ："),
                             "no details of the medium: " + BoxText().toStdString());
                   }});
  steps.push_back({"restore-dialog", [] { ClickButton("OK"); },
                   [file] {
                     RequireEqual(Find("FormRestore").windowTitle(), "レストア");
                     RequireEqual(Field("Edit_BackupFName"), file);
                     Require(FindA<QLineEdit>("Edit_DatabaseName").isReadOnly(), "an open name");
                   }});
  steps.push_back({"restore-renamed",
                   [] {
                     Click("CheckBox_ChangeName");
                     TypeInto("Edit_DatabaseName", kRestored);
                     PressKey(Qt::Key_Tab);
                   },
                   [folder] {
                     RequireEqual(Field("Edit_DatabaseFName"), folder + "\\在庫控_dat.mdf");
                     RequireEqual(Field("Edit_LogFName"), folder + "\\在庫控_log.ldf");
                   }});
  steps.push_back({"restore-question", [] { Click("SBtn_Update"); },
                   [] {
                     Require(BoxText().startsWith("データベース「在庫控」を復元しても"),
                             "another question: " + BoxText().toStdString());
                   }});
  steps.push_back({"restored", [] { ClickButton("OK"); },
                   [] {
                     ExpectNoBox();
                     Require(FindA<QWidget>("SBtn_Update").isEnabled(), "the restore has failed");
                   }});
  steps.push_back({"restored-listed",
                   [] {
                     Click("Sbtn_Cancel");
                     ClickNode("TreeView", kDatabaseNode);
                   },
                   [] {
                     ExpectListed({kMade, kRestored});
                   }});
  steps.push_back({"restored-content",
                   [] {
                     TypeInto("MemoSQL", kReadBoth);
                     PressKey(Qt::Key_F5);
                   },
                   [] {
                     ExpectRows({{"before", "120"}, {"after", "95"}});
                   }});
}

void AddAttachDialog(Steps& steps) {
  AddChoice(steps, "attach", kMade, {"Attach Database ..."}, [] {
    RequireEqual(FindA<QPushButton>("SBtn_Update").text(), "アタッチ");
    Require(!IsShown("Pnl_MDF") && !IsShown("Pnl_LDF"), "sizes of files that are there already");
  });
  steps.push_back({"attach-cancelled", [] { PressKey(Qt::Key_Escape); },
                   [] { Require(!IsShown("Form_Database_Property"), "the dialog is open"); }});
}

void AddDevice(Steps& steps, const QString& file) {
  steps.push_back({"devices",
                   [] {
                     ClickNode("TreeView", {kDatabaseNode[0], "Management", "BackUpDevice"});
                   },
                   [] { ExpectListed({"BK_販売管理"}); }});
  AddChoice(steps, "device", "BK_販売管理", {"新規ﾊﾞｯｸｱｯﾌﾟﾃﾞﾊﾞｲｽ..."},
            [] { RequireEqual(Find("Form_BackupMedia").windowTitle(), "BackupMediaの設定"); });
  steps.push_back({"device-filled",
                   [file] {
                     TypeInto("Edit_Name", "BK_在庫");
                     TypeInto("Edit_FileName", file);
                   },
                   [file] { RequireEqual(Field("Edit_FileName"), file); }});
  steps.push_back({"device-made", [] { Click("SBtn_Update"); },
                   [] {
                     ExpectNoBox();
                     ExpectListed({"BK_販売管理", "BK_在庫"});
                   }});
}

}  // namespace

Steps UpkeepSteps() {
  // The server's files, gone with the tour.
  const auto folder = std::make_shared<QTemporaryDir>();
  const QString path = folder->path();
  Steps steps;
  steps.push_back({"upkeep", [folder] { ClickNode("TreeView", kDatabaseNode); },
                   [] { ExpectListed({"master"}); }});
  AddCreation(steps, path);
  AddFilling(steps);
  AddBackup(steps, path + "/在庫.bak");
  AddRestore(steps, path, path + "/在庫.bak");
  steps.push_back({"upkeep-closed", [] { CloseWindow("FormExecSQL"); },
                   [] { Require(!IsShown("FormExecSQL"), "the window is there"); }});
  AddAttachDialog(steps);
  AddDevice(steps, path + "/在庫2.bak");
  return steps;
}

}  // namespace dbkeeper::qt::tour
