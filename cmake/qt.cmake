# The Qt face, the machine behind it, the program and the guided tour, with their tests.
find_package(Qt6 REQUIRED COMPONENTS Widgets Test)

add_library(dbkeeper_host STATIC
  platform/host/DesktopLocale.cpp
  platform/host/DesktopShell.cpp
  platform/host/IconvCodePage.cpp
  platform/host/SystemClock.cpp
)
target_link_libraries(dbkeeper_host PUBLIC dbkeeper_core Qt6::Gui)

add_library(dbkeeper_qt STATIC
  platform/qt/FormWindow.cpp
  platform/qt/Look.cpp
  platform/qt/QtDialogs.cpp
  platform/qt/QtText.cpp
  platform/qt/QtWindows.cpp
  platform/qt/binders/ChoiceBinders.cpp
  platform/qt/binders/Common.cpp
  platform/qt/binders/CellViewer.cpp
  platform/qt/binders/ListModel.cpp
  platform/qt/binders/ListWidget.cpp
  platform/qt/binders/GridBinders.cpp
  platform/qt/binders/GridModel.cpp
  platform/qt/binders/GridWidget.cpp
  platform/qt/binders/MenuBinder.cpp
  platform/qt/binders/TextBinders.cpp
  platform/qt/binders/TreeModel.cpp
  platform/qt/binders/NavigatorWidget.cpp
  platform/qt/binders/TreeWidget.cpp
  platform/qt/forms/LoginWindow.cpp
  platform/qt/forms/MainWindow.cpp
  platform/qt/forms/BrowserPane.cpp
)
target_link_libraries(dbkeeper_qt PUBLIC dbkeeper_core Qt6::Widgets)
target_compile_definitions(dbkeeper_qt PUBLIC QT_NO_KEYWORDS)
target_precompile_headers(dbkeeper_qt PRIVATE <QtWidgets>)
