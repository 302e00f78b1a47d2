# Checks what libquarl.so and libtessel.so show a host: their SONAMEs, the
# exported classes, and nothing else of the namespace quarl.
#
#   QUARL_LIBRARY, TESSEL_LIBRARY  the shared libraries
#   QUARL_ARCHIVE                  the static build of the same objects
#   NM, READELF, SOVERSION

function(run out)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE text ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${err}")
  endif()
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# Demangled names of the defined symbols, one list element per symbol.
function(defined_symbols out)
  run(text ${NM} ${ARGN} --defined-only -C)
  string(REPLACE ";" "\\;" text "${text}")
  string(REPLACE "\n" ";" lines "${text}")
  set(names)
  foreach(line IN LISTS lines)
    if(line MATCHES "^[0-9a-fA-F]* *[A-Za-z] (.*)$")
      list(APPEND names "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  set(${out} "${names}" PARENT_SCOPE)
endfunction()

set(failures)
string(REPLACE "." "\\." SOVERSION_PATTERN "${SOVERSION}")

foreach(lib IN ITEMS QUARL TESSEL)
  get_filename_component(name ${${lib}_LIBRARY} NAME)
  string(REGEX REPLACE "\\.so.*$" "" base "${name}")
  run(dynamic ${READELF} -d ${${lib}_LIBRARY})
  if(NOT dynamic MATCHES "Library soname: \\[${base}\\.so\\.${SOVERSION_PATTERN}\\]")
    list(APPEND failures "${name} has no SONAME ${base}.so.${SOVERSION}")
  endif()
endforeach()

defined_symbols(exported -D ${QUARL_LIBRARY})
defined_symbols(built ${QUARL_ARCHIVE})
string(REPLACE ";" "\n" exported_text "${exported}")
string(REPLACE ";" "\n" built_text "${built}")

# The classes of the interface. The reader and the writer are checked once
# their code is part of the build.
set(required CTextFile CLasString CLasCurve CLasSection)
foreach(class IN ITEMS CLasReader CLasWriter)
  if(built_text MATCHES "(^|\n)quarl::${class}::")
    list(APPEND required ${class})
  endif()
endforeach()
foreach(class IN LISTS required)
  if(NOT exported_text MATCHES "(^|\n)quarl::${class}::")
    list(APPEND failures "quarl::${class} is not exported")
  endif()
endforeach()

# The free functions of the interface.
set(functions ResultName ResultDescription LasNoteKindName SectionTypeName SteppingDescription
    MainDataName DepthsAgree FirstUnevenStep DepthMnemonic LasRepairKindName
    LasSectionNameIn VersionString)
foreach(function IN LISTS functions)
  if(NOT exported_text MATCHES "(^|\n)quarl::${function}\\(")
    list(APPEND failures "quarl::${function} is not exported")
  endif()
endforeach()

# Whatever else of the namespace is visible is an internal that leaked.
string(JOIN "|" allowed CTextFile CLasString CLasCurve CLasSection CLasReader CLasWriter)
string(JOIN "|" allowed_functions ${functions})
foreach(symbol IN LISTS exported)
  if(symbol MATCHES "^(typeinfo for |typeinfo name for |vtable for |guard variable for )?quarl::"
     AND NOT symbol MATCHES "^quarl::(${allowed})::"
     AND NOT symbol MATCHES "^quarl::(${allowed_functions})\\("
     # a standard template instantiated for an exported class, whose
     # demangled name starts with its return type
     AND NOT symbol MATCHES "^quarl::[A-Za-z_:]+( const)?[*&]* std::")
    list(APPEND failures "internal symbol exported: ${symbol}")
  endif()
endforeach()

# The sample internals must exist in the build, or the check above proves nothing.
foreach(internal IN ITEMS "quarl::ParseNumber" "quarl::AsciiCompareNoCase" "quarl::detail::")
  if(NOT built_text MATCHES "(^|\n)${internal}")
    list(APPEND failures "${internal} not found in the static build")
  endif()
endforeach()

defined_symbols(tessel_exported -D ${TESSEL_LIBRARY})
string(REPLACE ";" "\n" tessel_text "${tessel_exported}")
foreach(class IN ITEMS TxString Exception)
  if(NOT tessel_text MATCHES "(^|\n)tessel::${class}::")
    list(APPEND failures "tessel::${class} is not exported")
  endif()
endforeach()

if(failures)
  string(REPLACE ";" "\n  " failures "${failures}")
  message(FATAL_ERROR "exported symbols:\n  ${failures}")
endif()
list(LENGTH required count)
message(STATUS "${count} classes exported, no internals, SONAMEs right")
