# The library's binary interface (exported names, parameters, layouts, enumerators) is the one in
# the baseline. To write the baseline anew: JTPDF_UPDATE_ABI=1 ctest -R abi.baseline
#   cmake -D ABIDW=abidw -D ABIDIFF=abidiff -D LIBRARY=libjtpdf.so -D BASELINE=libjtpdf.so.2.abi
#     -D CURRENT=current.abi [-D FUNCTION=WritePdfImage] -P abi.cmake

cmake_minimum_required(VERSION 3.25)

execute_process(
  COMMAND ${ABIDW} --suppr ${CMAKE_CURRENT_LIST_DIR}/public_types_only.suppr
    --exported-interfaces-only --no-elf-needed --no-comp-dir-path --no-corpus-path --no-show-locs
    --no-parameter-names --type-id-style hash ${LIBRARY}
  OUTPUT_VARIABLE current COMMAND_ERROR_IS_FATAL ANY)
# Where the sources stand is no part of the interface.
string(REGEX REPLACE " path='[^']*/src/" " path='src/" current "${current}")
file(WRITE ${CURRENT} "${current}")
if(NOT FUNCTION)
  set(FUNCTION WritePdfImage)
endif()
if(NOT current MATCHES "<function-decl name='${FUNCTION}'[^\n]*\n *<parameter")
  message(FATAL_ERROR "${LIBRARY} has no debug information: build it under the preset dev")
endif()

if(DEFINED ENV{JTPDF_UPDATE_ABI})
  file(COPY_FILE ${CURRENT} ${BASELINE})
  message(STATUS "wrote ${BASELINE}")
  return()
endif()
execute_process(COMMAND ${ABIDIFF} ${BASELINE} ${CURRENT} RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "The binary interface above differs from ${BASELINE}. Programs built against "
    "an earlier library of this SOVERSION must keep running: take the change back, or, if it only "
    "adds to the interface, write the baseline anew with JTPDF_UPDATE_ABI=1 ctest -R abi.baseline")
endif()
