# The library exports the names in src/jtpdf.exports, all of them and no other, and needs nothing
# but the C and C++ runtime, and those that NEEDS matches.
#   cmake -D NM=nm -D READELF=readelf -D LIBRARY=libjtpdf.so -D EXPORTS=jtpdf.exports [-D NEEDS=REGEX]
#     -P exports.cmake

cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " [^\n]*\n" ";" symbols "${symbols}")
file(STRINGS ${EXPORTS} names)
foreach(name ${symbols})
  if(NOT name IN_LIST names)
    message(SEND_ERROR "${LIBRARY} exports ${name}, which is not in ${EXPORTS}")
  endif()
endforeach()
foreach(name ${names})
  if(NOT name IN_LIST symbols)
    message(SEND_ERROR "${LIBRARY} does not export ${name}")
  endif()
endforeach()

execute_process(COMMAND ${READELF} -d ${LIBRARY}
  OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "NEEDED[^\n]*\\[[^]\n]*" needed "${dynamic}")
foreach(line ${needed})
  string(REGEX REPLACE ".*\\[" "" name "${line}")
  if(NEEDS AND name MATCHES "${NEEDS}")
    continue()
  endif()
  if(NOT name MATCHES "^(libstdc\\+\\+|libc\\+\\+|libc\\+\\+abi|libm|libgcc_s|libc|ld-linux.*)\\.so")
    message(SEND_ERROR "${LIBRARY} needs ${name}, which is neither the C nor the C++ runtime")
  endif()
endforeach()
if(NOT needed)
  message(SEND_ERROR "${READELF} showed no needed library of ${LIBRARY}")
endif()
