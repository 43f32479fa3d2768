# The object that runs the reference document refers to every exported name.
#   cmake -D NM=nm -D ARCHIVE=libreference_document.a -D EXPORTS=jtpdf.exports -P exports_called.cmake

cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${NM} --undefined-only --format=posix ${ARCHIVE}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${EXPORTS} names)
if(NOT names)
  message(FATAL_ERROR "no names in ${EXPORTS}")
endif()
foreach(name ${names})
  if(NOT symbols MATCHES "\n${name} U")
    message(SEND_ERROR "the reference document does not use ${name}")
  endif()
endforeach()
