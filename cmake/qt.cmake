# The Qt face, the machine behind it, the program and the guided tour, with their tests.
find_package(Qt6 REQUIRED COMPONENTS DBus Svg Widgets Test)

add_library(dbkeeper_host STATIC
  platform/host/DesktopLocale.cpp
  platform/host/DesktopShell.cpp
  platform/host/IconvCodePage.cpp
  platform/host/PosixDisk.cpp
  platform/host/SessionSettings.cpp
  platform/host/SystemClock.cpp
  platform/host/SystemRandom.cpp
)
target_link_libraries(dbkeeper_host PUBLIC dbkeeper_core dbkeeper_local_server dbkeeper_odbc Qt6::Gui)

add_library(dbkeeper_qt STATIC
  platform/qt/DesktopColors.cpp
  platform/qt/DesktopColors.h
  platform/qt/BusyInput.cpp
  platform/qt/CommandLine.cpp
  platform/qt/FormWindow.cpp
  platform/qt/Icons.cpp
  platform/qt/Look.cpp
  platform/qt/QtDialogs.cpp
  platform/qt/QtFace.cpp
  platform/qt/QtProgress.cpp
  platform/qt/QtText.cpp
  platform/qt/QtWindows.cpp
  platform/qt/binders/CellViewer.cpp
  platform/qt/binders/ChoiceBinders.cpp
  platform/qt/binders/Common.cpp
  platform/qt/binders/GridBinders.cpp
  platform/qt/binders/GridModel.cpp
  platform/qt/binders/GridWidget.cpp
  platform/qt/binders/ListModel.cpp
  platform/qt/binders/ListWidget.cpp
  platform/qt/binders/MenuBinder.cpp
  platform/qt/binders/NavigatorWidget.cpp
  platform/qt/binders/NumericWidget.cpp
  platform/qt/binders/TabBinder.cpp
  platform/qt/binders/TextBinders.cpp
  platform/qt/binders/TreeModel.cpp
  platform/qt/binders/TreeWidget.cpp
  platform/qt/editor/FindBar.cpp
  platform/qt/editor/SqlEditor.cpp
  platform/qt/editor/SqlHighlighter.cpp
  platform/qt/forms/BackupMediaWindow.cpp
  platform/qt/forms/BrowserPane.cpp
  platform/qt/forms/DatabasePropertyWindow.cpp
  platform/qt/forms/DialogFrame.cpp
  platform/qt/forms/FieldRows.cpp
  platform/qt/forms/ExecSqlWindow.cpp
  platform/qt/forms/LoginPropertyWindow.cpp
  platform/qt/forms/LoginWindow.cpp
  platform/qt/forms/MainWindow.cpp
  platform/qt/forms/PrivilegesWindow.cpp
  platform/qt/forms/PageStack.cpp
  platform/qt/forms/RestoreWindow.cpp
  platform/qt/forms/RoleWindow.cpp
  platform/qt/forms/UserWindow.cpp
  platform/qt/icons/icons.qrc
  platform/qt/forms/TableWindow.cpp
  platform/qt/forms/TestDataWindow.cpp
)
set_target_properties(dbkeeper_qt PROPERTIES AUTOMOC ON AUTORCC ON)
target_link_libraries(dbkeeper_qt PUBLIC dbkeeper_core Qt6::DBus Qt6::Svg Qt6::Widgets)
target_compile_definitions(dbkeeper_qt PUBLIC QT_NO_KEYWORDS)
target_precompile_headers(dbkeeper_qt PRIVATE <QtWidgets>)

# The hands that drive the windows, for the tour and the tests.
add_library(dbkeeper_tour_kit STATIC
  platform/qt/tour/BrowserSteps.cpp
  platform/qt/tour/Chapters.cpp
  platform/qt/tour/ConnectSteps.cpp
  platform/qt/tour/DatabaseSteps.cpp
  platform/qt/tour/DisconnectSteps.cpp
  platform/qt/tour/EditSteps.cpp
  platform/qt/tour/Hands.cpp
  platform/qt/tour/NodeSteps.cpp
  platform/qt/tour/Picture.cpp
  platform/qt/tour/QuerySteps.cpp
  platform/qt/tour/Tour.cpp
  platform/qt/tour/UpkeepSteps.cpp
)
target_link_libraries(dbkeeper_tour_kit PUBLIC dbkeeper_qt Qt6::Test)
target_precompile_headers(dbkeeper_tour_kit REUSE_FROM dbkeeper_qt)

