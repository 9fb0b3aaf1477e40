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
  app/support/AnsiTextFile.cpp
  app/support/DateText.cpp
  app/support/FileReplacement.cpp
  app/support/Files.cpp
  app/support/Hexadecimal.cpp
  app/support/NumberText.cpp
  app/support/SettingsFile.cpp
  app/support/TextFilling.cpp
  app/support/TextHelpers.cpp
  app/support/TextLines.cpp
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
  app/workbench/GridPane.cpp
  app/workbench/StatementRun.cpp
  catalog/BulkCopy.cpp
  catalog/ColumnList.cpp
  catalog/DatabaseList.cpp
  catalog/DatabaseProperties.cpp
  catalog/ExtendedProperty.cpp
  catalog/ListRoutine.cpp
  catalog/ObjectLists.cpp
  catalog/ObjectScript.cpp
  catalog/PermissionScript.cpp
  catalog/ServerLists.cpp
  catalog/TableCatalog.cpp
  catalog/TableDefinition.cpp
  database/Unit_BackupMedia.cpp
  database/Unit_Database_Property.cpp
  database/Unit_Restore.cpp
  table_designer/CheckPage.cpp
  table_designer/ColumnPage.cpp
  table_designer/ColumnText.cpp
  table_designer/IndexPage.cpp
  table_designer/TriggerPage.cpp
  table_designer/Unit_Table.cpp
  testdata/PatternString.cpp
  testdata/RowBuilder.cpp
  testdata/SettingsLines.cpp
  testdata/Unit_Table_TestData.cpp
  testdata/ValueFile.cpp
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
  security/Unit_Login_Property.cpp
  security/Unit_Privileges.cpp
  security/Unit_Role.cpp
  security/Unit_User.cpp
  app/main/Application.cpp
  app/main/CsvExport.cpp
  app/main/ErrorLog.cpp
  app/main/MainList.cpp
  app/main/MainTree.cpp
  app/main/MenuTable.cpp
  app/main/RowCommand.cpp
  app/main/TableBrowser.cpp
  app/main/UnitLogin.cpp
  app/main/UnitMain.cpp
  app/main/nodes/BackUpDevice.cpp
  app/main/nodes/BackupHistory.cpp
  app/main/nodes/Config.cpp
  app/main/nodes/Database.cpp
  app/main/nodes/Databases.cpp
  app/main/nodes/Job.cpp
  app/main/nodes/Login.cpp
  app/main/nodes/NodeKinds.cpp
  app/main/nodes/Procedure.cpp
  app/main/nodes/ProcessLock.cpp
  app/main/nodes/Role.cpp
  app/main/nodes/Server.cpp
  app/main/nodes/ServerRole.cpp
  app/main/nodes/SharedRows.cpp
  app/main/nodes/Table.cpp
  app/main/nodes/User.cpp
  app/main/nodes/View.cpp
)
target_precompile_headers(dbkeeper_core REUSE_FROM dbkeeper_headers)
target_include_directories(dbkeeper_core PUBLIC ${CMAKE_SOURCE_DIR})

# Fakes of the outside, for every test program of the core.
add_library(dbkeeper_test_support STATIC tests/support/FakeHost.cpp tests/support/Golden.cpp)
target_precompile_headers(dbkeeper_test_support REUSE_FROM dbkeeper_headers)
target_link_libraries(dbkeeper_test_support PUBLIC dbkeeper_core GTest::gtest)
# A definition of its own, which the precompiled headers do not have.
set_source_files_properties(tests/support/Golden.cpp PROPERTIES
  SKIP_PRECOMPILE_HEADERS ON
  COMPILE_DEFINITIONS GOLDEN_FOLDER="${CMAKE_SOURCE_DIR}/tests/golden")

dbkeeper_test(core_tests
  SOURCES
    tests/app/ConnectTest.cpp
    tests/app/DatabaseCommandsTest.cpp
    tests/app/MainWindowTest.cpp
    tests/app/FailureTest.cpp
    tests/app/NodeDispatchTest.cpp
    tests/app/NumberDateTextTest.cpp
    tests/app/RowCommandTest.cpp
    tests/app/SecurityCommandsTest.cpp
    tests/app/StartUpTest.cpp
    tests/app/StatementRunTest.cpp
    tests/app/SupportTest.cpp
    tests/app/TextFileTest.cpp
    tests/app/Utf16Test.cpp
    tests/catalog/CatalogTest.cpp
    tests/catalog/ExtendedPropertyTest.cpp
    tests/catalog/ListRowsTest.cpp
    tests/catalog/ObjectScriptTest.cpp
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
    tests/security/LoginPropertyTest.cpp
    tests/security/PrivilegesTest.cpp
    tests/security/RoleTest.cpp
    tests/security/UserTest.cpp
    tests/session/SessionTest.cpp
    tests/table_designer/TableDesignerTest.cpp
    tests/testdata/RowBuilderTest.cpp
    tests/testdata/TestDataFormTest.cpp
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
