include(GoogleTest)

# dbkeeper_test(name [TOGETHER] SOURCES ... LIBS ...): a test program whose cases CTest knows one by
# one, or runs together where they share what takes long to set up.
function(dbkeeper_test name)
  cmake_parse_arguments(ARG "TOGETHER" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest_main)
  target_precompile_headers(${name} REUSE_FROM dbkeeper_test_headers)
  if(DBKEEPER_SANITIZE)
    # The cases themselves take no time worth optimising for, but minutes to be optimised.
    target_compile_options(${name} PRIVATE -O0)
  endif()
  if(ARG_TOGETHER)
    add_test(NAME ${name} COMMAND ${name})
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
  endif()
endfunction()

add_test(NAME core_keeps_to_its_floors
  COMMAND ${CMAKE_COMMAND} -DROOT=${CMAKE_SOURCE_DIR} -P ${CMAKE_SOURCE_DIR}/cmake/CheckIncludes.cmake)
