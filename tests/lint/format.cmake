# Every C and C++ file is formatted as .clang-format says. To mend: clang-format -i FILE
#   cmake -D ROOT=<source folder> -D CLANG_FORMAT=clang-format -P format.cmake

cmake_minimum_required(VERSION 3.25)

set(files)
foreach(room include src pictures tools bindings examples tests fuzz bench)
  file(GLOB_RECURSE found ${ROOT}/${room}/*.h ${ROOT}/${room}/*.hpp ${ROOT}/${room}/*.c
    ${ROOT}/${room}/*.cpp)
  list(APPEND files ${found})
endforeach()
list(FILTER files EXCLUDE REGEX "/(build|node_modules)/")
execute_process(COMMAND ${CLANG_FORMAT} --dry-run --Werror ${files} COMMAND_ERROR_IS_FATAL ANY)
