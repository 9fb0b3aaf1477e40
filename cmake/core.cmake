# Floors 0 to 4: the C++ standard library and nothing else. The target links no library and the
# tests of the core link it alone, so a toolkit or driver that slipped in would not link.
add_library(dbkeeper_core STATIC
  controls/DataGrid.cpp
  controls/FnpNumericEdit.cpp
  controls/Inputs.cpp
  controls/ListView.cpp
  controls/Menu.cpp
  controls/Navigator.cpp
  controls/Pages.cpp
  controls/RecordMode.cpp
  controls/TreeView.cpp
  app/support/DateText.cpp
  app/support/FileReplacement.cpp
  app/support/Files.cpp
  app/support/Hexadecimal.cpp
  app/support/NumberText.cpp
  app/support/SettingsFile.cpp
  app/support/TextFilling.cpp
  app/support/TextHelpers.cpp
  app/support/Utf16.cpp
  app/support/Utf8.cpp
  app/session/BrowseQuery.cpp
  app/session/CellText.cpp
  app/session/Connection.cpp
  app/session/CursorRows.cpp
  app/session/Query.cpp
  app/session/RowBlock.cpp
  app/session/RowEditor.cpp
  app/session/RowOverlay.cpp
  app/session/RowStore.cpp
  app/session/RowView.cpp
  app/session/SelectSource.cpp
  app/session/ServerSession.cpp
  app/workbench/StatementRun.cpp
  catalog/DatabaseList.cpp
  catalog/DatabaseProperties.cpp
  catalog/ListRoutine.cpp
  catalog/ObjectLists.cpp
  catalog/PermissionScript.cpp
  catalog/ServerLists.cpp
  database/Unit_BackupMedia.cpp
  database/Unit_Database_Property.cpp
  database/Unit_Restore.cpp
  query/EasySql.cpp
  query/EasySqlCommands.cpp
  query/MessageLog.cpp
  query/ResultCommands.cpp
  query/ResultExport.cpp
  query/ScriptCommands.cpp
  query/ScriptFile.cpp
  query/SqlHistory.cpp
  query/TemplateStore.cpp
  query/UnitChooseTable.cpp
  query/Unit_Exec_SQL.cpp
  document/xls/CompoundFile.cpp
  document/xls/SharedStrings.cpp
  document/xls/SheetNames.cpp
  document/xls/SheetRecords.cpp
  document/xls/StyleTable.cpp
  document/xls/Text.cpp
  document/xls/Workbook.cpp
  document/xls/Writer.cpp
  app/main/Application.cpp
  app/main/CsvExport.cpp
  app/main/DatabaseCommands.cpp
  app/main/DropCommands.cpp
  app/main/ListCommands.cpp
  app/main/MainMenus.cpp
  app/main/MenuTable.cpp
  app/main/NodeDispatch.cpp
  app/main/QueryCommands.cpp
  app/main/RowCommand.cpp
  app/main/ServerCommands.cpp
  app/main/TableBrowser.cpp
  app/main/UnitLogin.cpp
  app/main/UnitMain.cpp
)
target_precompile_headers(dbkeeper_core REUSE_FROM dbkeeper_headers)
target_include_directories(dbkeeper_core PUBLIC ${CMAKE_SOURCE_DIR})

# Fakes of the outside, for every test program of the core.
add_library(dbkeeper_test_support STATIC tests/support/FakeHost.cpp)
target_precompile_headers(dbkeeper_test_support REUSE_FROM dbkeeper_headers)
target_link_libraries(dbkeeper_test_support PUBLIC dbkeeper_core)

dbkeeper_test(core_tests
  SOURCES
    tests/app/ConnectTest.cpp
    tests/app/DatabaseCommandsTest.cpp
    tests/app/MainMenusTest.cpp
    tests/app/NodeDispatchTest.cpp
    tests/app/NumberDateTextTest.cpp
    tests/app/RowCommandTest.cpp
    tests/app/StartUpTest.cpp
    tests/app/StatementRunTest.cpp
    tests/app/SupportTest.cpp
    tests/app/Utf16Test.cpp
    tests/catalog/CatalogTest.cpp
    tests/catalog/PermissionScriptTest.cpp
    tests/controls/FnpNumericEditTest.cpp
    tests/controls/InputsTest.cpp
    tests/controls/ListViewTest.cpp
    tests/controls/ObservableTest.cpp
    tests/controls/RecordModeTest.cpp
    tests/controls/TreeViewTest.cpp
    tests/database/BackupMediaTest.cpp
    tests/database/DatabasePropertyTest.cpp
    tests/database/RestoreTest.cpp
    tests/query/EasySqlTest.cpp
    tests/query/QueryWindowTest.cpp
    tests/query/ScriptTest.cpp
    tests/session/SessionTest.cpp
  LIBS dbkeeper_test_support
)

# The row view, the grid's model and the table browser.
dbkeeper_test(rows_tests
  SOURCES
    tests/app/TableBrowserTest.cpp
    tests/session/CellTextTest.cpp
    tests/session/RowOverlayTest.cpp
    tests/session/RowStoreTest.cpp
    tests/session/RowViewTest.cpp
  LIBS dbkeeper_test_support
)

# The workbooks, read back with a reader that is not ours.
find_library(FREEXL freexl)
if(FREEXL)
  dbkeeper_test(document_tests
    SOURCES
      tests/document/xls/FormatTest.cpp
      tests/document/xls/FuzzOne.cpp
      tests/document/xls/FuzzTest.cpp
      tests/document/xls/ReadBack.cpp
      tests/document/xls/SheetNamesTest.cpp
      tests/document/xls/WriterTest.cpp
    LIBS dbkeeper_test_support ${FREEXL}
  )
  target_compile_definitions(document_tests PRIVATE DBKEEPER_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
  if(DBKEEPER_FUZZ)
    add_executable(xls_fuzz tests/document/xls/FuzzOne.cpp tests/document/xls/ReadBack.cpp
      tests/document/xls/XlsFuzz.cpp)
    target_compile_options(xls_fuzz PRIVATE -fsanitize=fuzzer-no-link,address)
    target_link_options(xls_fuzz PRIVATE -fsanitize=fuzzer,address)
    target_link_libraries(xls_fuzz PRIVATE dbkeeper_core ${FREEXL})
  endif()
else()
  message(STATUS "Without libfreexl: the tests of the workbooks are left out")
endif()
