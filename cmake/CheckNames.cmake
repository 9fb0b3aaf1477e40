# cmake -DROOT=<project> -P CheckNames.cmake
#
# A control and a form know their own names, as texts. Holds these texts against the names of the
# members and classes that they repeat: windows, tests and the tour find widgets by them.
cmake_minimum_required(VERSION 3.25)

set(folders app catalog query table_designer security database jobs testdata document)
set(kinds "Label|Edit|Button|CheckBox|ComboBox|RadioGroup|CheckListBox|Memo|Panel|StatusBar")
string(APPEND kinds "|TabControl|DateTimePicker|ListView|TreeView|DataGrid|Navigator")
string(APPEND kinds "|TFnpNumericEdit|PopupMenu")

set(wrong 0)
set(seen 0)

# A member is made with its name in its header or, as one of the constructor's, in its source.
macro(expect_name header source name)
  math(EXPR seen "${seen} + 1")
  if(NOT "${header_text}${source_text}" MATCHES "[^A-Za-z0-9_]${name}[({]\"${name}\"")
    message("${header}: ${name} does not carry its own name")
    math(EXPR wrong "${wrong} + 1")
  endif()
endmacro()

foreach(folder IN LISTS folders)
  file(GLOB_RECURSE headers RELATIVE ${ROOT} ${ROOT}/${folder}/*.h)
  foreach(header IN LISTS headers)
    string(REGEX REPLACE "\\.h$" ".cpp" source "${header}")
    file(READ ${ROOT}/${header} header_text)
    set(source_text "")
    if(EXISTS ${ROOT}/${source})
      file(READ ${ROOT}/${source} source_text)
    endif()
    file(STRINGS ${ROOT}/${header} lines ENCODING UTF-8
      REGEX "^  (dbkeeper::)?(${kinds}) [A-Za-z0-9_]+[;{]|^class T[A-Za-z0-9_]+ : public Form ")
    foreach(line IN LISTS lines)
      if(line MATCHES "^class T([A-Za-z0-9_]+)")
        set(form ${CMAKE_MATCH_1})
        math(EXPR seen "${seen} + 1")
        if(NOT source_text MATCHES "Form\\(\"${form}\"\\)")
          message("${source}: T${form} does not carry its own name")
          math(EXPR wrong "${wrong} + 1")
        endif()
      elseif(line MATCHES "^  [A-Za-z:]+ ([A-Za-z0-9_]+)")
        expect_name(${header} ${source} ${CMAKE_MATCH_1})
      endif()
    endforeach()
  endforeach()
endforeach()

if(seen EQUAL 0)
  message(FATAL_ERROR "no controls under ${ROOT}")
endif()
if(wrong GREATER 0)
  message(FATAL_ERROR "${wrong} names differ from what they name")
endif()
message("${seen} controls and forms carry their own names")
