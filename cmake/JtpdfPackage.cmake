# Debian packages, one a component: cpack -G DEB in the build folder, or scripts/package.

set(CPACK_PACKAGE_NAME jtpdf)
set(CPACK_PACKAGE_VENDOR "the JTPDF authors")
set(CPACK_PACKAGE_CONTACT "the JTPDF authors <jtpdf@jtpdf.org.invalid>")
# Empty: CPack would put it in front of what each package says of itself.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
# Folders of the install rules depend on the prefix: the packages take the one that was configured.
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(about "JTPDF writes PDF 1.5 files in one forward pass: images that are encoded
already, rectangles and circles, in boxes with a rotation angle.")

# Each package carries its licence and its change log where Debian looks for them.
function(jtpdf_package component package summary)
  string(TOUPPER ${component} COMPONENT)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_COMPONENT_${COMPONENT}_DESCRIPTION
    "${summary}\n${about}" PARENT_SCOPE)
  install(FILES packaging/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endfunction()

# dpkg-shlibdeps sees no library that is loaded late: these are the packages that have them.
set(late "")
get_property(libraries GLOBAL PROPERTY JTPDF_LATE_LIBRARIES)
foreach(library IN LISTS libraries)
  execute_process(COMMAND dpkg-query -S "*/${library}" OUTPUT_VARIABLE found ERROR_QUIET)
  if(found MATCHES "^([^:]+):")
    string(APPEND late ", ${CMAKE_MATCH_1}")
  endif()
endforeach()

set(debian ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian)
find_program(GZIP gzip)
if(GZIP)
  execute_process(COMMAND ${GZIP} -9nc ${debian}/changelog
    OUTPUT_FILE ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)
  set(CPACK_COMPONENTS_ALL)
  jtpdf_package(runtime libjtpdf2 "Library that writes PDF files in one forward pass")
  jtpdf_package(development libjtpdf-dev "Headers and build files of the JTPDF library")
  if(TARGET jtpdf_pictures_shared)
    jtpdf_package(pictures_runtime libjtpdf-pictures0
      "Library that makes pages of PDF files from pictures")
    jtpdf_package(pictures_development libjtpdf-pictures-dev
      "Headers and build files of the JTPDF library for pictures")
    # dpkg-shlibdeps adds the libraries of others; to ours it finds no package, as it is made here.
    set(CPACK_DEBIAN_PICTURES_RUNTIME_PACKAGE_DEPENDS "libjtpdf2 (>= ${PROJECT_VERSION})${late}")
    set(CPACK_DEBIAN_PICTURES_RUNTIME_PACKAGE_CONTROL_EXTRA
      ${debian}/triggers ${CMAKE_CURRENT_BINARY_DIR}/pictures-debian/shlibs
      ${CMAKE_CURRENT_BINARY_DIR}/pictures-debian/symbols)
    set(CPACK_DEBIAN_PICTURES_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)
    set(CPACK_DEBIAN_PICTURES_DEVELOPMENT_PACKAGE_SECTION libdevel)
    set(own "= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
    set(CPACK_DEBIAN_PICTURES_DEVELOPMENT_PACKAGE_DEPENDS
      "libjtpdf-pictures0 (${own}), libjtpdf-dev (${own})")
  endif()
  if(TARGET jtpdf_tool)
    jtpdf_package(tools jtpdf "Command that turns images into a PDF")
    set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
    # dpkg-shlibdeps adds the libraries of others; to ours it finds no package, as it is made here.
    set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libjtpdf2 (>= ${PROJECT_VERSION})${late}")
  endif()
  jtpdf_package(documentation jtpdf-doc "Documentation of the JTPDF library")
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
  jtpdf_package(python python3-jtpdf "Python binding of the JTPDF library")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), libjtpdf2 (>= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "libjtpdf-pictures0 (>= ${PROJECT_VERSION})")
  # The compiled modules are no files of the package; these make them and take them away.
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${debian}/python/postinst ${debian}/python/prerm)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_STRICT_PERMISSION ON)

  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${debian}/triggers ${CMAKE_CURRENT_BINARY_DIR}/shlibs ${CMAKE_CURRENT_BINARY_DIR}/symbols)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libjtpdf2 (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

  # What packages depend on that take the library: the package, and by the one list of exported names.
  function(jtpdf_symbols folder library soversion package exports)
    file(STRINGS ${exports} names)
    list(TRANSFORM names PREPEND " ")
    list(TRANSFORM names APPEND "@Base ${PROJECT_VERSION}")
    list(JOIN names "\n" symbols)
    file(WRITE ${folder}/shlibs "${library} ${soversion} ${package} (>= ${PROJECT_VERSION})\n")
    file(WRITE ${folder}/symbols "${library}.so.${soversion} ${package}\n${symbols}\n")
  endfunction()
  jtpdf_symbols(${CMAKE_CURRENT_BINARY_DIR} libjtpdf 2 libjtpdf2 src/jtpdf.exports)
  if(TARGET jtpdf_pictures_shared)
    jtpdf_symbols(${CMAKE_CURRENT_BINARY_DIR}/pictures-debian libjtpdf-pictures 0 libjtpdf-pictures0
      pictures/jtpdf-pictures.exports)
  endif()
endif()

include(CPack)
