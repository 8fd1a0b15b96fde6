# Runs the settings example through a life of a settings file: made, changed, damaged, made anew.
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

function(settings result printed)
  run(${result} "" ${ARGN})
  expect("^${printed}$")
endfunction()

settings(0 "" app.json width 800)
settings(0 "" app.json name "Anna")
settings(0 "width = 800\nname = \"Anna\"\n" app.json)
settings(0 "name = \"Anna\"\n" app.json name)
settings(1 "height is not set\n" app.json height)
expect_file(app.json "{\n    \"width\": 800,\n    \"name\": \"Anna\"\n}")
expect_file(app.json.last "{\n    \"width\": 800\n}")

foreach(name app.json.damaged app.json.damaged2)
  file(WRITE "${FOLDER}/app.json" "{ \"width\": 8")
  settings(0 "app.json is not a settings file; kept as ${name}\n" app.json width 900)
  expect_file(${name} "{ \"width\": 8")
  expect_file(app.json "{\n    \"width\": 900\n}")
endforeach()

# Names and values of any script, also on a command line of Windows.
settings(0 "" "ä 写真.json" "größe" "😀 θ")
settings(0 "größe = \"😀 θ\"\n" "ä 写真.json" "größe")
expect_file("ä 写真.json" "{\n    \"größe\": \"😀 θ\"\n}")

run(0 "" --help)
run(2 "")
expect("^usage: settings ")

# A folder is never moved away.
file(MAKE_DIRECTORY "${FOLDER}/folder")
settings(1 "folder is a folder\n" folder width 1)
settings(1 "no_such_folder/app.json could not be written\n" no_such_folder/app.json width 1)
