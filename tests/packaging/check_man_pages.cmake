# Installs the programs' component into a scratch prefix and checks that
# each program has its man page in section 1, made for this version.
#   BINARY_DIR, WORK_DIR, PROGRAMS (a list), VERSION, GZIP
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${WORK_DIR} --component programs
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "cmake --install --component programs failed:\n${out}\n${err}")
endif()
set(failures)
foreach(name IN LISTS PROGRAMS)
  set(page ${WORK_DIR}/share/man/man1/${name}.1.gz)
  if(NOT EXISTS ${page})
    list(APPEND failures "${name}.1.gz is not installed")
    continue()
  endif()
  execute_process(COMMAND ${GZIP} -dc ${page} OUTPUT_VARIABLE text RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    list(APPEND failures "${name}.1.gz does not decompress")
  endif()
  string(TOUPPER ${name} upper)
  string(REPLACE "." "\\." version ${VERSION})
  # the title line with the version from --version, the synopsis from the
  # usage, the options from --help (man escapes their "-" as "\-") and the
  # copyright that --version names
  foreach(part IN ITEMS "\n\\.TH ${upper} \"1\" \"[^\"]*\" \"quarl ${version}\"" "\n\\.SH SYNOPSIS\n\\.B ${name}\n"
                        "\\\\-\\\\-help" "\\\\-\\\\-version" "\n\\.SH COPYRIGHT\n")
    if(NOT text MATCHES "${part}")
      list(APPEND failures "${name}.1 lacks '${part}'")
    endif()
  endforeach()
endforeach()
if(failures)
  string(REPLACE ";" "\n  " failures "${failures}")
  message(FATAL_ERROR "man pages:\n  ${failures}")
endif()
