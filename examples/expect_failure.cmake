# Runs a command that has to fail: with that exit status, and with that message on the standard
# error stream.
#   cmake -D STATUS=<number> -D MESSAGE=<regular expression> -P expect_failure.cmake -- <command...>

cmake_minimum_required(VERSION 3.25)

set(command "")
set(behind FALSE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE ${last})
  if(behind)
    list(APPEND command "${CMAKE_ARGV${i}}")
  elseif(CMAKE_ARGV${i} STREQUAL "--")
    set(behind TRUE)
  endif()
endforeach()

execute_process(COMMAND ${command} RESULT_VARIABLE status ERROR_VARIABLE message)
if(NOT status EQUAL STATUS)
  message(FATAL_ERROR "exit status ${status}, expected ${STATUS}; it said: ${message}")
endif()
if(NOT message MATCHES "${MESSAGE}")
  message(FATAL_ERROR "it said \"${message}\", which does not match \"${MESSAGE}\"")
endif()
