# The local server's language, storage and catalog, with their tests.
find_package(Boost REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(XXHASH REQUIRED IMPORTED_TARGET libxxhash)

# The language: lexer, parser, translator to SQLite, data types and their functions.
add_library(dbkeeper_server_sql STATIC
  server/sql/bind_expression.cpp
  server/sql/bind_function.cpp
  server/sql/bind_operator.cpp
  server/sql/bind_query.cpp
  server/sql/bind_table.cpp
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
  server/types/collation.cpp
  server/types/conversion.cpp
  server/types/datetime.cpp
  server/types/decimal.cpp
  server/types/job_schedule.cpp
  server/types/messages.cpp
  server/types/text.cpp
  server/types/type_rules.cpp
)
target_precompile_headers(dbkeeper_server_sql REUSE_FROM dbkeeper_headers)
target_include_directories(dbkeeper_server_sql PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_sql PUBLIC SQLite::SQLite3 PRIVATE Boost::headers)

add_library(dbkeeper_server_engine STATIC
  server/agent/agent.cpp
  server/agent/agent_session.cpp
  server/agent/job_history.cpp
  server/agent/job_run.cpp
  server/catalog/catalog.cpp
  server/catalog/login_store.cpp
  server/catalog/new_database.cpp
  server/catalog/system_tables.cpp
  server/engine/backup_medium.cpp
  server/engine/backup_statements.cpp
  server/engine/cursor.cpp
  server/engine/database_definition.cpp
  server/engine/database_files.cpp
  server/engine/database_places.cpp
  server/engine/engine_session.cpp
  server/storage/host_account.cpp
  server/engine/instance_state.cpp
  server/engine/live_tables.cpp
  server/engine/object_definition.cpp
  server/engine/permissions.cpp
  server/engine/query_runner.cpp
  server/engine/resolver.cpp
  server/engine/restore_database.cpp
  server/engine/restore_statements.cpp
  server/engine/session_settings.cpp
  server/engine/state_functions.cpp
  server/engine/statements.cpp
  server/engine/table_change.cpp
  server/engine/table_definition.cpp
  server/engine/workspace.cpp
  server/instance/open_instance.cpp
  server/instance/sample_data.cpp
  server/instance/sample_instance.cpp
  server/procedures/backup_history_procedures.cpp
  server/procedures/database_procedures.cpp
  server/procedures/job_call.cpp
  server/procedures/job_history_procedures.cpp
  server/procedures/job_procedures.cpp
  server/procedures/job_schedule_procedures.cpp
  server/procedures/job_step_procedures.cpp
  server/procedures/login_procedures.cpp
  server/procedures/metadata_procedures.cpp
  server/procedures/object_procedures.cpp
  server/procedures/procedure_call.cpp
  server/procedures/property_procedures.cpp
  server/procedures/user_procedures.cpp
  server/storage/host_file.cpp
  server/storage/sqlite.cpp
  server/storage/text_order.cpp
)
target_precompile_headers(dbkeeper_server_engine REUSE_FROM dbkeeper_headers)
target_include_directories(dbkeeper_server_engine PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(dbkeeper_server_engine PUBLIC dbkeeper_server_sql Threads::Threads
  PkgConfig::XXHASH
  crypt)

dbkeeper_test(server_sql_tests
  SOURCES
    tests/server/sql/change_cases.cpp
    tests/server/sql/expression_cases.cpp
    tests/server/sql/fuzz_test.cpp
    tests/server/sql/parser_test.cpp
    tests/server/sql/query_cases.cpp
    tests/server/sql/sql_fixture.cpp
    tests/server/sql/translator_test.cpp
    tests/server/types/datetime_test.cpp
    tests/server/types/decimal_test.cpp
    tests/server/types/job_schedule_test.cpp
    tests/server/types/text_test.cpp
  LIBS dbkeeper_server_sql
)

dbkeeper_test(server_engine_tests
  SOURCES
    tests/server/engine/agent_test.cpp
    tests/server/engine/BackupTest.cpp
    tests/server/engine/catalog_test.cpp
    tests/server/engine/durability_test.cpp
    tests/server/engine/engine_fixture.cpp
    tests/server/engine/job_procedures_test.cpp
    tests/server/engine/permissions_test.cpp
    tests/server/engine/session_test.cpp
    tests/server/engine/statement_cases_test.cpp
    tests/server/engine/text_order_test.cpp
  LIBS dbkeeper_server_engine
)
