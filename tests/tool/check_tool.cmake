# Runs the krvalue tool (or an example program) once for ctest and checks its
# exit status, its standard output, and on request its standard error and how
# a file begins:
#   cmake -DTOOL=<krvalue> -DARGUMENTS=<list> -DSTATUS=<n> -DOUTPUT=<regex>
#         [-DERRORS=<regex>] [-DINPUT_FILE=<path>] [-DOUTPUT_FILE=<path>]
#         [-DFILE=<path> -DFILE_START=<regex> [-DFILE_MATCHES=<regex>]
#          [-DFILE_LACKS=<regex>]] -P check_tool.cmake
# INPUT_FILE is given as standard input; OUTPUT_FILE takes standard output
# instead (such as /dev/full, to see a write fail), and OUTPUT is then not
# checked. FILE_MATCHES must match somewhere in the whole file, FILE_LACKS
# nowhere. ctest's own PASS_REGULAR_EXPRESSION ignores the exit status, which
# these checks need as well.
if(DEFINED FILE)
  file(REMOVE "${FILE}")
endif()

set(redirections)
if(DEFINED INPUT_FILE)
  list(APPEND redirections INPUT_FILE "${INPUT_FILE}")
endif()
if(DEFINED OUTPUT_FILE)
  list(APPEND redirections OUTPUT_FILE "${OUTPUT_FILE}")
else()
  list(APPEND redirections OUTPUT_VARIABLE output)
endif()

execute_process(COMMAND "${TOOL}" ${ARGUMENTS}
  ${redirections}
  RESULT_VARIABLE status
  ERROR_VARIABLE errors)
if(NOT status STREQUAL STATUS)
  message(FATAL_ERROR "exit status ${status}, expected ${STATUS}\nstdout:\n${output}\nstderr:\n${errors}")
endif()
if(NOT DEFINED OUTPUT_FILE AND NOT output MATCHES "${OUTPUT}")
  message(FATAL_ERROR "standard output does not match '${OUTPUT}':\n${output}")
endif()
if(DEFINED ERRORS AND NOT errors MATCHES "${ERRORS}")
  message(FATAL_ERROR "standard error does not match '${ERRORS}':\n${errors}")
endif()

if(DEFINED FILE)
  if(NOT EXISTS "${FILE}")
    message(FATAL_ERROR "${FILE} was not written")
  endif()
  file(READ "${FILE}" start LIMIT 64)
  if(NOT start MATCHES "^(${FILE_START})")
    message(FATAL_ERROR "${FILE} begins with:\n${start}")
  endif()
  file(READ "${FILE}" whole)
  if(DEFINED FILE_MATCHES AND NOT whole MATCHES "${FILE_MATCHES}")
    message(FATAL_ERROR "${FILE} does not match '${FILE_MATCHES}'")
  endif()
  if(DEFINED FILE_LACKS AND whole MATCHES "${FILE_LACKS}")
    message(FATAL_ERROR "${FILE} matches '${FILE_LACKS}': '${CMAKE_MATCH_0}'")
  endif()
endif()
