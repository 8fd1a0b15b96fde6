# What the tests of the examples share; each runs in a FOLDER of its own:
#   cmake -D PROGRAM=... [-D EMULATOR=...] -D FOLDER=... -P NAME.cmake
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")

# run(STATUS KEYS ARGUMENT...) compares the exit status and leaves in `output` what was printed.
# Keys come from a file, as if they were typed at once.
function(run expected keys)
  file(WRITE "${FOLDER}/keys" "${keys}")
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${ARGN}
    WORKING_DIRECTORY "${FOLDER}" INPUT_FILE "${FOLDER}/keys" TIMEOUT 100
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REPLACE "\r" "" out "${out}${err}")
  if(NOT result STREQUAL "${expected}")
    message(FATAL_ERROR "${ARGN}: ended with ${result} instead of ${expected}\n${out}")
  endif()
  set(output "${out}" PARENT_SCOPE)
endfunction()

function(expect pattern)
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "not printed: ${pattern}\n${output}")
  endif()
endfunction()

function(expect_file name text)
  file(READ "${FOLDER}/${name}" found)
  if(NOT found STREQUAL text)
    message(FATAL_ERROR "${name} holds:\n${found}\nnot ${text}")
  endif()
endfunction()
