# Runs the settings example through a life of a settings file: made, changed, damaged, made anew.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")

# settings(EXPECTED_RESULT EXPECTED_OUTPUT ARGUMENT...)
function(settings result output)
  execute_process(COMMAND ${EMULATOR} "${SETTINGS}" ${ARGN}
    WORKING_DIRECTORY "${WORK}" RESULT_VARIABLE got OUTPUT_VARIABLE printed)
  string(REPLACE "\r\n" "\n" printed "${printed}")
  if(NOT got STREQUAL result OR NOT printed STREQUAL output)
    message(FATAL_ERROR "settings ${ARGN}: result ${got}, printed:\n${printed}\nnot ${output}")
  endif()
endfunction()

function(expect_file name text)
  file(READ "${WORK}/${name}" found)
  if(NOT found STREQUAL text)
    message(FATAL_ERROR "${name} holds:\n${found}\nnot ${text}")
  endif()
endfunction()

settings(0 "" app.json width 800)
settings(0 "" app.json name "Anna")
settings(0 "width = 800\nname = \"Anna\"\n" app.json)
settings(0 "name = \"Anna\"\n" app.json name)
settings(1 "height is not set\n" app.json height)
expect_file(app.json "{\n    \"width\": 800,\n    \"name\": \"Anna\"\n}")
expect_file(app.json.last "{\n    \"width\": 800\n}")

foreach(name app.json.damaged app.json.damaged2)
  file(WRITE "${WORK}/app.json" "{ \"width\": 8")
  settings(0 "app.json is not a settings file; kept as ${name}\n" app.json width 900)
  expect_file(${name} "{ \"width\": 8")
  expect_file(app.json "{\n    \"width\": 900\n}")
endforeach()

settings(1 "no_such_folder/app.json could not be written\n" no_such_folder/app.json width 1)
