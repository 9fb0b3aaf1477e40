// Rows written in the query window, a picture among them; several results; find.
#include <QComboBox>
#include <QCoreApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr const char* kGrid = "DBGrid1";
constexpr const char* kStaff = "select * from 社員 where 社員番号 <= 6";
constexpr const char* kSeveral =
    "print N'二つの結果' select 氏名 from 社員 select 商品名 from 商品";
// The columns of the staff, and the rows at first.
enum Columns { kNumber = 0, kName = 1, kEmployed = 6, kCareer = 7, kPicture = 8 };
constexpr int kRows = 6;
constexpr const char* kDatabase = "販売管理";

void Run(const QString& sql) {
  TypeInto("MemoSQL", sql);
  PressKey(Qt::Key_F5);
}

void ExpectRows(int rows) {
  Require(FindA<QTableView>(kGrid).model()->rowCount() == rows, "another number of rows");
}

void ExpectNote(const QString& part) {
  const QString note = FindA<QLabel>("GridNote").text();
  Require(note.contains(part), "another note: " + note.toStdString());
}

void ExpectEnabled(const QString& button, bool enabled) {
  Require(Find(button).isEnabled() == enabled, button.toStdString() + " is enabled wrongly");
}

// The files that stand in for those of a drive of their own lie beside the program's.
QString ProgramFileNamed(const QString& name) {
  return QCoreApplication::arguments().at(1) + "/dbkeeper-tour-files/" + name;
}

QByteArray Picture() {
  QByteArray bytes = "BM";
  for (int i = 0; i < 5000; ++i) bytes.append(static_cast<char>(i * i));
  return bytes;
}

void PutPictureFile() {
  QFile file(ProgramFileNamed("D:\\TEST.bmp"));
  Require(file.open(QFile::WriteOnly) && file.write(Picture()) > 0, "the file cannot be written");
}

void ExpectSavedPicture() {
  QFile file(ProgramFileNamed("D:\\TEST2.bmp"));
  Require(file.open(QFile::ReadOnly) && file.readAll() == Picture(), "the file is another");
}

void OpenBlobMenu() {
  ClickCell(kGrid, 0, kPicture, Press::kRight);
  ChooseItem("Blob");
}

Steps ReadOnlySteps() {
  return {
      {"edit-window-menu",
       [] {
         ClickNode("TreeView", {"SQL Server :(local)", "Database", kDatabase, "Table"});
         ClickRow("ListViewMain", 1, "社員", Press::kRight);
       },
       [] { RequireEqual(OpenMenu().objectName(), "PopupMenu_Table"); }},
      {"edit-window", [] { ChooseItem("SQL 発行..."); },
       [] {
         RequireEqual(FindA<QComboBox>("ComboBox_DatabaseName").currentText(), kDatabase);
         Require(IsShown("Panel_EasySQL"), "the builder is not shown");
       }},
      {"edit-opened-read-only",
       [] {
         Click("Sbtn_EasySQL");
         Run(kStaff);
         Click("SBtn_RE");
       },
       [] {
         ExpectRows(kRows);
         ExpectNote("Openし直すと編集できます");
         ExpectEnabled("Insert", false);
       }},
      {"edit-no-table", [] { Run("select distinct 在籍 from 社員"); },
       [] {
         ExpectNote("一つのテーブルを検索した結果ではないため");
         ExpectEnabled("Delete", false);
       }},
      {"edit-rows", [] { Run(kStaff); },
       [] {
         ExpectRows(kRows);
         Require(!IsShown("GridNote"), "there is a note");
         ExpectEnabled("Insert", true);
       }},
  };
}

