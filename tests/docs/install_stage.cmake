# Installs the library and what its users compile with into an empty folder.
#   cmake -D BUILD=<build folder> -D STAGE=<folder> -P install_stage.cmake

file(REMOVE_RECURSE ${STAGE})
foreach(component runtime development)
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGE}
    --component ${component} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
