# The database session over ODBC, with its tests.
find_path(ODBC_INCLUDE_DIR sql.h REQUIRED)
find_library(ODBC_LIBRARY odbc REQUIRED)

add_library(dbkeeper_odbc STATIC
  platform/odbc/BoundRows.cpp
  platform/odbc/ConnectionString.cpp
  platform/odbc/Diagnostics.cpp
  platform/odbc/Driver.cpp
  platform/odbc/FieldTypes.cpp
  platform/odbc/OdbcConnection.cpp
  platform/odbc/Pages.cpp
  platform/odbc/Reader.cpp
)
target_precompile_headers(dbkeeper_odbc REUSE_FROM dbkeeper_headers)
target_include_directories(dbkeeper_odbc SYSTEM PRIVATE ${ODBC_INCLUDE_DIR})
target_link_libraries(dbkeeper_odbc PUBLIC dbkeeper_core PRIVATE ${ODBC_LIBRARY})

dbkeeper_test(odbc_test
  SOURCES
    tests/platform/odbc/ConnectionStringTest.cpp
    tests/platform/odbc/ReachingTest.cpp
  LIBS dbkeeper_odbc)

add_library(dbkeeper_local_server STATIC platform/host/LocalServerProcess.cpp)
target_precompile_headers(dbkeeper_local_server REUSE_FROM dbkeeper_headers)
target_link_libraries(dbkeeper_local_server PUBLIC dbkeeper_core)

# What end-to-end tests link to have a server of their own.
if(TARGET dbkeeper-server)
  add_library(dbkeeper_test_server STATIC tests/support/LocalServer.cpp)
  target_compile_definitions(dbkeeper_test_server PRIVATE
    DBKEEPER_SERVER_PROGRAM="$<TARGET_FILE:dbkeeper-server>")
  target_link_libraries(dbkeeper_test_server PUBLIC dbkeeper_local_server)
  add_dependencies(dbkeeper_test_server dbkeeper-server)

  dbkeeper_test(odbc_server_test WIRE
    SOURCES
      tests/platform/odbc/ConnectionContract.cpp
      tests/platform/odbc/LocalServerTest.cpp
      tests/platform/odbc/TableCatalogTest.cpp
    LIBS dbkeeper_odbc dbkeeper_test_server dbkeeper_test_support)

  dbkeeper_test(rows_server_test WIRE TOGETHER
    SOURCES tests/platform/odbc/EditModeTest.cpp
    LIBS dbkeeper_odbc dbkeeper_test_server dbkeeper_test_support)

  dbkeeper_test(upkeep_server_test WIRE
    SOURCES tests/platform/odbc/DatabaseUpkeepTest.cpp
    LIBS dbkeeper_odbc dbkeeper_test_server dbkeeper_test_support)
endif()
