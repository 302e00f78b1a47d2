# Configures, builds and runs tests/subproject, which takes quarl in with
# add_subdirectory.
file(REMOVE_RECURSE ${WORK_DIR})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/subproject -B ${WORK_DIR} -G ${GENERATOR}
    -DQUARL_SOURCE_DIR=${SOURCE_DIR})
run(${CMAKE_COMMAND} --build ${WORK_DIR})
run(${WORK_DIR}/consumer ${SOURCE_DIR}/examples/data/sample_las20.las)
if(NOT LAST_OUTPUT MATCHES "consumer ok")
  message(FATAL_ERROR "consumer printed: ${LAST_OUTPUT}")
endif()
