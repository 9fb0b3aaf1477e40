# cmake -DPROGRAM=<program> -DVERSION=<version> -DSCRATCH=<folder> -P CheckCommandLine.cmake
#
# What a program with windows answers before it opens one.
cmake_minimum_required(VERSION 3.25)

function(expect arguments code pattern)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env --unset=DISPLAY --unset=WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb
      LC_ALL=C.UTF-8 ${PROGRAM} ${arguments}
    RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE complained)
  if(NOT result STREQUAL "${code}" OR NOT "${said}${complained}" MATCHES "${pattern}")
    message(SEND_ERROR "${PROGRAM} ${arguments}: ${result}\n${said}${complained}")
  endif()
endfunction()

expect("--help" 0 "^usage: ")
expect("--version" 0 "^${VERSION}\n$")

expect("${SCRATCH}" 1 "^There is no display to show windows on[^\n]*\n$")
