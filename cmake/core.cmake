# Floors 0 to 4: the C++ standard library and nothing else. The target links no library and the
# tests of the core link it alone, so a toolkit or driver that slipped in would not link.
add_library(dbkeeper_core STATIC
  controls/DataGrid.cpp
  controls/FnpNumericEdit.cpp
  controls/Inputs.cpp
  controls/ListView.cpp
  controls/Menu.cpp
  controls/Navigator.cpp
  controls/TreeView.cpp
  app/support/DateText.cpp
  app/support/Files.cpp
  app/support/SettingsFile.cpp
  app/support/TextHelpers.cpp
  app/support/Utf8.cpp
  app/session/Connection.cpp
  app/session/Query.cpp
  app/session/ServerSession.cpp
  catalog/DatabaseList.cpp
  catalog/DatabaseProperties.cpp
  catalog/ListRoutine.cpp
  app/session/RowBlock.cpp
  app/session/RowEditor.cpp
  app/session/RowOverlay.cpp
  app/session/RowStore.cpp
  app/session/RowView.cpp
  app/session/SelectSource.cpp
  catalog/ObjectLists.cpp
  catalog/ServerLists.cpp
  database/Unit_BackupMedia.cpp
  database/Unit_Database_Property.cpp
  database/Unit_Restore.cpp
  app/main/Application.cpp
  app/main/CsvExport.cpp
  app/main/DatabaseCommands.cpp
  app/main/DropCommands.cpp
  app/main/ListCommands.cpp
  app/main/MainMenus.cpp
  app/main/MenuTable.cpp
  app/main/NodeDispatch.cpp
  app/main/RowCommand.cpp
  app/main/ServerCommands.cpp
  app/main/UnitLogin.cpp
  app/main/UnitMain.cpp
)
target_include_directories(dbkeeper_core PUBLIC ${CMAKE_SOURCE_DIR})
  app/main/TableBrowser.cpp
