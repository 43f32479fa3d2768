# The package without the library, for a system that has the library of its own.
install(DIRECTORY ${CMAKE_CURRENT_LIST_DIR}/src/jtpdf
  DESTINATION lib/python3/dist-packages COMPONENT python
  FILES_MATCHING PATTERN "*.py" PATTERN "py.typed"
  PATTERN "__pycache__" EXCLUDE)
