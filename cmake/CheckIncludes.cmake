# cmake -DROOT=<project> -P CheckIncludes.cmake
#
# Holds the sources against the floors of docs/architecture.md: an include of the core names a
# header of the C++ standard library or one of the project that is further down or in the same
# folder.
cmake_minimum_required(VERSION 3.25)

# From the bottom up; folders on one line may not know each other, but for the two at the bottom.
set(floors
  "controls|app/support"
  "app/session"
  "app/workbench"
  "catalog"
  "query|table_designer|security|database|jobs|testdata|document"
  "app/main"
)

function(floor_of path result)
  set(height 0)
  foreach(floor IN LISTS floors)
    if(path MATCHES "^(${floor})/")
      set(${result} ${height} PARENT_SCOPE)
      return()
    endif()
    math(EXPR height "${height} + 1")
  endforeach()
  set(${result} -1 PARENT_SCOPE)
endfunction()

function(folder_of path result)
  string(REGEX REPLACE "/[^/]*$" "" folder "${path}")
  set(${result} "${folder}" PARENT_SCOPE)
endfunction()

set(wrong 0)
set(seen 0)
foreach(floor IN LISTS floors)
  string(REPLACE "|" ";" folders "${floor}")
  foreach(folder IN LISTS folders)
    file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/${folder}/*.h ${ROOT}/${folder}/*.cpp)
    foreach(file IN LISTS files)
      math(EXPR seen "${seen} + 1")
      floor_of(${file} own)
      folder_of(${file} own_folder)
      file(STRINGS ${ROOT}/${file} includes REGEX "^[ \t]*#[ \t]*include")
      foreach(include IN LISTS includes)
        if(include MATCHES "<[a-z_]+>")
          continue()  # the standard library's headers have neither a "." nor a "/"
        endif()
        if(include MATCHES "\"([^\"]+)\"")
          floor_of(${CMAKE_MATCH_1} other)
          folder_of(${CMAKE_MATCH_1} other_folder)
          if(other GREATER_EQUAL 0 AND (other LESS own OR other EQUAL 0
                                        OR other_folder STREQUAL own_folder))
            continue()
          endif()
        endif()
        message("${file}: ${include}")
        math(EXPR wrong "${wrong} + 1")
      endforeach()
    endforeach()
  endforeach()
endforeach()

if(seen EQUAL 0)
  message(FATAL_ERROR "no sources under ${ROOT}")
endif()
if(wrong GREATER 0)
  message(FATAL_ERROR "${wrong} includes leave the core or go up the floors")
endif()
message("${seen} files keep to the floors")
