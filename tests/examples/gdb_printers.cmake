# Stops backup where it hands its job over, and lets gdb show the event.
#   cmake -D PROGRAM=... -D GDB=... -D PRINTERS=... -D FOLDER=... -P gdb_printers.cmake
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(WRITE "${FOLDER}/tree/one/a" "a")
file(WRITE "${FOLDER}/tree/two/b" "b")
execute_process(
  COMMAND "${GDB}" --batch --nx -ex "source ${PRINTERS}" -ex "set breakpoint pending on"
    -ex "set print pretty on" -ex "break temvar::RkTaskSchedularImpl::AddEvent" -ex run
    -ex "up" -ex "down" -ex "print *event"
    --args "${PROGRAM}" --settings settings.json --to backup tree
  WORKING_DIRECTORY "${FOLDER}" INPUT_FILE "${PRINTERS}" TIMEOUT 100
  OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(out MATCHES "No symbol|ptrace" OR err MATCHES "No symbol|ptrace|optimized out")
  message("skipped: gdb can't trace here, or the build has no debug information\n${err}")
  return()
endif()
set(output "${out}${err}")
expect("event \"[^\"]*\", created, 0 ended = {")
expect("package \"[^\"]*\", created, at 0 = {")
expect("task \"[^\"]*\", created")
file(REMOVE_RECURSE "${FOLDER}")
