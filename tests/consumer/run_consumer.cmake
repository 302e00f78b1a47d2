# Installs the built project into a scratch prefix, then configures, builds
# and runs tests/consumer against it, once through find_package and once
# through pkg-config.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/consumer -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer ${SOURCE_DIR}/examples/data/sample_las20.las)
if(NOT LAST_OUTPUT MATCHES "consumer ok")
  message(FATAL_ERROR "consumer printed: ${LAST_OUTPUT}")
endif()

find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig:${prefix}/lib64/pkgconfig)
  foreach(dir lib lib64 lib/x86_64-linux-gnu)
    if(EXISTS ${prefix}/${dir}/pkgconfig/quarl.pc)
      set(ENV{PKG_CONFIG_PATH} ${prefix}/${dir}/pkgconfig)
    endif()
  endforeach()
  run(${PKG_CONFIG} --cflags --libs quarl)
  message(STATUS "pkg-config: ${LAST_OUTPUT}")
endif()
