# Runs backup on a small tree, again after changes, and with keys, and looks at what it leaves.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

# The files in the backup are those: the log, the crash reports and these archives.
function(expect_archives)
  file(GLOB found RELATIVE "${FOLDER}/backup" "${FOLDER}/backup/*")
  list(REMOVE_ITEM found backup.log crashes)
  if(NOT "${found}" STREQUAL "${ARGN}")
    message(FATAL_ERROR "the backup holds: ${found}\ninstead of: ${ARGN}")
  endif()
endfunction()

string(REPEAT "some text that packs well\n" 1000 text)
foreach(file one/a one/deep/b two/c top)
  file(WRITE "${FOLDER}/tree/${file}.txt" "${file} ${text}")
endforeach()
file(WRITE "${FOLDER}/tree/one/left-out.tmp" "x")
file(WRITE "${FOLDER}/tree/one/built/left-out.txt" "x")
file(WRITE "${FOLDER}/tree/only-left-out/x.tmp" "x")

file(WRITE "${FOLDER}/settings.json" "{ \"Exclusions\": \";.tmp;built;\" }")
run(0 "" --settings settings.json --to backup --workers 3 tree)
expect("one +2 .* packed\n")
expect("3 packed, 0 unchanged, 0 failed, 0 left")
expect_archives(_files.zip one.zip two.zip)

# An independent program reads the archives.
file(ARCHIVE_EXTRACT INPUT "${FOLDER}/backup/one.zip" DESTINATION "${FOLDER}/restored")
foreach(file a deep/b)
  expect_file(restored/${file}.txt "one/${file} ${text}")
endforeach()

# The rest comes from the settings now. Only what has changed is packed, or has lost its archive.
run(0 "" --settings settings.json)
expect("0 packed, 3 unchanged, 0 failed, 0 left")
file(APPEND "${FOLDER}/tree/two/c.txt" "more")
run(0 "" --settings settings.json)
expect("two .* packed\n")
expect("1 packed, 2 unchanged, 0 failed, 0 left")
file(REMOVE "${FOLDER}/backup/one.zip")
run(0 "" --settings settings.json)
expect("1 packed, 2 unchanged, 0 failed, 0 left")
run(0 "" --settings settings.json --history)
expect("3 packed.*0 packed.*1 packed.*1 packed")

# A name that an archive can't hold fails the check; what was there before stays.
string(ASCII 228 184 173 chinese)
file(WRITE "${FOLDER}/tree/two/${chinese}.txt" "x")
run(1 "" --settings settings.json)
expect("two .* FAILED\n.*failed: two: .* isn't the same in the archive")
expect_archives(_files.zip one.zip two.zip)
file(REMOVE "${FOLDER}/tree/two/${chinese}.txt")

# Cancelled half-way, also while paused: nothing half is left, and the next run does it all.
string(REPEAT "0123456789abcdef" 524288 block)
foreach(i RANGE 1 4)
  file(WRITE "${FOLDER}/tree/large${i}/file" "${i}${block}")
endforeach()
foreach(keys c pc prc)
  run(130 "${keys}" --settings settings.json --workers 1)
  expect("cancelling\n.*\ncancelled\n")
  expect_archives(_files.zip one.zip two.zip)
endforeach()
run(0 "prpr" --settings settings.json --workers 2)
expect("paused\nrunning\npaused\nrunning\n")
expect("4 packed, 3 unchanged, 0 failed, 0 left")

# Settings that can't be read are kept, not overwritten.
file(WRITE "${FOLDER}/settings.json" "{ damaged")
run(0 "" --settings settings.json --to backup tree)
expect("is no settings file; it is kept as ")
expect_file(settings.json.damaged.json "{ damaged")

# Without a name the settings stand in the user's application data. (Wine has a registry for that.)
if(NOT EMULATOR)
  set(ENV{XDG_CONFIG_HOME} "${FOLDER}/config")
  run(0 "" --to backup tree)
  run(0 "" --history)
  expect("8 packed")
endif()

run(2 "" --settings settings.json --workers 0)
run(2 "" --settings settings.json --no-such-option)
run(3 "" --settings settings.json missing-tree)
run(3 "" --settings tree --history)
expect("is a folder")
file(REMOVE_RECURSE "${FOLDER}")
