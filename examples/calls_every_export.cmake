# The examples show what the library can do: each exported name occurs in their sources.
#   cmake -D EXPORTS=<jtpdf.exports> -D FOLDER=<examples> -P calls_every_export.cmake

cmake_minimum_required(VERSION 3.25)

file(STRINGS ${EXPORTS} names)
file(GLOB files ${FOLDER}/*.c)
set(source "")
foreach(file ${files})
  file(READ ${file} text)
  string(APPEND source "${text}")
endforeach()
if(NOT names OR NOT source)
  message(FATAL_ERROR "nothing to compare: ${EXPORTS}, ${FOLDER}")
endif()
# TryCreate... stands for Create... and for what it switches on.
list(TRANSFORM names REPLACE "^Create" "(Try)?Create")
list(REMOVE_ITEM names SetPdfMemoryErrors)
# An encoder is a library of its own, which the examples do without; the command has one.
list(REMOVE_ITEM names SetPdfContentEncoder)
# The same as WriteReservedPdfObject, for a stream.
list(REMOVE_ITEM names WriteReservedPdfStream)
foreach(name ${names})
  # Something other than a name must follow: FillPdfRectangle is not FillPdfRectangles.
  if(NOT source MATCHES "[^A-Za-z0-9_\"]${name}[^A-Za-z0-9_\"]")
    message(SEND_ERROR "the examples do not use ${name}")
  endif()
endforeach()
