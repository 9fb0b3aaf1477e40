# cmake -DPROGRAMS=<program,...> -P CheckHardening.cmake
#
# Holds the programs against what a program that reads foreign bytes should have: it can be loaded
# anywhere, nothing that linking needs stays writable, and a smashed stack is noticed.
cmake_minimum_required(VERSION 3.25)

string(REPLACE "," ";" programs "${PROGRAMS}")
find_program(READELF readelf REQUIRED)
foreach(program IN LISTS programs)
  execute_process(COMMAND ${READELF} --wide --file-header --segments --dynamic --dyn-syms ${program}
    OUTPUT_VARIABLE seen COMMAND_ERROR_IS_FATAL ANY)
  foreach(sign "Type: +DYN" "GNU_RELRO" "BIND_NOW|FLAGS_1.*NOW" "__stack_chk_fail" "__[a-z]+_chk@")
    if(NOT seen MATCHES "${sign}")
      message(SEND_ERROR "${program}: no ${sign}")
    endif()
  endforeach()
endforeach()
