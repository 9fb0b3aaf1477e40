// The server: its properties, connect and disconnect, stop and pause, the server tools.

#include <algorithm>
#include <string>
#include <vector>

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "app/support/DateText.h"
#include "app/support/Messages.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

void PopupMenu_SQLServer_ConnectClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  workbench.Host.windows.ShowModal(context.program.FormLogin);
  if (!workbench.Session.Connected()) return;
  workbench.Status.SimpleText =
      " >"
      "基本操作は、左側のTreeで操作ｶﾃｺﾞﾘｰを選択、対象の列挙を行い。　右のListから操作対象を選んで、"
      "右ｸﾘｯｸで操作ﾒﾆｭｰを表示させます";
  context.program.FormMain.ShowConnected();
}

void PopupMenu_SQLServer_DisConnectClick(const CommandContext& context) {
  context.program.FormMain.Disconnect();
}

// Whether the server has said, before it was gone, that it shuts down.
bool SaidShutdown(const Workbench& workbench, const ServerError& error) {
  const auto said = [](const ServerMessage& message) {
    return message.number == 6005 || message.number == 6006;
  };
  const std::vector<ServerMessage> remarks = workbench.Session.TheConnection().TakeMessages();
  return std::ranges::any_of(error.Messages(), said) || std::ranges::any_of(remarks, said);
}

void PopupMenu_SQLServer_StopClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  bool silent = false;
  try {
    if (!RunStatements(workbench, {.question = "サーバーを停止しますが、よろしいですか?",
                                   .statements = {"shutdown"}})) {
      return;
    }
  } catch (const ServerError& error) {
    if (workbench.Session.Connected()) throw;
    silent = !SaidShutdown(workbench, error);
    if (!silent) workbench.Status.SimpleText = " >shutdown";
  }
  context.program.FormMain.Disconnect();
  if (silent) workbench.Host.dialogs.ShowMessage(std::string(messages::kGoneWithoutAnswer));
}

void PopupMenu_SQLServer_OneStopClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  if (!workbench.ConfirmCaution("サーバーを一時停止しますが、よろしいですか?")) return;
  {
    RunningStatus status(workbench);
    workbench.Host.shell.Run("net", "pause mssqlserver", WindowState::kHidden);
    status.Done("net.exe pause mssqlserver");
  }
  context.program.FormMain.Disconnect();
}

void EST1Click(const CommandContext& context) {
  const Host& host = context.workbench.Host;
  host.dialogs.ShowMessage("OK:" + FormatDateTime(host.clock.Now(), host.locale.ShortDateFormat()));
}

void PopupMenuServerCfg_SvrNetCnClick(const CommandContext& context) {
  context.workbench.Host.shell.Open("SVRNETCN.exe");
  context.workbench.Status.SimpleText =
      " >SVRNETCN.exe  (MSDEの規定値はﾈｯﾄﾜｰｸ接続が無効です, "
      "ﾈｯﾄﾜｰｸ経由で使用する場合はTCP/IP or 名前つきパイプを有効にして下さい)";
}

void PopupMenuServerCfg_OdbcAdClick(const CommandContext& context) {
  context.workbench.Host.shell.Open("odbcad32.exe");
  context.workbench.Status.SimpleText = " >odbcad32.exe";
}

constexpr MenuRow kServerTreeRows[] = {
    {0, "PopupMenu_SQLServer_Connect", "接続 ...", &PopupMenu_SQLServer_ConnectClick,
     &Disconnected},
    {0, "PopupMenu_SQLServer_DisConnect", "接続解除", &PopupMenu_SQLServer_DisConnectClick,
     &Connected},
    {0, "PopupMenu_SQLServer_Stop", "停止", &PopupMenu_SQLServer_StopClick, &Connected,
     MenuLook::kPlain, "shutdown を実行します。"},
    {0, "PopupMenu_SQLServer_OneStop", "一時停止", &PopupMenu_SQLServer_OneStopClick, &Connected,
     MenuLook::kPlain, "net pause mssqlserver を実行します。"},
    {0, "EST1", "TEST", &EST1Click, nullptr, MenuLook::kInvisible},
    kOnlineHelpRow,
    kReadmeRow,
    kHomePageRow,
};

constexpr MenuRow kServerRows[] = {
    SqlRow("PopupMenuServerCfg_SQL", &PopupMenu_Minimum_SQLClick),
    kCsvRow,
    {0, "PopupMenuServerCfg_SvrNetCn", "SQL Serverﾈｯﾄﾜｰｸﾕｰﾃｨﾘﾃｨの起動",
     &PopupMenuServerCfg_SvrNetCnClick},
    {0, "PopupMenuServerCfg_OdbcAd", "ODBCﾃﾞｰﾀｿｰｽ ｱﾄﾞﾐﾆｽﾄﾚｰﾀの起動",
     &PopupMenuServerCfg_OdbcAdClick},
    kOnlineHelpRow,
    kReadmeRow,
    kHomePageRow,
};
constexpr MenuTable kServerMenu = {"PopupMenuServerCfg", kServerRows};

}  // namespace

constinit const MenuTable kServerTreeMenu = {"PopupMenu_SQLServer", kServerTreeRows};

constinit const NodeKind kServerNode = {0,
                                        Match::kTextHoldsAndConnected,
                                        "SQL Server",
                                        ListServerProperties,
                                        &kServerMenu,
                                        "select SERVERPROPERTY(xxx)"};

}  // namespace dbkeeper
