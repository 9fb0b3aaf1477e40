# The local server's language, storage and catalog, with their tests.
find_package(SQLite3 REQUIRED)
find_package(Threads REQUIRED)

# The language: lexer, parser, translator to SQLite, data types and their functions.
add_library(dbkeeper_server_sql STATIC
  server/sql/bind_conversion.cpp
  server/sql/bind_expression.cpp
  server/sql/bind_function.cpp
  server/sql/bind_operator.cpp
  server/sql/bind_query.cpp
  server/sql/bind_table.cpp
  server/sql/constraint_errors.cpp
  server/sql/date_functions.cpp
  server/sql/function_table.cpp
  server/sql/lexer.cpp
  server/sql/number_functions.cpp
  server/sql/parse_administration.cpp
  server/sql/parse_definition.cpp
  server/sql/parse_expression.cpp
  server/sql/parse_query.cpp
  server/sql/parse_table.cpp
  server/sql/parser.cpp
  server/sql/server_functions.cpp
  server/sql/text_functions.cpp
  server/sql/translator.cpp
  server/types/conversion.cpp
  server/types/datetime.cpp
  server/types/decimal.cpp
  server/types/guid.cpp
  server/types/messages.cpp
  server/types/text.cpp
  server/types/type_rules.cpp
)
target_include_directories(dbkeeper_server_sql PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_sql PUBLIC SQLite::SQLite3)

add_library(dbkeeper_server_engine STATIC
  server/engine/placeholder.cpp
)
target_include_directories(dbkeeper_server_engine PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_engine PUBLIC SQLite::SQLite3 Threads::Threads)
