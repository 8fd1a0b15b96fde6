# Crashes crash_host in each way, and lets its next start find the report.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

function(crash way reported)
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" --folder "${FOLDER}/reports of ${way}" ${way}
    TIMEOUT 100 RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(result STREQUAL "0" OR NOT out MATCHES "Crashing: " OR out MATCHES "Still alive")
    message(FATAL_ERROR "${way}: no crash, but ${result}\n${out}${err}")
  endif()
  run(0 "\n" --folder "${FOLDER}/reports of ${way}")
  string(REGEX MATCH "The last run crashed. Its report: [^\n]*[/\\\\](dumps.[0-9]+.dmp.zip)\n" found
    "${output}")
  string(REPLACE "\\" "/" archive "${FOLDER}/reports of ${way}/${CMAKE_MATCH_1}")
  if(reported AND NOT (found AND EXISTS "${archive}"))
    message(FATAL_ERROR "${way}: the next start found no report\n${output}${err}")
  elseif(found AND NOT reported)
    message(FATAL_ERROR "${way}: a report that is not due\n${output}")
  endif()
endfunction()

foreach(way null-write stack-overflow division worker)
  crash(${way} TRUE)
endforeach()
crash(abort FALSE)
run(2 "" --folder "${FOLDER}/reports" no-such-way)
file(WRITE "${FOLDER}/file" "")
run(1 "" --folder "${FOLDER}/file")
file(REMOVE_RECURSE "${FOLDER}")
