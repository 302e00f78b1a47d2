# Makes the API reference: Doxygen over the public headers with
# docs/Doxyfile, into OUTPUT_DIR/html. Fails when a public name has no
# comment (Doxygen's warnings are errors there), and when a header has no
# "/// \file" comment, without which Doxygen would pass over the names at
# file level (functions, macros) in silence.
#   cmake -DSOURCE_DIR=<top folder> -DOUTPUT_DIR=<folder> -DDOXYGEN=<program> -P docs/api_reference.cmake
if(NOT DOXYGEN)
  message("skipped: doxygen is not installed (Debian: apt-get install doxygen)")
  return()
endif()

file(GLOB headers "${SOURCE_DIR}/include/quarl/*.h")
set(undocumented "")
foreach(header ${headers})
  file(READ "${header}" text)
  if(NOT text MATCHES "/// \\\\file")
    list(APPEND undocumented "${header}")
  endif()
endforeach()
if(undocumented)
  message(FATAL_ERROR "headers without a /// \\file comment: ${undocumented}")
endif()

file(MAKE_DIRECTORY "${OUTPUT_DIR}")
file(READ "${SOURCE_DIR}/docs/Doxyfile" settings)
file(WRITE "${OUTPUT_DIR}/Doxyfile" "${settings}
INPUT = ${SOURCE_DIR}/include/quarl
OUTPUT_DIRECTORY = ${OUTPUT_DIR}
STRIP_FROM_PATH = ${SOURCE_DIR}/include
STRIP_FROM_INC_PATH = ${SOURCE_DIR}/include
")
execute_process(COMMAND "${DOXYGEN}" "${OUTPUT_DIR}/Doxyfile"
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT result EQUAL 0 OR NOT EXISTS "${OUTPUT_DIR}/html/index.html")
  message(FATAL_ERROR "Doxygen failed (${result}); each line names a public name without a comment "
    "or a comment Doxygen cannot read:\n${errors}")
endif()
message("API reference: ${OUTPUT_DIR}/html/index.html")
