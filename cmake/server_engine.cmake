# The local server's language, storage and catalog, with their tests.
find_package(SQLite3 REQUIRED)
find_package(Threads REQUIRED)

add_library(dbkeeper_server_engine STATIC
  server/engine/placeholder.cpp
)
target_include_directories(dbkeeper_server_engine PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_engine PUBLIC SQLite::SQLite3 Threads::Threads)
