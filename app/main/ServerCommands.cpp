// Commands of the server node: connect, disconnect, stop, pause, and the server tools.

#include <array>

#include "app/main/UnitLogin.h"
#include "app/main/UnitMain.h"

namespace dbkeeper {

namespace {

constexpr const char* kProgramTitle = "DBKEEPER.exe";

struct NodeRow {
  const char* text;
  std::array<const char*, 4> children;  // null-terminated where there are fewer
};

constexpr std::array<NodeRow, 3> kServerNodes = {{
    {"Database", {}},
    {"Management", {"Job", "BackUpDevice", "Process", "Lock"}},
    {"Security", {"Login", "Server role"}},
}};

}  // namespace

void TFormMain::ShowConnectionState(bool connected) {
  PopupMenu_SQLServer->Find("PopupMenu_SQLServer_Connect")->Enabled = !connected;
  for (const char* name : {"PopupMenu_SQLServer_DisConnect", "PopupMenu_SQLServer_Stop",
                           "PopupMenu_SQLServer_OneStop"}) {
    PopupMenu_SQLServer->Find(name)->Enabled = connected;
  }
}

// Always under the first root: with "Config" selected the server's menu is offered too.
void TFormMain::BuildServerNodes() {
  TreeNode& server = *TreeView.Roots().front();
  server.DeleteChildren();
  for (const NodeRow& row : kServerNodes) {
    TreeNode& node = server.AddChild(row.text);
    for (const char* child : row.children) {
      if (child != nullptr) node.AddChild(child);
    }
  }
  TreeView.Expand(server);
}

void TFormMain::PopupMenu_SQLServer_ConnectClick() {
  host_.windows.ShowModal(forms_.FormLogin);
  if (!session_.Connected()) return;
  StatusBar1.SimpleText =
      " >"
      "基本操作は、左側のTreeで操作ｶﾃｺﾞﾘｰを選択、対象の列挙を行い。　右のListから操作対象を選んで、"
      "右ｸﾘｯｸで操作ﾒﾆｭｰを表示させます";
  BuildServerNodes();
  ShowConnectionState(true);
}

void TFormMain::PopupMenu_SQLServer_DisConnectClick() {
  host_.windows.SetApplicationTitle(kProgramTitle);
  Caption = kProgramTitle;
  HideTableBrowser();
  session_.Close();
  TreeView.Roots().front()->DeleteChildren();
  ShowConnectionState(false);
  // The commands of the list that was shown mean a server that is gone.
  ListViewMain.Popup = nullptr;
  const ListUpdate update(ListViewMain);
  ListViewMain.ClearItems();
  ListViewMain.ClearColumns();
}

void TFormMain::PopupMenu_SQLServer_StopClick() {
  if (!workbench_.ConfirmCaution("サーバーを停止しますが、よろしいですか?")) return;
  {
    RunningStatus status(workbench_);
    try {
      session_.ADOQuerySystem.Command("shutdown");
    } catch (const ServerError&) {
      // A server that was gone before it could answer has done what it was told.
      if (session_.Connected()) throw;
    }
    status.Done("shutdown");
  }
  PopupMenu_SQLServer_DisConnectClick();
}

void TFormMain::PopupMenu_SQLServer_OneStopClick() {
  if (!workbench_.ConfirmCaution("サーバーを一時停止しますが、よろしいですか?")) return;
  {
    RunningStatus status(workbench_);
    host_.shell.Run("net", "pause mssqlserver", WindowState::kHidden);
    status.Done("net.exe pause mssqlserver");
  }
  PopupMenu_SQLServer_DisConnectClick();
}

void TFormMain::PopupMenuServerCfg_SvrNetCnClick() {
  host_.shell.Open("SVRNETCN.exe");
  StatusBar1.SimpleText =
      " >SVRNETCN.exe  (MSDEの規定値はﾈｯﾄﾜｰｸ接続が無効です, "
      "ﾈｯﾄﾜｰｸ経由で使用する場合はTCP/IP or 名前つきパイプを有効にして下さい)";
}

void TFormMain::PopupMenuServerCfg_OdbcAdClick() {
  host_.shell.Open("odbcad32.exe");
  StatusBar1.SimpleText = " >odbcad32.exe";
}

}  // namespace dbkeeper
