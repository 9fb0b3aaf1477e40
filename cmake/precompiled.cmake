# The standard library's headers, precompiled once for the program and once, with GoogleTest's, for
# the tests. They take most of the time that a source of ours takes to compile.
set(headers <algorithm> <array> <charconv> <chrono> <cstdint> <exception> <filesystem> <fstream>
  <functional> <limits> <map> <memory> <mutex> <optional> <set> <span> <sstream> <stdexcept> <string>
  <string_view> <thread> <type_traits> <unordered_map> <utility> <variant> <vector>)

# Something to compile, for a target that has nothing but headers.
set(nothing ${CMAKE_BINARY_DIR}/nothing.cpp)
file(CONFIGURE OUTPUT ${nothing} CONTENT "")

add_library(dbkeeper_headers OBJECT ${nothing})
target_precompile_headers(dbkeeper_headers PRIVATE ${headers})

find_package(GTest REQUIRED)
add_library(dbkeeper_test_headers OBJECT ${nothing})
target_link_libraries(dbkeeper_test_headers PRIVATE GTest::gtest)
target_precompile_headers(dbkeeper_test_headers PRIVATE ${headers} <gtest/gtest.h>)
if(DBKEEPER_SANITIZE)
  target_compile_options(dbkeeper_test_headers PRIVATE -O0)
endif()
