# The DLL exports the names in src/jtpdf.exports, all of them and no other, and needs nothing but
# what every Windows has.
#   cmake -D OBJDUMP=objdump -D LIBRARY=libjtpdf-2.dll -D EXPORTS=jtpdf.exports -P dll_exports.cmake

cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [A-Za-z_][^\n]*" lines "${headers}")
list(TRANSFORM lines REPLACE ".*\\] " "" OUTPUT_VARIABLE exported)
list(SORT exported)
file(STRINGS ${EXPORTS} names)
list(SORT names)
if(NOT exported STREQUAL names)
  message(SEND_ERROR "${LIBRARY} exports ${exported} instead of ${names}")
endif()

string(REGEX MATCHALL "DLL Name: [^\n]*" needed "${headers}")
list(TRANSFORM needed REPLACE "DLL Name: " "")
foreach(name ${needed})
  if(NOT name MATCHES "^(KERNEL32|ADVAPI32|msvcrt)\\.dll$")
    message(SEND_ERROR "${LIBRARY} needs ${name}")
  endif()
endforeach()
if(NOT needed)
  message(SEND_ERROR "${OBJDUMP} showed nothing that ${LIBRARY} needs")
endif()
