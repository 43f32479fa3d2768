# jtpdf_unit_test(<file> <library> [<source>...]): builds <file>_test.cpp of the including room into
# one binary and adds it as the test <room>.<file>. <library> is jtpdf_core for the insides and
# jtpdf::jtpdf for the exports; never both, there would be two copies of the diagnostic flag.

find_package(GTest REQUIRED)
find_package(Threads REQUIRED)
set(jtpdf_support_dir ${CMAKE_CURRENT_LIST_DIR})
# For <source>: an operator new that fails on command, and a realloc that fails with it.
set(jtpdf_failing_realloc ${jtpdf_support_dir}/failing_realloc.cpp)
set(jtpdf_failing_new ${jtpdf_support_dir}/failing_new.cpp ${jtpdf_failing_realloc})

# The vocabulary knows the public header only, so it serves both kinds of tests.
if(NOT TARGET jtpdf_test_support)
  add_library(jtpdf_test_support STATIC
    ${jtpdf_support_dir}/bytes.cpp
    ${jtpdf_support_dir}/diagnostics.cpp
    ${jtpdf_support_dir}/doc.cpp
    ${jtpdf_support_dir}/pdf.cpp
    ${jtpdf_support_dir}/temp_dir.cpp)
  target_include_directories(jtpdf_test_support PUBLIC
    ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(jtpdf_test_support PUBLIC GTest::gtest)
  # Where the library's names are imported, a test of the exports takes the objects, too: what a test
  # does to std::cerr and to operator new does not reach the library's own in a DLL.
  target_compile_definitions(jtpdf_test_support PUBLIC $<$<BOOL:${WIN32}>:JTPDF_STATIC>)
  jtpdf_compile_options(jtpdf_test_support)
endif()

# jtpdf_precompile_headers(<target>): takes GoogleTest's headers, in which most of the time goes that a
# test takes to compile, from one place where they are compiled already. Behind a compiler cache the
# tests take them as they are: it keeps what was compiled, and doesn't know of such headers.
function(jtpdf_precompile_headers target)
  if(CMAKE_CXX_COMPILER_LAUNCHER OR JTPDF_SANITIZE)
    return()
  endif()
  if(NOT TARGET jtpdf_test_headers)
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/tests/test_headers.cpp CONTENT "")
    add_library(jtpdf_test_headers OBJECT ${PROJECT_BINARY_DIR}/tests/test_headers.cpp)
    target_link_libraries(jtpdf_test_headers PRIVATE GTest::gtest)
    target_precompile_headers(jtpdf_test_headers PRIVATE
      <gtest/gtest.h> <filesystem> <fstream> <map> <sstream> <string> <vector>)
    jtpdf_compile_options(jtpdf_test_headers)
  endif()
  target_precompile_headers(${target} REUSE_FROM jtpdf_test_headers)
endfunction()

function(jtpdf_unit_test file library)
  get_filename_component(room ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  set(target ${room}_${file}_test)
  if(WIN32)
    set(library jtpdf_core)
  endif()
  add_executable(${target} ${file}_test.cpp ${ARGN})
  target_link_libraries(${target} PRIVATE
    jtpdf_test_support ${library} GTest::gtest GTest::gtest_main Threads::Threads)
  jtpdf_compile_options(${target})
  jtpdf_precompile_headers(${target})
  # The library is to find the program's replacements of functions of the C library.
  set_target_properties(${target} PROPERTIES ENABLE_EXPORTS ON)
  if(JTPDF_SANITIZE)
    target_compile_definitions(${target} PRIVATE JTPDF_SANITIZED)
    # The tables of cases take minutes to optimise with all checks in them; the library stays
    # optimised.
    target_compile_options(${target} PRIVATE -O0)
  endif()
  add_test(NAME ${room}.${file} COMMAND ${target} --gtest_brief=1)
  set_tests_properties(${room}.${file} PROPERTIES LABELS unit TIMEOUT 120)
endfunction()
