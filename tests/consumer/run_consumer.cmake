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
# An installed program starts with a clean environment: it finds the
# installed libraries by its own RUNPATH, not by LD_LIBRARY_PATH or ldconfig.
find_program(ENV_PROGRAM env)
if(EXISTS ${prefix}/bin/quarl-info AND ENV_PROGRAM)
  run(${ENV_PROGRAM} -i ${prefix}/bin/quarl-info ${SOURCE_DIR}/examples/data/sample_las20.las)
  if(NOT LAST_OUTPUT MATCHES "Stepping: LASFILE_OK")
    message(FATAL_ERROR "installed quarl-info printed: ${LAST_OUTPUT}")
  endif()
endif()

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/consumer -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer ${SOURCE_DIR}/examples/data/sample_las20.las)
if(NOT LAST_OUTPUT MATCHES "consumer ok")
  message(FATAL_ERROR "consumer printed: ${LAST_OUTPUT}")
endif()

# The same host built by hand from what pkg-config says.
find_program(PKG_CONFIG pkg-config)
if(NOT PKG_CONFIG)
  message(STATUS "pkg-config not found: quarl.pc not checked")
  return()
endif()
file(GLOB pc_files ${prefix}/*/pkgconfig/quarl.pc ${prefix}/*/*/pkgconfig/quarl.pc)
list(LENGTH pc_files pc_count)
if(NOT pc_count EQUAL 1)
  message(FATAL_ERROR "expected one installed quarl.pc, found: ${pc_files}")
endif()
get_filename_component(pc_dir ${pc_files} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
run(${PKG_CONFIG} --cflags quarl)
string(STRIP "${LAST_OUTPUT}" cflags)
run(${PKG_CONFIG} --libs quarl)
string(STRIP "${LAST_OUTPUT}" libs)
run(${PKG_CONFIG} --variable=libdir quarl)
string(STRIP "${LAST_OUTPUT}" libdir)
get_filename_component(libdir ${libdir} REALPATH)
if(NOT EXISTS ${libdir}/libquarl.so)
  message(FATAL_ERROR "pkg-config's libdir ${libdir} holds no libquarl.so")
endif()
separate_arguments(cflags UNIX_COMMAND "${cflags}")
separate_arguments(libs UNIX_COMMAND "${libs}")
run(${CXX} -std=c++17 ${cflags} ${SOURCE_DIR}/tests/consumer/main.cpp ${libs}
    -Wl,-rpath,${libdir} -o ${WORK_DIR}/consumer_pc)
run(${WORK_DIR}/consumer_pc ${SOURCE_DIR}/examples/data/sample_las20.las)
if(NOT LAST_OUTPUT MATCHES "consumer ok")
  message(FATAL_ERROR "pkg-config consumer printed: ${LAST_OUTPUT}")
endif()
