# Runs a program many times and fails at the first run that fails or doesn't end in time:
#   cmake -DPROGRAM=... [-DEMULATOR=...] -DARGUMENT=... -DRUNS=... [-DSECONDS=...] -P run_many.cmake
if(NOT SECONDS)
  set(SECONDS 30)
endif()
string(TIMESTAMP begin "%s")
foreach(run RANGE 1 ${RUNS})
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${ARGUMENT}
    TIMEOUT ${SECONDS} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "run ${run} of ${RUNS}: ${result}\n${output}")
  endif()
endforeach()
string(TIMESTAMP end "%s")
math(EXPR elapsed "${end} - ${begin}")
message(STATUS "${RUNS} runs of \"${ARGUMENT}\" in ${elapsed} s")
