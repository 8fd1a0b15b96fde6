# Makes the package of the build folder BUILD and unpacks it into MADE.
file(REMOVE_RECURSE "${MADE}")
file(MAKE_DIRECTORY "${MADE}")
execute_process(
  COMMAND "${CPACK}" --config "${BUILD}/CPackConfig.cmake" -G ZIP -B "${MADE}/cpack"
  COMMAND_ERROR_IS_FATAL ANY)
file(GLOB archive "${MADE}/cpack/*.zip")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${MADE}")
file(REMOVE_RECURSE "${MADE}/cpack")
