# Runs the krvalue tool once for ctest and checks its exit status, its
# standard output and, when FILE is given, how that file begins:
#   cmake -DTOOL=<krvalue> -DARGUMENTS=<list> -DSTATUS=<n> -DOUTPUT=<regex>
#         [-DFILE=<path> -DFILE_START=<regex>] -P check_tool.cmake
# ctest's own PASS_REGULAR_EXPRESSION ignores the exit status, which these
# checks need as well.
if(DEFINED FILE)
  file(REMOVE "${FILE}")
endif()

execute_process(COMMAND "${TOOL}" ${ARGUMENTS}
  RESULT_VARIABLE status
  OUTPUT_VARIABLE output
  ERROR_VARIABLE errors)
if(NOT status STREQUAL STATUS)
  message(FATAL_ERROR "exit status ${status}, expected ${STATUS}\nstdout:\n${output}\nstderr:\n${errors}")
endif()
if(NOT output MATCHES "${OUTPUT}")
  message(FATAL_ERROR "standard output does not match '${OUTPUT}':\n${output}")
endif()

if(DEFINED FILE)
  if(NOT EXISTS "${FILE}")
    message(FATAL_ERROR "${FILE} was not written")
  endif()
  file(READ "${FILE}" start LIMIT 64)
  if(NOT start MATCHES "^(${FILE_START})")
    message(FATAL_ERROR "${FILE} begins with:\n${start}")
  endif()
endif()