# The program, and the guided tour: the same sources, but for who sits in the event loop.
foreach(program dbkeeper dbkeeper-tour)
  add_executable(${program} main.cpp)
  target_compile_definitions(${program} PRIVATE DBKEEPER_VERSION="${PROJECT_VERSION}")
  target_link_libraries(${program} PRIVATE dbkeeper_host dbkeeper_qt)
  if(TARGET dbkeeper-server)
    add_dependencies(${program} dbkeeper-server)
  endif()
endforeach()
target_sources(dbkeeper PRIVATE platform/qt/OperatorRun.cpp)
target_sources(dbkeeper-tour PRIVATE platform/qt/tour/TourRun.cpp)
target_link_libraries(dbkeeper-tour PRIVATE dbkeeper_tour_kit)

dbkeeper_test(qt_tests QT
  SOURCES
    tests/platform/qt/BinderTest.cpp
    tests/platform/qt/DatabaseWindowsTest.cpp
    tests/platform/qt/ListTest.cpp
    tests/platform/qt/LookTest.cpp
    tests/platform/qt/OffscreenMain.cpp
    tests/platform/qt/ProgressTest.cpp
    tests/platform/qt/RealWindows.cpp
    tests/platform/qt/SecurityWindowsTest.cpp
    tests/platform/qt/TreeTest.cpp
    tests/platform/qt/WindowsTest.cpp
  LIBS dbkeeper_tour_kit dbkeeper_test_support)

dbkeeper_test(host_tests
  SOURCES
    tests/platform/host/CodePageTest.cpp
    tests/platform/host/MachineTest.cpp
    tests/platform/host/PosixDiskTest.cpp
  LIBS dbkeeper_host dbkeeper_test_support)

dbkeeper_test(qt_grid_tests QT
  SOURCES
    tests/platform/qt/BrowserPaneTest.cpp
    tests/platform/qt/GridTest.cpp
    tests/platform/qt/OffscreenMain.cpp
  LIBS dbkeeper_qt dbkeeper_test_support)

# Users and rights over the wire, with the machine's own code page.
if(TARGET dbkeeper_test_server)
  dbkeeper_test(security_server_test WIRE
    SOURCES tests/platform/odbc/SecurityTest.cpp
    LIBS dbkeeper_host dbkeeper_test_server dbkeeper_test_support)
endif()

foreach(program dbkeeper dbkeeper-tour)
  add_test(NAME command_line_of_${program}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${program}> -DVERSION=${PROJECT_VERSION}
      -DSCRATCH=${CMAKE_BINARY_DIR}/no-display -P ${CMAKE_SOURCE_DIR}/cmake/CheckCommandLine.cmake)
  set_tests_properties(command_line_of_${program} PROPERTIES LABELS wire)
endforeach()
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND TARGET dbkeeper-server)
  add_test(NAME programs_are_hardened
    COMMAND ${CMAKE_COMMAND}
      "-DPROGRAMS=$<TARGET_FILE:dbkeeper>,$<TARGET_FILE:dbkeeper-tour>,$<TARGET_FILE:dbkeeper-server>"
      -P ${CMAKE_SOURCE_DIR}/cmake/CheckHardening.cmake)
  set_tests_properties(programs_are_hardened PROPERTIES LABELS wire)
endif()

# The whole of it on the local server: real windows, real wire.
if(TARGET dbkeeper-server)
  add_test(NAME guided_tour COMMAND dbkeeper-tour ${CMAKE_BINARY_DIR}/tour)
  add_dependencies(wire_tests dbkeeper-tour)
  set_tests_properties(guided_tour PROPERTIES LABELS wire
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endif()

dbkeeper_test(qt_query_tests QT
  SOURCES
    tests/platform/qt/ExecSqlWindowTest.cpp
    tests/platform/qt/NumericWidgetTest.cpp
    tests/platform/qt/OffscreenMain.cpp
  LIBS dbkeeper_qt dbkeeper_test_support)
