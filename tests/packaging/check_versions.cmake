# Checks that everything that names quarl's version gives the one in the
# file VERSION: the generated header, pkg-config, the CMake package, the
# sonames and file names of the shared libraries, every program's --version,
# the Python package (quarl.__version__, its installed metadata and what
# setup.py builds), the Debian packages and the changelog.
#   SOURCE_DIR, BINARY_DIR, READELF, QUARL_LIBRARY, TESSEL_LIBRARY
#   PROGRAMS: the programs' paths; PYTHON: the interpreter, when the Python
#   package is built
set(failures)
file(STRINGS ${SOURCE_DIR}/VERSION version LIMIT_COUNT 1)
if(NOT version MATCHES "^([0-9]+)\\.([0-9]+)\\.([0-9]+)$")
  message(FATAL_ERROR "VERSION holds '${version}', not MAJOR.MINOR.PATCH")
endif()
set(major ${CMAKE_MATCH_1})
set(minor ${CMAKE_MATCH_2})
set(patch ${CMAKE_MATCH_3})

# What a file must hold: a regular expression, the version in its place.
function(expect file pattern)
  if(NOT EXISTS ${file})
    set(failures ${failures} "${file} is missing" PARENT_SCOPE)
    return()
  endif()
  file(READ ${file} text)
  if(NOT text MATCHES "${pattern}")
    set(failures ${failures} "${file} lacks '${pattern}'" PARENT_SCOPE)
  endif()
endfunction()

string(REPLACE "." "\\." v "${version}")
set(header ${BINARY_DIR}/include/quarl/version.h)
expect(${header} "#define QUARL_VERSION_MAJOR ${major}\n")
expect(${header} "#define QUARL_VERSION_MINOR ${minor}\n")
expect(${header} "#define QUARL_VERSION_PATCH ${patch}\n")
expect(${header} "#define QUARL_VERSION_STRING \"${v}\"\n")
expect(${BINARY_DIR}/quarl.pc "\nVersion: ${v}\n")
expect(${BINARY_DIR}/quarlConfigVersion.cmake "set\\(PACKAGE_VERSION \"${v}\"\\)")
expect(${SOURCE_DIR}/CHANGELOG.md "\n## \\[${v}\\] - [0-9]+-[0-9]+-[0-9]+\n")
if(EXISTS ${BINARY_DIR}/CPackConfig.cmake)
  expect(${BINARY_DIR}/CPackConfig.cmake "set\\(CPACK_PACKAGE_VERSION \"${v}\"\\)")
endif()

# The soname: major.minor before 1.0, then the major version alone; the
# file itself carries the whole version.
if(major EQUAL 0)
  set(soversion "${major}\\.${minor}")
else()
  set(soversion "${major}")
endif()
foreach(library IN ITEMS ${QUARL_LIBRARY} ${TESSEL_LIBRARY})
  get_filename_component(name ${library} NAME)
  string(REGEX REPLACE "\\.so.*$" "" base "${name}")
  execute_process(COMMAND ${READELF} -d ${library} OUTPUT_VARIABLE dynamic RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0 OR NOT dynamic MATCHES "Library soname: \\[${base}\\.so\\.${soversion}\\]")
    list(APPEND failures "${name}: soname is not ${base}.so.${soversion}")
  endif()
  get_filename_component(real ${library} REALPATH)
  get_filename_component(real ${real} NAME)
  if(NOT real STREQUAL "${base}.so.${version}")
    list(APPEND failures "${name} is the file ${real}, not ${base}.so.${version}")
  endif()
endforeach()

foreach(program IN LISTS PROGRAMS)
  get_filename_component(name ${program} NAME)
  execute_process(COMMAND ${program} --version OUTPUT_VARIABLE out RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0 OR NOT out MATCHES "^${name} \\(quarl\\) ${v}\n")
    list(APPEND failures "${name} --version says '${out}' (exit ${rc})")
  endif()
endforeach()

if(PYTHON)
  set(ENV{PYTHONPATH} ${BINARY_DIR}/python)
  execute_process(COMMAND ${PYTHON} -c "import quarl; print(quarl.__version__)"
    OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT out STREQUAL version)
    list(APPEND failures "quarl.__version__ is '${out}' ${err}")
  endif()
  expect(${BINARY_DIR}/python/METADATA "\nVersion: ${v}\n")
  # What pip builds from the source tree takes its version from pyproject.toml.
  execute_process(COMMAND ${PYTHON} setup.py --version WORKING_DIRECTORY ${SOURCE_DIR}
    OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT rc EQUAL 0 OR NOT out MATCHES "(^|\n)${v}$")
    list(APPEND failures "setup.py --version says '${out}' ${err}")
  endif()
endif()

if(failures)
  string(REPLACE ";" "\n  " failures "${failures}")
  message(FATAL_ERROR "the version ${version} is not given everywhere:\n  ${failures}")
endif()
message(STATUS "version ${version} everywhere")
