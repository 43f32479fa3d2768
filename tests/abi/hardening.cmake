# A release library has the hardening that its flags ask for, as readelf shows it.
#   cmake -D READELF=readelf -D BUILD=<a release build> -D CRTI=<the C runtime's crti.o>
#     -D CET=<whether the processor has it> -P hardening.cmake

cmake_minimum_required(VERSION 3.25)

file(GLOB library ${BUILD}/src/libjtpdf.so.*.*.*)
file(GLOB_RECURSE objects ${BUILD}/src/*.o)
if(NOT library OR NOT objects)
  message(FATAL_ERROR "${BUILD} holds no release build: run ctest -R consumer.stage first")
endif()

function(readelf variable)
  execute_process(COMMAND ${READELF} -W ${ARGN} OUTPUT_VARIABLE text ERROR_VARIABLE ignored
    COMMAND_ERROR_IS_FATAL ANY)
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()
function(expect text pattern what)
  if(NOT text MATCHES "${pattern}")
    message(SEND_ERROR "${library}: ${what}; see cmake/JtpdfCompile.cmake. readelf shows:\n${text}")
  endif()
endfunction()
function(refuse text pattern what)
  if(text MATCHES "${pattern}")
    message(SEND_ERROR "${library}: ${what}; see cmake/JtpdfCompile.cmake. readelf shows:\n${text}")
  endif()
endfunction()

readelf(segments -l ${library})
expect("${segments}" "GNU_RELRO" "relocations stay writable (no RELRO)")
expect("${segments}" "GNU_STACK +0x[0-9a-f]+ 0x[0-9a-f]+ 0x[0-9a-f]+ 0x[0-9a-f]+ 0x[0-9a-f]+ RW "
  "the stack is executable")
refuse("${segments}" "RWE" "a segment is writable and executable")
readelf(dynamic -d ${library})
expect("${dynamic}" "BIND_NOW" "symbols are bound late, which leaves the table of them writable")
refuse("${dynamic}" "TEXTREL" "the code is relocated")
refuse("${dynamic}" "RPATH|RUNPATH" "the library looks for libraries in a folder of its own")
readelf(symbols --dyn-syms ${library})
expect("${symbols}" "__stack_chk_fail" "no function guards its stack")

# Checked copies are made only where the compiler knows the sizes, so the flag is what counts.
file(STRINGS ${BUILD}/build.ninja flags REGEX "FLAGS = .* -fvisibility=hidden")
if(NOT flags)
  message(SEND_ERROR "${BUILD}/build.ninja names no flags of the library's objects")
endif()
foreach(line IN LISTS flags)
  expect("${line}" "-D_FORTIFY_SOURCE=[23]( |$)" "copies are not checked (_FORTIFY_SOURCE)")
endforeach()

# Control-flow protection: every object is marked. The linker marks the library when the C
# runtime's own objects are marked too, which is up to the system.
if(CET)
  foreach(object IN LISTS objects)
    readelf(notes -n ${object})
    if(NOT notes MATCHES "IBT" OR NOT notes MATCHES "SHSTK")
      message(SEND_ERROR "${object} is not marked for control-flow protection (IBT, SHSTK)")
    endif()
  endforeach()
  readelf(runtime -n ${CRTI})
  readelf(notes -n ${library})
  if(runtime MATCHES "IBT" AND runtime MATCHES "SHSTK")
    expect("${notes}" "IBT" "no indirect-branch tracking")
    expect("${notes}" "SHSTK" "no shadow stack")
  endif()
endif()
