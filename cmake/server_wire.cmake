# The local server's wire (packets, login, tokens, remote procedure calls, connections), the server
# program itself, and their tests.
add_library(dbkeeper_server_wire STATIC
  server/wire/placeholder.cpp
)
target_include_directories(dbkeeper_server_wire PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_wire PUBLIC Threads::Threads)
