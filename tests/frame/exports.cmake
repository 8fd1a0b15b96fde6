# Compares the exports of LIBRARY, as it was built, with the table TABLE, of COUNT names.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/../support/module_tables.cmake")

file(STRINGS "${TABLE}" table)
list(LENGTH table count)
if(NOT count EQUAL COUNT)
  message(FATAL_ERROR "the table has ${count} names")
endif()
read_exports("${LIBRARY}" exports)
if(NOT exports STREQUAL table)
  message(FATAL_ERROR "the library exports ${exports}\nbut the sorted table has ${table}")
endif()
