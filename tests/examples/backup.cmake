# Runs backup on a small tree, again after changes, and with keys, and looks at what it leaves:
#   cmake -D PROGRAM=... [-D EMULATOR=...] -D FOLDER=... -P backup.cmake

# run_backup(STATUS KEYS ARGUMENT...) sets `output` and compares the exit status.
function(run_backup expected keys)
  file(WRITE "${FOLDER}/keys" "${keys}")
  execute_process(COMMAND ${EMULATOR} "${PROGRAM}" --settings settings.json ${ARGN}
    WORKING_DIRECTORY "${FOLDER}" INPUT_FILE "${FOLDER}/keys" TIMEOUT 100
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REPLACE "\r" "" out "${out}")
  if(NOT result STREQUAL "${expected}")
    message(FATAL_ERROR "${ARGN}: ended with ${result} instead of ${expected}\n${out}\n${err}")
  endif()
  set(output "${out}\n${err}" PARENT_SCOPE)
endfunction()

function(expect pattern)
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "not printed: ${pattern}\n${output}")
  endif()
endfunction()

# The files in the backup are those: the log, the crash reports and these archives.
function(expect_archives)
  file(GLOB found RELATIVE "${FOLDER}/backup" "${FOLDER}/backup/*")
  list(REMOVE_ITEM found backup.log crashes)
  if(NOT "${found}" STREQUAL "${ARGN}")
    message(FATAL_ERROR "the backup holds: ${found}\ninstead of: ${ARGN}")
  endif()
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
string(REPEAT "some text that packs well\n" 1000 text)
foreach(file one/a one/deep/b two/c top)
  file(WRITE "${FOLDER}/tree/${file}.txt" "${file} ${text}")
endforeach()
file(WRITE "${FOLDER}/tree/one/left-out.tmp" "x")
file(WRITE "${FOLDER}/tree/one/built/left-out.txt" "x")
file(WRITE "${FOLDER}/tree/only-left-out/x.tmp" "x")

file(WRITE "${FOLDER}/settings.json" "{ \"Exclusions\": \";.tmp;built;\" }")
run_backup(0 "" --to backup --workers 3 tree)
expect("one +2 .* packed\n")
expect("3 packed, 0 unchanged, 0 failed, 0 left")
expect_archives(_files.zip one.zip two.zip)

# An independent program reads the archives.
file(ARCHIVE_EXTRACT INPUT "${FOLDER}/backup/one.zip" DESTINATION "${FOLDER}/restored")
foreach(file a deep/b)
  file(READ "${FOLDER}/restored/${file}.txt" restored)
  if(NOT restored STREQUAL "one/${file} ${text}")
    message(FATAL_ERROR "one/${file}.txt isn't the same in the archive")
  endif()
endforeach()

# The rest comes from the settings now. Only what has changed is packed, or has lost its archive.
run_backup(0 "")
expect("0 packed, 3 unchanged, 0 failed, 0 left")
file(APPEND "${FOLDER}/tree/two/c.txt" "more")
run_backup(0 "")
expect("two .* packed\n")
expect("1 packed, 2 unchanged, 0 failed, 0 left")
file(REMOVE "${FOLDER}/backup/one.zip")
run_backup(0 "")
expect("1 packed, 2 unchanged, 0 failed, 0 left")
run_backup(0 "" --history)
expect("3 packed.*0 packed.*1 packed.*1 packed")

# A name that an archive can't hold fails the check; what was there before stays.
string(ASCII 228 184 173 chinese)
file(WRITE "${FOLDER}/tree/two/${chinese}.txt" "x")
run_backup(1 "")
expect("two .* FAILED\n.*failed: two: .* isn't the same in the archive")
expect_archives(_files.zip one.zip two.zip)
file(REMOVE "${FOLDER}/tree/two/${chinese}.txt")

# Cancelled half-way, also while paused: nothing half is left, and the next run does it all.
string(REPEAT "0123456789abcdef" 524288 block)
foreach(i RANGE 1 4)
  file(WRITE "${FOLDER}/tree/large${i}/file" "${i}${block}")
endforeach()
foreach(keys c pc prc)
  run_backup(130 "${keys}" --workers 1)
  expect("cancelling\n.*\ncancelled\n")
  expect_archives(_files.zip one.zip two.zip)
endforeach()
run_backup(0 "prpr" --workers 2)
expect("paused\nrunning\npaused\nrunning\n")
expect("4 packed, 3 unchanged, 0 failed, 0 left")

# Settings that can't be read are kept, not overwritten.
file(WRITE "${FOLDER}/settings.json" "{ damaged")
run_backup(0 "" --to backup tree)
expect("is no settings file; it is kept as ")
file(READ "${FOLDER}/settings.json.damaged.json" damaged)
if(NOT damaged STREQUAL "{ damaged")
  message(FATAL_ERROR "the damaged settings have changed")
endif()

run_backup(2 "" --workers 0)
run_backup(2 "" --no-such-option)
run_backup(3 "" missing-tree)
file(REMOVE_RECURSE "${FOLDER}")
