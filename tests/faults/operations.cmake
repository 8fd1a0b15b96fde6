# Whether the tables of the tests call each operation of the public headers, and each export:
#   cmake -DSOURCE=... -P operations.cmake
set(objects
  RkTask task
  RkTaskData data
  RkTaskEvent event
  RkTaskFunc func
  RkTaskPackage package
  RkTaskPool pool
  RkTaskSchedular scheduler
  RkTaskThread thread
  TMVAndroidManifest manifest
  TMVDbgReport report
  TMVLock lock
  TMVUserDefaults store
  TMVUtilityApp app
  TMVUtilityFile files
  TMVUtilityString strings
  TMVUtilitySys sys
  TMVUtilityUnzip unzip
  TMVUtilityZip zip)

# The rows of the tables, each the end of its test, and what is tried without a table.
set(calls " pool.Start() pool.Stop()")
file(GLOB tests "${SOURCE}/tests/faults/*_memory_test.cpp")
foreach(test IN LISTS tests)
  file(STRINGS "${test}" lines)
  set(isRow FALSE)
  foreach(line IN LISTS lines)
    if(line MATCHES "^ +(TRY|DO)\\(")
      set(isRow TRUE)
    elseif(line MATCHES "^}")
      set(isRow FALSE)
    endif()
    if(isRow)
      string(APPEND calls "${line}\n")
    endif()
  endforeach()
endforeach()

set(untried "")
set(count 0)
function(expect_call pattern name)
  math(EXPR count "${count} + 1")
  set(count ${count} PARENT_SCOPE)
  if(NOT calls MATCHES "[^A-Za-z_]${pattern}\\(")
    list(APPEND untried "${name}")
    set(untried "${untried}" PARENT_SCOPE)
  endif()
endfunction()

set(interfaces 0)
file(GLOB headers "${SOURCE}/include/temvar/*.h")
foreach(header IN LISTS headers)
  file(STRINGS "${header}" lines REGEX "^class [A-Za-z]+ |^  virtual ")
  set(object "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^class ([A-Za-z]+)")
      set(interface "${CMAKE_MATCH_1}")
      set(object "")
      list(FIND objects "${interface}" at)
      if(at GREATER -1)
        math(EXPR at "${at} + 1")
        list(GET objects ${at} object)
        math(EXPR interfaces "${interfaces} + 1")
      elseif(interface MATCHES "^(TMV|RkTask)")
        list(APPEND untried "${interface}")
      endif()
    elseif(object AND line MATCHES "([A-Za-z0-9]+)\\(")
      expect_call("${object}(->|\\.)${CMAKE_MATCH_1}" "${interface}::${CMAKE_MATCH_1}")
    endif()
  endforeach()
endforeach()
file(STRINGS "${SOURCE}/cmake/exports.txt" exports)
foreach(export IN LISTS exports)
  expect_call("${export}" "${export}")
endforeach()
message("${count} operations and exports of ${interfaces} interfaces")
if(untried OR NOT interfaces EQUAL 18)
  message(FATAL_ERROR "not tried: ${untried}")
endif()
