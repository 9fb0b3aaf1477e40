// Back to the roots, and the end.
#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

void ExpectDisconnected() {
  RequireEqual(Find("FormMain").windowTitle(), "DBKEEPER.exe");
  Require(ChildrenOf("TreeView", {"SQL Server :(local)"}).empty(), "the server nodes are there");
  Require(Headers("ListViewMain").empty(), "the list is not empty");
}

}  // namespace

Steps DisconnectSteps() {
  return {
      {"server-menu-connected",
       [] {
         ClickNode("TreeView", {"SQL Server :(local)"});
         ClickNode("TreeView", {"SQL Server :(local)"}, Press::kRight);
       },
       [] { RequireEqual(OpenMenu().objectName(), "PopupMenu_SQLServer"); }},
      {"disconnected", [] { ChooseItem("接続解除"); }, ExpectDisconnected},
      {"end", [] { CloseWindow("FormMain"); }, [] { RequireEqual(BoxText(), "OK"); }},
  };
}

}  // namespace dbkeeper::qt::tour
