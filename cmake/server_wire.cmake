# The local server's wire (packets, login, tokens, remote procedure calls, connections), the server
# program itself, and their tests.
add_library(dbkeeper_server_wire STATIC
  server/wire/attention.cpp
  server/wire/bulk_load.cpp
  server/wire/code_page.cpp
  server/wire/connection.cpp
  server/wire/login.cpp
  server/wire/packet.cpp
  server/wire/rpc.cpp
  server/wire/server.cpp
  server/wire/socket.cpp
  server/wire/tokens.cpp
  server/wire/value_codec.cpp
  server/wire/wire_sink.cpp
)
target_precompile_headers(dbkeeper_server_wire REUSE_FROM dbkeeper_headers)
target_include_directories(dbkeeper_server_wire PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_wire PUBLIC dbkeeper_server_sql Threads::Threads)

add_executable(dbkeeper-server server/main.cpp)
target_link_libraries(dbkeeper-server PRIVATE dbkeeper_server_engine dbkeeper_server_wire)
target_compile_definitions(dbkeeper-server PRIVATE DBKEEPER_VERSION="${PROJECT_VERSION}")

dbkeeper_test(server_wire_tests
  SOURCES
    tests/server/wire/bulk_load_test.cpp
    tests/server/wire/code_page_test.cpp
    tests/server/wire/fuzz_one.cpp
    tests/server/wire/fuzz_test.cpp
    tests/server/wire/login_test.cpp
    tests/server/wire/packet_test.cpp
    tests/server/wire/rpc_test.cpp
    tests/server/wire/server_test.cpp
    tests/server/wire/value_test.cpp
  LIBS dbkeeper_server_wire odbc
)

# A coverage-guided run by hand: -DDBKEEPER_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++.
if(DBKEEPER_FUZZ)
  target_compile_options(dbkeeper_server_wire PRIVATE -fsanitize=fuzzer-no-link,address)
  add_executable(server_wire_fuzz
    tests/server/wire/fuzz_one.cpp
    tests/server/wire/wire_fuzz.cpp
  )
  target_compile_options(server_wire_fuzz PRIVATE -fsanitize=fuzzer-no-link,address)
  target_link_options(server_wire_fuzz PRIVATE -fsanitize=fuzzer,address)
  target_link_libraries(server_wire_fuzz PRIVATE dbkeeper_server_wire)
endif()

dbkeeper_test(server_e2e_tests WIRE
  SOURCES
    tests/server/e2e/bulk_copy_test.cpp
    tests/server/e2e/database_kill_test.cpp
    tests/server/e2e/driver_test.cpp
    tests/server/e2e/durability_test.cpp
    tests/server/e2e/permissions_test.cpp
    tests/server/e2e/program_test.cpp
    tests/server/e2e/server_process.cpp
  LIBS odbc
)
target_compile_definitions(server_e2e_tests
  PRIVATE DBKEEPER_SERVER="$<TARGET_FILE:dbkeeper-server>")
add_dependencies(server_e2e_tests dbkeeper-server)
