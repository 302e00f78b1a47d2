# Installs headers, both shared libraries, a CMake package (quarl::quarl)
# and a pkg-config file.
include(CMakePackageConfigHelpers)

set(QUARL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/quarl)

install(TARGETS quarl tessel EXPORT quarlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/quarl DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tessel/include/tessel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT quarlTargets NAMESPACE quarl:: DESTINATION ${QUARL_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/quarlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/quarlConfig.cmake INSTALL_DESTINATION ${QUARL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quarlConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quarlConfig.cmake ${PROJECT_BINARY_DIR}/quarlConfigVersion.cmake
  DESTINATION ${QUARL_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/quarl.pc.in ${PROJECT_BINARY_DIR}/quarl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quarl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