Steps RowSteps() {
  return {
      {"edit-cell", [] { TypeIntoCell(kGrid, 0, kName, "佐藤 美咲"); },
       [] { RequireEqual(FindA<QLineEdit>("CellEdit").text(), "佐藤 美咲"); }},
      {"edit-changed", [] { PressKey(Qt::Key_Return); },
       [] {
         RequireCell(kGrid, 0, kName, "佐藤 美咲", "I");
         ExpectEnabled("Post", true);
       }},
      {"edit-cancelled", [] { PressKey(Qt::Key_Escape); },
       [] {
         RequireCell(kGrid, 0, kName, "渡辺 花子", "▶");
         ExpectEnabled("Post", false);
       }},
      {"edit-posted",
       [] {
         TypeIntoCell(kGrid, 0, kName, "佐藤 美咲");
         Click("Post");
       },
       [] { RequireCell(kGrid, 0, kName, "佐藤 美咲", "▶"); }},
      {"edit-null",
       [] {
         ClickCell(kGrid, 0, kCareer);
         PressKey(Qt::Key_0, Qt::ControlModifier);
       },
       [] { RequireCell(kGrid, 0, kCareer, "(null)", "I"); }},
      {"edit-inserting",
       [] {
         Click("Insert");  // posts the other row
         TypeIntoCell(kGrid, 0, kName, "田中 さくら");
         TypeIntoCell(kGrid, 0, kEmployed, "1");
         PressKey(Qt::Key_Return);
       },
       [] {
         ExpectRows(kRows + 1);
         RequireCell(kGrid, 0, kNumber, "(null)", "*");
         RequireCell(kGrid, 0, kEmployed, "1", "*");
         RequireCell(kGrid, 1, kCareer, "(null)", "");
       }},
      {"edit-inserted", [] { Click("Post"); }, [] { RequireCell(kGrid, 0, kNumber, "41", "▶"); }},
      {"edit-delete-question", [] { Click("Delete"); },
       [] {
         Require(BoxText().startsWith("この行を削除してよろしいですか?\n"), "another question");
         Require(BoxText().contains(" : 41\n"), "the question does not tell which row");
       }},
      {"edit-deleted", [] { ClickButton("OK"); },
       [] {
         ExpectRows(kRows);
         RequireCell(kGrid, 0, kName, "佐藤 美咲", "▶");
       }},
      {"edit-delete-referenced", [] { Click("Delete"); }, [] { BoxText(); }},
      {"edit-delete-refused", [] { ClickButton("OK"); },
       [] { Require(BoxText().contains("REFERENCE"), "the server's refusal is missing"); }},
      {"edit-kept", [] { PressKey(Qt::Key_Return); },
       [] {
         Require(!IsShown("MessageBox"), "the box is open");
         ExpectRows(kRows);
       }},
  };
}

Steps BlobSteps() {
  return {
      {"edit-blob-menu",
       [] {
         PutPictureFile();
         OpenBlobMenu();
       },
       [] { RequireEqual(OpenMenu().actions().front()->text(), "Load"); }},
      {"edit-blob-loaded", [] { ChooseItem("Load"); },
       [] {
         const QString shown =
             FindA<QTableView>(kGrid).model()->index(0, kPicture).data().toString();
         Require(shown.startsWith("0x424D0001") && shown.endsWith("…"), "another picture");
         ExpectEnabled("Post", false);
       }},
      {"edit-blob-saved",
       [] {
         OpenBlobMenu();
         ChooseItem("Save");
       },
       ExpectSavedPicture},
      {"edit-viewer", [] { PressKey(Qt::Key_F2); },
       [] { RequireEqual(Find("CellViewer").windowTitle(), "写真  image null"); }},
      {"edit-viewer-closed", [] { PressKey(Qt::Key_Escape); },
       [] { Require(!IsShown("CellViewer"), "the viewer is open"); }},
  };
}

Steps TextSteps() {
  return {
      {"edit-several-results",
       [] {
         if (!IsShown("MemoServerMessage")) Click("Sbtn_ServerMessage");
         Run(kSeveral);
       },
       [] {
         const QString said = FindA<QPlainTextEdit>("MemoServerMessage").toPlainText();
         Require(said.contains("\n  二つの結果\n"), "the printed message is missing");
         Require(said.contains("ほかに 1 個の結果セットがあります"),
                 "the other result is not told");
       }},
      {"edit-find",
       [] {
         Click("MemoSQL");
         PressKey(Qt::Key_Home, Qt::ControlModifier);
         PressKey(Qt::Key_F, Qt::ControlModifier);
         TypeText("商品名");
         PressKey(Qt::Key_Return);
       },
       [] {
         RequireEqual(FindA<QPlainTextEdit>("MemoSQL").textCursor().selectedText(), "商品名");
       }},
      {"edit-find-nothing",
       [] {
         PressKey(Qt::Key_A, Qt::ControlModifier);
         TypeText("仕入先");
         PressKey(Qt::Key_Return);
       },
       [] {
         bool told = false;
         for (const auto* label : Find("FindBar").findChildren<QLabel*>()) {
           told = told || label->text() == "見つかりません";
         }
         Require(told, "nothing is said");
       }},
      {"edit-window-closed",
       [] {
         PressKey(Qt::Key_Escape);
         Click("SBtn_RE");
         CloseWindow("FormExecSQL");
       },
       [] { Require(!IsShown("FormExecSQL"), "the window is there"); }},
  };
}

}  // namespace

Steps EditSteps() {
  Steps steps;
  for (const auto& part : {ReadOnlySteps(), RowSteps(), BlobSteps(), TextSteps()}) {
    steps.insert(steps.end(), part.begin(), part.end());
  }
  return steps;
}

}  // namespace dbkeeper::qt::tour
