# Runs one of the programs and checks how it ends: the exit code, and a
# pattern that its output (stdout and stderr together) must contain. A crash
# is never an exit code, so it always fails the check.
#   -DPROGRAM=... -DARGS=a;b;c -DEXPECT_CODE=1 -DEXPECT_OUTPUT=regex
#   [-DEXPECT_STDOUT=regex]: stdout alone must match it
#   [-DEXPECT_QUIET=stdout|stderr]: that stream must stay empty
#   [-DEXPECT_FILE=path]: the file must exist afterwards (and is removed first)
#   [-DEXPECT_UNCHANGED=path]: the file must keep its bytes
#   [-DWORKDIR=path]: the folder the program runs in
#   [-DLAUNCHER=a;b]: the program runs under this command, e.g. prlimit
if(DEFINED EXPECT_FILE)
  file(REMOVE "${EXPECT_FILE}")
endif()
if(DEFINED EXPECT_UNCHANGED)
  file(SHA256 "${EXPECT_UNCHANGED}" before)
endif()
if(NOT DEFINED WORKDIR)
  set(WORKDIR "${CMAKE_CURRENT_BINARY_DIR}")
endif()
execute_process(
  COMMAND ${LAUNCHER} "${PROGRAM}" ${ARGS}
  WORKING_DIRECTORY "${WORKDIR}"
  RESULT_VARIABLE code
  OUTPUT_VARIABLE out
  ERROR_VARIABLE err
  TIMEOUT 120)
set(all "${out}${err}")
if(NOT "${code}" STREQUAL "${EXPECT_CODE}")
  message(FATAL_ERROR "${PROGRAM} ${ARGS}: ended with '${code}', expected ${EXPECT_CODE}\n${all}")
endif()
if(DEFINED EXPECT_OUTPUT AND NOT all MATCHES "${EXPECT_OUTPUT}")
  message(FATAL_ERROR "${PROGRAM} ${ARGS}: output lacks '${EXPECT_OUTPUT}'\n${all}")
endif()
if(DEFINED EXPECT_STDOUT AND NOT out MATCHES "${EXPECT_STDOUT}")
  message(FATAL_ERROR "${PROGRAM} ${ARGS}: stdout lacks '${EXPECT_STDOUT}'\nstdout: ${out}\nstderr: ${err}")
endif()
if(EXPECT_QUIET STREQUAL "stdout" AND NOT out STREQUAL "")
  message(FATAL_ERROR "${PROGRAM} ${ARGS}: wrote on stdout: ${out}")
endif()
if(EXPECT_QUIET STREQUAL "stderr" AND NOT err STREQUAL "")
  message(FATAL_ERROR "${PROGRAM} ${ARGS}: wrote on stderr: ${err}")
endif()
if(DEFINED EXPECT_FILE AND NOT EXISTS "${EXPECT_FILE}")
  message(FATAL_ERROR "${PROGRAM} ${ARGS}: did not write ${EXPECT_FILE}")
endif()
if(DEFINED EXPECT_UNCHANGED)
  file(SHA256 "${EXPECT_UNCHANGED}" after)
  if(NOT before STREQUAL after)
    message(FATAL_ERROR "${PROGRAM} ${ARGS}: changed ${EXPECT_UNCHANGED}")
  endif()
endif()
