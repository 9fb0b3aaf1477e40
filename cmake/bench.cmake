# Measurements: they print numbers and never pass or fail. Build them with the target "benchmarks".
find_package(benchmark REQUIRED)
add_custom_target(benchmarks)

# dbkeeper_bench(name SOURCES ... LIBS ...)
function(dbkeeper_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} EXCLUDE_FROM_ALL ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} benchmark::benchmark)
  add_dependencies(benchmarks ${name})
endfunction()

dbkeeper_bench(core_bench SOURCES bench/core_bench.cpp LIBS dbkeeper_test_support)

if(TARGET dbkeeper_test_server)
  dbkeeper_bench(backup_bench SOURCES bench/backup_bench.cpp
    LIBS dbkeeper_odbc dbkeeper_test_server)
  dbkeeper_bench(server_bench SOURCES bench/server_bench.cpp
    LIBS dbkeeper_odbc dbkeeper_test_server SQLite::SQLite3)
endif()

if(TARGET dbkeeper_test_server)
  dbkeeper_bench(catalog_bench SOURCES bench/catalog_bench.cpp
    LIBS dbkeeper_odbc dbkeeper_test_server dbkeeper_test_support)
  dbkeeper_bench(lists_bench SOURCES bench/lists_bench.cpp
    LIBS dbkeeper_odbc dbkeeper_test_server dbkeeper_test_support)
endif()

if(TARGET dbkeeper_host AND TARGET dbkeeper_test_server)
  dbkeeper_bench(rows_bench SOURCES bench/rows_bench.cpp bench/bare_loop.cpp
    LIBS dbkeeper_host dbkeeper_test_server dbkeeper_test_support odbc)
endif()

# The program's start. The measured program is the real one with another event loop.
if(TARGET dbkeeper_qt)
  add_executable(start_program EXCLUDE_FROM_ALL main.cpp bench/start_common.cpp
    bench/start_program.cpp)
  target_compile_definitions(start_program PRIVATE DBKEEPER_VERSION="${PROJECT_VERSION}")
  target_link_libraries(start_program PRIVATE dbkeeper_host dbkeeper_qt)
  add_executable(start_empty EXCLUDE_FROM_ALL bench/start_empty.cpp bench/start_common.cpp)
  target_include_directories(start_empty PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(start_empty PRIVATE Qt6::Widgets)
  add_executable(start_bench EXCLUDE_FROM_ALL bench/start_bench.cpp)
  add_dependencies(benchmarks start_bench start_program start_empty)
endif()
