# Install rules. Components: runtime (the shared library), development (headers, CMake package,
# pkg-config file, static library), pictures_runtime and pictures_development (those of pictures),
# tools (the command), documentation, python.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/jtpdf)

install(TARGETS jtpdf EXPORT jtpdfSharedTargets
  RUNTIME COMPONENT runtime ARCHIVE COMPONENT development
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  FILE_SET HEADERS COMPONENT development)
install(EXPORT jtpdfSharedTargets NAMESPACE jtpdf:: DESTINATION ${package_dir}
  COMPONENT development)
if(TARGET jtpdf_static)
  install(TARGETS jtpdf_static EXPORT jtpdfStaticTargets
    ARCHIVE COMPONENT development
    FILE_SET HEADERS COMPONENT development)
  install(EXPORT jtpdfStaticTargets NAMESPACE jtpdf:: DESTINATION ${package_dir}
    COMPONENT development)
endif()

if(TARGET jtpdf_pictures_shared)
  install(TARGETS jtpdf_pictures_shared EXPORT jtpdfPicturesTargets
    LIBRARY COMPONENT pictures_runtime NAMELINK_COMPONENT pictures_development
    FILE_SET HEADERS COMPONENT pictures_development)
  install(EXPORT jtpdfPicturesTargets NAMESPACE jtpdf:: DESTINATION ${package_dir}
    COMPONENT pictures_development)
endif()

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
if(TARGET jtpdf_pictures_shared)
  configure_file(cmake/jtpdf-pictures.pc.in jtpdf-pictures.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/jtpdf-pictures.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT pictures_development)
endif()

install(FILES README.md CHANGELOG.md LICENSE
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
# The picture that README.md shows.
install(FILES docs/album.jpg DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT documentation)
# The site, once scripts/docs has made it.
install(DIRECTORY build/docs/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation OPTIONAL)

include(bindings/python/install.cmake)

include(cmake/JtpdfPackage.cmake)
