# Includes run one way: objects <- graphics <- document <- api; hosts see jtpdf/* only.
#   cmake -D ROOT=<source folder> -P layers.cmake

cmake_minimum_required(VERSION 3.25)

set(public "jtpdf/(types|diagnostics)\\.h")
set(allowed_objects "^(objects/|${public})")
set(allowed_graphics "^(objects/|graphics/|${public})")
set(allowed_document "^(objects/|graphics/|document/|${public})")
set(allowed_api "^(objects/|graphics/|document/|api/|jtpdf/)")

# Sets variable to the names that a file includes from this project: in quotes, in angle brackets where
# a file of ours has the name, and by whatever path.
function(own_includes variable file)
  set(names)
  file(STRINGS ${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
  foreach(include ${includes})
    string(REGEX REPLACE "^[^\"<]*([\"<])([^\">]*).*" "\\1;\\2" parts "${include}")
    list(POP_FRONT parts bracket name)
    if(bracket STREQUAL "\"" OR name MATCHES "\\.\\./" OR EXISTS ${ROOT}/src/${name}
        OR EXISTS ${ROOT}/include/${name})
      list(APPEND names ${name})
    endif()
  endforeach()
  set(${variable} ${names} PARENT_SCOPE)
endfunction()

foreach(room objects graphics document api)
  file(GLOB files ${ROOT}/src/${room}/*.h ${ROOT}/src/${room}/*.cpp)
  if(NOT files)
    message(SEND_ERROR "src/${room}: no files found")
  endif()
  foreach(file ${files})
    own_includes(names ${file})
    foreach(name ${names})
      if(NOT name MATCHES "${allowed_${room}}")
        message(SEND_ERROR "${file} includes ${name}, which room ${room} must not know")
      endif()
    endforeach()
  endforeach()
endforeach()

file(GLOB_RECURSE hosts ${ROOT}/tools/*.h ${ROOT}/tools/*.cpp ${ROOT}/examples/*.c
  ${ROOT}/examples/*.cpp)
foreach(file ${hosts})
  own_includes(names ${file})
  foreach(name ${names})
    if(EXISTS ${ROOT}/src/${name} OR name MATCHES "(^|/)src/")
      message(SEND_ERROR "${file} is a host and includes the library's inside: ${name}")
    endif()
  endforeach()
endforeach()
