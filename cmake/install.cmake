# Installs headers, both shared libraries, the programs, a CMake package
# (quarl::quarl) and a pkg-config file. Each file belongs to one component,
# which cmake/packaging.cmake makes a Debian package of: runtime (the
# versioned libraries), dev (headers, the unversioned .so, the CMake and
# pkg-config files), programs (with their man pages) and python (python_deb
# for the Debian package, in Debian's folder: python/CMakeLists.txt).
include(CMakePackageConfigHelpers)

set(QUARL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/quarl)

install(TARGETS quarl tessel EXPORT quarlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(QUARL_BUILD_APPS)
  install(TARGETS ${QUARL_APPS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
  if(QUARL_MAN_PAGES)
    install(FILES ${QUARL_MAN_PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)
  endif()
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/quarl DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/include/quarl/version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quarl COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tessel/include/tessel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT dev)

install(EXPORT quarlTargets NAMESPACE quarl:: DESTINATION ${QUARL_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/quarlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/quarlConfig.cmake INSTALL_DESTINATION ${QUARL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quarlConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY ${QUARL_PACKAGE_COMPATIBILITY})
install(FILES ${PROJECT_BINARY_DIR}/quarlConfig.cmake ${PROJECT_BINARY_DIR}/quarlConfigVersion.cmake
  DESTINATION ${QUARL_CMAKE_DIR} COMPONENT dev)

# The pkg-config file finds the prefix from its own place, so that it stays
# right for `cmake --install --prefix`, DESTDIR and a moved tree.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(QUARL_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
  set(QUARL_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(QUARL_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
else()
  file(RELATIVE_PATH QUARL_PC_UP "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" QUARL_PC_UP "${QUARL_PC_UP}")
  set(QUARL_PC_PREFIX "\${pcfiledir}/${QUARL_PC_UP}")
  set(QUARL_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(QUARL_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/quarl.pc.in ${PROJECT_BINARY_DIR}/quarl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quarl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

include(${PROJECT_SOURCE_DIR}/cmake/packaging.cmake)
