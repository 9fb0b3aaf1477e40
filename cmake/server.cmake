# The local server: SQL Server 2000's dialect and wire protocol over SQLite.
find_package(SQLite3 REQUIRED)
find_package(Threads REQUIRED)

# Language, storage and catalog: everything but the wire.
add_library(dbkeeper_server_engine STATIC
  server/engine/placeholder.cpp
)
target_include_directories(dbkeeper_server_engine PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_engine PUBLIC SQLite::SQLite3 Threads::Threads)

# The wire: packets, login, tokens, remote procedure calls, connections.
add_library(dbkeeper_server_wire STATIC
  server/wire/placeholder.cpp
)
target_include_directories(dbkeeper_server_wire PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_wire PUBLIC Threads::Threads)
