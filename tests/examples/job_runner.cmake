# Runs job_runner on files with known sums, with and without keys, and looks at what it prints.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(WRITE "${FOLDER}/tree/one/digits" "123456789")
file(WRITE "${FOLDER}/tree/two/a" "1234")
file(WRITE "${FOLDER}/tree/two/b" "56789")
file(WRITE "${FOLDER}/tree/two/deep/lines" "one\ntwo\nthree\n")
file(WRITE "${FOLDER}/tree/two/empty" "")
file(WRITE "${FOLDER}/tree/.hidden/left-out" "x")
file(WRITE "${FOLDER}/tree/build/left-out" "x")

# The CRC-32 of "123456789" is cbf43926, of one file and of two that are read one after the other.
run(0 "" --workers 3 --files tree)
expect("tree/one +1 +0 +0 +9 +0  cbf43926\n  digits +1 +0 +0 +9 +0  cbf43926\n")
expect("tree/two +3 +0 +0 +9 +0  cbf43926\n")
expect("tree/two/deep +1 +0 +0 +14 +3 ")
expect("total +5 +0 +0 +32 +3 ")

# What can't be read fails, and its package goes on after it.
run(1 "" --workers 1 tree/two/a tree/two/missing tree/two/b)
expect("tree/two +2 +1 +0 +9 +0  cbf43926\n")
expect("failed: tree/two/missing: ")

run(2 "" --workers none tree)
run(2 "" --workers 0 tree)
run(2 "" --no-such-option)
run(0 "" --help)
file(MAKE_DIRECTORY "${FOLDER}/nothing")
run(0 "" nothing)
expect("^no files\n")

# Enough bytes for the keys to come before the end.
string(REPEAT "0123456789abcde\n" 1048576 block)
foreach(i RANGE 1 12)
  file(WRITE "${FOLDER}/large/file${i}" "${block}")
endforeach()
foreach(workers 1 4)
  run(0 "prpr" --workers ${workers} large)
  expect("^paused\nrunning\npaused\nrunning\n")
  expect("total +12 +0 +0 +201326592 +12582912 ")

  run(130 "c" --workers ${workers} large)
  expect("^cancelling\n")
  expect("total .*cancelled\n$")
  # All workers parked, and then the cancel.
  run(130 "pc" --workers ${workers} large)
  expect("^paused\ncancelling\n")
  run(130 "prpcr" --workers ${workers} large)
  expect("^paused\nrunning\npaused\ncancelling\n")
endforeach()
file(REMOVE_RECURSE "${FOLDER}")
