// From the start to the connected tree.
#include <QApplication>
#include <QLineEdit>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

void ExpectItem(const QString& caption, bool enabled) {
  for (const QAction* action : OpenMenu().actions()) {
    if (action->text() != caption) continue;
    Require(action->isEnabled() == enabled, caption.toStdString() + " is enabled wrongly");
    return;
  }
  Require(false, "no item " + caption.toStdString());
}

void ExpectStart() {
  RequireEqual(Find("FormMain").windowTitle(), "DB Keeper");
  RequireEqual(Headers("ListViewMain").at(1), "項目");
  RequireEqual(Column("ListViewMain", 2).at(0), "DBKEEPER");
}

void ExpectServerMenu() {
  ExpectItem("接続 ...", true);
  ExpectItem("接続解除", false);
}

void ExpectDialog() {
  RequireEqual(Find("FormLogin").windowTitle(), "SQL Serverへの接続");
  Require(IsShown("Edit_passwd"), "no password edit");
}

void ExpectTypedLogin() {
  RequireEqual(FindA<QLineEdit>("Edit_loginame").text(), "sa");
  RequireEqual(FindA<QLineEdit>("Edit_passwd").displayText(), "******");
}

void ExpectWindowsLogin() {
  Require(!IsShown("Edit_passwd"), "the password edit is still there");
  const auto& login = FindA<QLineEdit>("Edit_loginame");
  Require(login.isReadOnly() && !login.text().isEmpty(), "no Windows user in the login edit");
}

void ExpectConnected() {
  Require(!IsShown("FormLogin"), "the dialog is still open");
  RequireEqual(Find("FormMain").windowTitle(), "DBKEEPER.exe  (local)  へ接続中");
  const std::vector<QString> wanted = {"Database", "Management", "Security"};
  Require(ChildrenOf("TreeView", {"SQL Server :(local)"}) == wanted, "no server nodes");
}

}  // namespace

Steps ConnectSteps() {
  return {
      {"start", [] {}, ExpectStart},
      {"system-menu", [] { OpenSystemMenu(); }, [] { ExpectItem("サポート Pageへ ...", true); }},
      {"system-menu-closed", [] { PressKey(Qt::Key_Escape); },
       [] { Require(QApplication::activePopupWidget() == nullptr, "the menu is still open"); }},
      {"server-menu", [] { ClickNode("TreeView", {"SQL Server"}, Press::kRight); },
       ExpectServerMenu},
      {"connect-dialog", [] { ChooseItem("接続 ..."); }, ExpectDialog},
      {"connect-dialog-login",
       [] {
         TypeInto("Edit_loginame", "sa");
         PressKey(Qt::Key_Tab);
         TypeInto("Edit_passwd", "secret");
       },
       ExpectTypedLogin},
      {"connect-dialog-windows", [] { Click("CheckBox_Windows"); }, ExpectWindowsLogin},
      {"connected", [] { Click("SBtn_Update"); }, ExpectConnected},
  };
}

}  // namespace dbkeeper::qt::tour
