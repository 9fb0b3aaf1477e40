include(GoogleTest)

# The two rings of tests, each a target and a CTest label. The wire's need the programs, and run
# against them as they are delivered; the units' need nothing, and run under the sanitizers.
add_custom_target(unit_tests)
add_custom_target(wire_tests)

# dbkeeper_test(name [WIRE] [QT] [TOGETHER] SOURCES ... LIBS ...): a test program whose cases CTest
# knows one by one, or runs together where they share what takes long to set up. One with QT brings
# its own main().
function(dbkeeper_test name)
  cmake_parse_arguments(ARG "WIRE;QT;TOGETHER" "" "SOURCES;LIBS" ${ARGN})
  set(ring unit)
  if(ARG_WIRE)
    set(ring wire)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  add_dependencies(${ring}_tests ${name})
  set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  if(ARG_QT)
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} Qt6::Test GTest::gtest)
    target_precompile_headers(${name} REUSE_FROM dbkeeper_qt)
  else()
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest_main)
    target_precompile_headers(${name} REUSE_FROM dbkeeper_test_headers)
    if(DBKEEPER_SANITIZE)
      # The cases themselves take no time worth optimising for, but minutes to be optimised.
      target_compile_options(${name} PRIVATE -O0)
    endif()
  endif()
  if(ARG_TOGETHER)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES LABELS ${ring})
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS ${ring})
  endif()
endfunction()

add_test(NAME sources_keep_to_their_floors
  COMMAND ${CMAKE_COMMAND} -DROOT=${CMAKE_SOURCE_DIR} -P ${CMAKE_SOURCE_DIR}/cmake/CheckIncludes.cmake)

add_test(NAME controls_carry_their_own_names
  COMMAND ${CMAKE_COMMAND} -DROOT=${CMAKE_SOURCE_DIR} -P ${CMAKE_SOURCE_DIR}/cmake/CheckNames.cmake)

set_tests_properties(sources_keep_to_their_floors controls_carry_their_own_names
  PROPERTIES LABELS unit)
