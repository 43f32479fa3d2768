# Includes run one way: objects <- graphics <- document <- api; hosts see jtpdf/* only.
#   cmake -D ROOT=<source folder> -P layers.cmake

cmake_minimum_required(VERSION 3.25)

set(public "jtpdf/(types|diagnostics)\\.h")
set(allowed_objects "^(objects/|${public})")
set(allowed_graphics "^(objects/|graphics/|${public})")
set(allowed_document "^(objects/|graphics/|document/|${public})")
set(allowed_api "^(objects/|graphics/|document/|api/|jtpdf/)")

foreach(room objects graphics document api)
  file(GLOB files ${ROOT}/src/${room}/*.h ${ROOT}/src/${room}/*.cpp)
  if(NOT files)
    message(SEND_ERROR "src/${room}: no files found")
  endif()
  foreach(file ${files})
    file(STRINGS ${file} includes REGEX "^#include \"")
    foreach(include ${includes})
      string(REGEX REPLACE "^#include \"([^\"]*)\".*" "\\1" name "${include}")
      if(NOT name MATCHES "${allowed_${room}}")
        message(SEND_ERROR "${file} includes ${name}, which room ${room} must not know")
      endif()
    endforeach()
  endforeach()
endforeach()

file(GLOB_RECURSE hosts ${ROOT}/tools/*.h ${ROOT}/tools/*.cpp ${ROOT}/examples/*.c
  ${ROOT}/examples/*.cpp)
foreach(file ${hosts})
  file(STRINGS ${file} includes REGEX "^#include [\"<](\\.\\./)*(src|api|document|objects|graphics)/")
  if(includes)
    message(SEND_ERROR "${file} is a host and includes the library's inside: ${includes}")
  endif()
endforeach()
