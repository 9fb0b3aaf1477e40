# The local server's language, storage and catalog, with their tests.
find_package(SQLite3 REQUIRED)
find_package(Threads REQUIRED)

# The language: lexer, parser, translator to SQLite, data types and their functions.
add_library(dbkeeper_server_sql STATIC
  server/sql/lexer.cpp
  server/sql/parse_administration.cpp
  server/sql/parse_definition.cpp
  server/sql/parse_expression.cpp
  server/sql/parse_query.cpp
  server/sql/parse_table.cpp
  server/sql/parser.cpp
  server/types/messages.cpp
  server/types/type_rules.cpp
)
target_include_directories(dbkeeper_server_sql PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_sql PUBLIC SQLite::SQLite3)

add_library(dbkeeper_server_engine STATIC
  server/engine/placeholder.cpp
)
target_include_directories(dbkeeper_server_engine PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_engine PUBLIC SQLite::SQLite3 Threads::Threads)
