# Debian packages of the installed components: `cpack -G DEB` in a build
# tree makes
#   libquarl<soname version>  the shared libraries (component runtime)
#   libquarl-dev              headers, the unversioned .so, CMake and pkg-config files
#   quarl-tools               the programs and their man pages
#   python3-quarl             the Python package (component python_deb)
# each with the license in /usr/share/doc/<package>/copyright. The packages
# install under /usr whatever prefix the tree was configured for: every
# installed path is relative to the prefix, and the programs, the module,
# quarl.pc and the CMake package find the rest from their own place.
set(CPACK_PACKAGE_CONTACT "Seed 43652979 maintainers <maintainers@users.noreply.c-seed-43652979.example>")
set(QUARL_DEB_RUNTIME libquarl${QUARL_SOVERSION})
set(QUARL_DEB_DEV libquarl-dev)
set(QUARL_DEB_PROGRAMS quarl-tools)
set(QUARL_DEB_PYTHON_DEB python3-quarl)

set(QUARL_COMPONENTS runtime dev)
if(QUARL_BUILD_APPS)
  list(APPEND QUARL_COMPONENTS programs)
endif()
if(QUARL_PYTHON)
  list(APPEND QUARL_COMPONENTS python_deb)
endif()

# Each package carries the license in Debian's copyright form and a
# changelog.gz in Debian's form, one entry for this version dated as its
# section of CHANGELOG.md; a plain `cmake --install` leaves them out
# (EXCLUDE_FROM_ALL: they are installed only when their component is asked
# for, as cpack does).
configure_file(${PROJECT_SOURCE_DIR}/cmake/copyright.in ${PROJECT_BINARY_DIR}/copyright @ONLY)
set(QUARL_PACKAGE_DOCS ${PROJECT_BINARY_DIR}/copyright)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md QUARL_RELEASE_LINE
  REGEX "^## \\[${PROJECT_VERSION}\\] - [0-9]+-[0-9]+-[0-9]+$")
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+" QUARL_RELEASE_DAY "${QUARL_RELEASE_LINE}")
find_program(QUARL_GZIP gzip)
find_program(QUARL_DATE date)
if(QUARL_GZIP AND QUARL_DATE AND QUARL_RELEASE_DAY)
  execute_process(COMMAND ${QUARL_DATE} -u -R -d "${QUARL_RELEASE_DAY} 12:00"
    OUTPUT_VARIABLE QUARL_RELEASE_DATE OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(changelog ${PROJECT_BINARY_DIR}/packaging/changelog)
  file(WRITE ${changelog}.in "quarl (${PROJECT_VERSION}) unstable; urgency=medium\n\n"
    "  * quarl ${PROJECT_VERSION}: its changes are in CHANGELOG.md of the source tree.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${QUARL_RELEASE_DATE}\n")
  add_custom_command(OUTPUT ${changelog}.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${changelog}.in ${changelog}
    COMMAND ${QUARL_GZIP} -9nf ${changelog}
    DEPENDS ${changelog}.in)
  add_custom_target(quarl_package_changelog ALL DEPENDS ${changelog}.gz)
  list(APPEND QUARL_PACKAGE_DOCS ${changelog}.gz)
else()
  message(STATUS "no changelog in the Debian packages: gzip, date or the section of ${PROJECT_VERSION} in CHANGELOG.md is missing")
endif()
foreach(component IN LISTS QUARL_COMPONENTS)
  string(TOUPPER ${component} upper)
  install(FILES ${QUARL_PACKAGE_DOCS}
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${QUARL_DEB_${upper}} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_PACKAGE_NAME quarl)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The quarl developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL ${QUARL_COMPONENTS})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
# The libraries' own dependencies found by dpkg-shlibdeps, the packages of
# this project by the components each needs, at this exact version.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The programs and the module need this project's own libraries, which
# dpkg-shlibdeps finds in the build tree and leaves to the component
# dependencies below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/tessel)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${QUARL_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# A shlibs file for the shared libraries, and the trigger that runs ldconfig
# once for all packages installed together.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
file(WRITE ${PROJECT_BINARY_DIR}/packaging/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "LAS well log reader and writer - shared library\nThe shared libraries libquarl and libtessel.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${QUARL_DEB_DEV})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_DEBIAN_DEV_DESCRIPTION
  "LAS well log reader and writer - development files\nHeaders, the CMake package quarl::quarl and the pkg-config file quarl.pc.")

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME ${QUARL_DEB_PROGRAMS})
set(CPACK_COMPONENT_PROGRAMS_DEPENDS runtime)
set(CPACK_DEBIAN_PROGRAMS_DESCRIPTION
  "LAS well log programs\nquarl-info, quarl-convert, quarl-plot, quarl-check and quarl-catalog.")

# The native module is built for one minor version of Python.
set(CPACK_DEBIAN_PYTHON_DEB_PACKAGE_NAME ${QUARL_DEB_PYTHON_DEB})
set(CPACK_DEBIAN_PYTHON_DEB_PACKAGE_SECTION python)
set(CPACK_COMPONENT_PYTHON_DEB_DEPENDS runtime)
if(QUARL_PYTHON)
  math(EXPR QUARL_PYTHON_NEXT "${Python3_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_DEB_PACKAGE_DEPENDS
    "python3 (>= ${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}), python3 (<< ${Python3_VERSION_MAJOR}.${QUARL_PYTHON_NEXT}), python3-numpy")
endif()
set(CPACK_DEBIAN_PYTHON_DEB_DESCRIPTION
  "LAS well log reader and writer - Python 3 package\nThe package quarl: LAS files into numpy and pandas and back.")

include(CPack)
