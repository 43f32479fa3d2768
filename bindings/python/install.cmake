# The package without the library, for a system that has the library of its own. It goes where the
# Python of the system looks below the prefix: Debian has one folder for its packages and others for
# what is installed beside them. -DJTPDF_PYTHON_DIR=... names another.

find_program(JTPDF_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH
  DOC "The Python that the package is for: the system's, which knows its packages")
find_program(JTPDF_PYTHON NAMES python3)
set(JTPDF_PYTHON_DIR "" CACHE STRING "Folder of Python packages below the prefix; empty: ask Python")

set(python_dir ${JTPDF_PYTHON_DIR})
if(NOT python_dir AND JTPDF_PYTHON)
  execute_process(
    COMMAND ${JTPDF_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/package_folder.py ${CMAKE_INSTALL_PREFIX}
    OUTPUT_VARIABLE python_dir OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
if(python_dir)
  install(DIRECTORY ${CMAKE_CURRENT_LIST_DIR}/src/jtpdf
    DESTINATION ${python_dir} COMPONENT python
    FILES_MATCHING PATTERN "*.py" PATTERN "py.typed"
    PATTERN "__pycache__" EXCLUDE)
else()
  message(STATUS "No python3: the Python package is not installed")
endif()
