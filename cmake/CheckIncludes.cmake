# cmake -DROOT=<project> -P CheckIncludes.cmake
#
# Holds the sources against the floors of docs/architecture.md: an include names a header of the
# same room or of one further down. The core uses the C++ standard library alone, the server knows
# nothing of the program beside it, and the platforms stand on the core.
cmake_minimum_required(VERSION 3.25)

# Each house from the bottom up; rooms on one line may not know each other, but for the two on the
# ground of the core.
set(ground "controls|app/support")
set(core
  "${ground}"
  "app/session"
  "app/workbench"
  "catalog"
  "document/xls"
  "query|table_designer|security|database|jobs|testdata|document"
  "app/main"
)
set(platform
  "platform/odbc"
  "platform/host|platform/qt"
)
set(server
  "server/types"
  "server/sql"
  "server/storage"
  "server/catalog"
  "server/engine"
  "server/agent|server/procedures|server/wire"
  "server/instance"
)

# The room that a path lies in and its height in a list of floors; -1 when it lies in none.
function(room_of path floors room height)
  set(${height} -1 PARENT_SCOPE)
  set(level 0)
  foreach(floor IN LISTS floors)
    if(path MATCHES "^(${floor})/")
      set(${room} ${CMAKE_MATCH_1} PARENT_SCOPE)
      set(${height} ${level} PARENT_SCOPE)
      return()
    endif()
    math(EXPR level "${level} + 1")
  endforeach()
endfunction()

set(wrong 0)
set(seen 0)

# Checks every file of the floors `own`, which stand on the floors `below`. With SYSTEM_HEADERS,
# headers of the system and of libraries are allowed.
function(check own below)
  cmake_parse_arguments(ARG "SYSTEM_HEADERS" "" "" ${ARGN})
  set(floors ${below} ${own})
  foreach(floor IN LISTS own)
    string(REPLACE "|" ";" rooms "${floor}")
    foreach(room IN LISTS rooms)
      file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/${room}/*.h ${ROOT}/${room}/*.cpp)
      foreach(file IN LISTS files)
        math(EXPR seen "${seen} + 1")
        room_of(${file} "${floors}" room height)
        file(STRINGS ${ROOT}/${file} includes REGEX "^[ \t]*#[ \t]*include")
        foreach(include IN LISTS includes)
          # The standard library's headers have neither a "." nor a "/".
          if(include MATCHES "<[a-z_]+>" OR (ARG_SYSTEM_HEADERS AND include MATCHES "<"))
            continue()
          endif()
          if(include MATCHES "\"([^\"]+)\"")
            room_of(${CMAKE_MATCH_1} "${floors}" other_room other_height)
            if(other_height GREATER_EQUAL 0
               AND (other_height LESS height OR other_room STREQUAL room
                    OR CMAKE_MATCH_1 MATCHES "^(${ground})/"))
              continue()
            endif()
          endif()
          message("${file}: ${include}")
          math(EXPR wrong "${wrong} + 1")
        endforeach()
      endforeach()
    endforeach()
  endforeach()
  set(seen ${seen} PARENT_SCOPE)
  set(wrong ${wrong} PARENT_SCOPE)
endfunction()

check("${core}" "")
check("${platform}" "${core}" SYSTEM_HEADERS)
check("${server}" "" SYSTEM_HEADERS)

if(seen EQUAL 0)
  message(FATAL_ERROR "no sources under ${ROOT}")
endif()
if(wrong GREATER 0)
  message(FATAL_ERROR "${wrong} includes leave their house or go up the floors")
endif()
message("${seen} files keep to the floors")
