# Makes the packages of the build folder BUILD, the second one with the symbols, and unpacks both into
# MADE.
file(REMOVE_RECURSE "${MADE}")
file(MAKE_DIRECTORY "${MADE}")
execute_process(
  COMMAND "${CPACK}" --config "${BUILD}/CPackConfig.cmake" -G ZIP -B "${MADE}/cpack"
  COMMAND_ERROR_IS_FATAL ANY)
file(GLOB archives "${MADE}/cpack/*.zip")
list(LENGTH archives count)
if(NOT count EQUAL 2 OR NOT archives MATCHES "-symbols\\.zip")
  message(FATAL_ERROR "not one package and its symbols: ${archives}")
endif()
foreach(archive IN LISTS archives)
  file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${MADE}")
endforeach()
file(REMOVE_RECURSE "${MADE}/cpack")
