# Install rules: the library and its headers, a CMake package and a pkg-config file, both
# relocatable.

include(CMakePackageConfigHelpers)

install(TARGETS jtpdf EXPORT jtpdfTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  FILE_SET HEADERS COMPONENT development)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/jtpdf)
install(EXPORT jtpdfTargets NAMESPACE jtpdf:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/jtpdfConfig.cmake.in jtpdfConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(jtpdfConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/jtpdfConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/jtpdfConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# ${pcfiledir} is where pkg-config finds the file, so the tree may be moved after installing.
file(RELATIVE_PATH pc_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/jtpdf.pc.in jtpdf.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/jtpdf.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
