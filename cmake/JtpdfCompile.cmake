# Compiler and linker flags of every target of this project: jtpdf_compile_options(<target>).

function(jtpdf_compile_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic
    $<$<COMPILE_LANGUAGE:CXX>:-Wshadow=local -Wnon-virtual-dtor>
    $<$<BOOL:${JTPDF_WERROR}>:-Werror>)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # Clang has no -Wshadow=local; its -Wshadow leaves constructor parameters alone.
    get_target_property(options ${target} COMPILE_OPTIONS)
    list(TRANSFORM options REPLACE "-Wshadow=local" "-Wshadow")
    set_target_properties(${target} PROPERTIES COMPILE_OPTIONS "${options}")
  endif()
  if(JTPDF_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${JTPDF_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_definitions(${target} PRIVATE JTPDF_SANITIZED)
    target_link_options(${target} PRIVATE -fsanitize=${JTPDF_SANITIZE})
    # A C program that links a library with C++ checks in it needs their C++ runtime.
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  elseif(JTPDF_HARDEN)
    target_compile_options(${target} PRIVATE -fstack-protector-strong
      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i.86")
      target_compile_options(${target} PRIVATE -fcf-protection)
    endif()
    if(WIN32)
      target_link_options(${target} PRIVATE -fstack-protector-strong) # links what it calls
    else()
      target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
    endif()
  endif()
endfunction()
