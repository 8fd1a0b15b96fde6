# Runs the job runner over files whose sizes, lines and checksums are known.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${WORK}")
file(WRITE "${WORK}/numbers/check" "123456789")  # Its CRC-32 is the usual check value.
file(WRITE "${WORK}/lines/deep/two" "a\nb\n")
file(WRITE "${WORK}/lines/empty" "")

# run(EXPECTED_RESULT ARGUMENT...): leaves what was printed in `printed`.
function(run result)
  execute_process(COMMAND ${EMULATOR} "${JOB_RUNNER}" ${ARGN}
    WORKING_DIRECTORY "${WORK}" RESULT_VARIABLE got OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REPLACE "\r\n" "\n" out "${out}${err}")
  if(NOT got STREQUAL result)
    message(FATAL_ERROR "job_runner ${ARGN}: result ${got}, not ${result}; printed:\n${out}")
  endif()
  set(printed "${out}" PARENT_SCOPE)
endfunction()

function(expect)
  foreach(pattern IN LISTS ARGN)
    if(NOT printed MATCHES "${pattern}")
      message(FATAL_ERROR "no \"${pattern}\" in:\n${printed}")
    endif()
  endforeach()
endfunction()

run(0 --workers 3 --files numbers lines)
expect(
  "\n  check +1 +0 +0 +9 +0  cbf43926\n"
  "\n  two +1 +0 +0 +4 +2  [0-9a-f]+\n"
  "\n  empty +1 +0 +0 +0 +0  00000000\n"
  "\ntotal +3 +0 +0 +13 +2  [0-9a-f]+\n"
  " with 3 workers")

# A file that can't be read fails alone.
run(1 numbers missing)
expect("\ntotal +1 +1 +0 +9 +0  cbf43926\n" "failed: [^\n]*missing: ")

run(2 --workers 0)
expect("usage: job_runner")
