# Toolchain: the library for Windows on x86-64, by the cross compiler of Debian's package
# g++-mingw-w64-x86-64-posix. What is built runs under Wine, where that is at hand.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH) # CMAKE_PREFIX_PATH counts
# Programs need no DLL of the compiler's.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
find_program(JTPDF_WINE wine)
if(JTPDF_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${JTPDF_WINE})
endif()
