# Compiles the blocks of C++ of one document. Three kinds, by the word after the language:
#   ```cpp            statements; compiled as the body of a function, with the C++ layer
#   ```cpp file       a whole source file; compiled unchanged
#   ```cpp program    a whole program; compiled, linked with the library, and run: it must end with 0
#   ```cpp windows    a whole source file that needs Windows; compiled in builds for it
# Names that statements take as given stand in a comment before the block, not shown to readers:
#   <!-- given: const char* path -->
cmake_minimum_required(VERSION 3.25)

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${DOCUMENT}: ${what} failed (${result})")
  endif()
endfunction()

set(prelude "#include <temvar/crash_watch.h>
#include <temvar/describe.h>
#include <temvar/handles.h>
#include <temvar/job.h>
#include <temvar/settings.h>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>
")
separate_arguments(flags NATIVE_COMMAND "${FLAGS}")
set(compile "${COMPILER}" -std=c++17 -Wall -Wextra -Werror -Wno-unused-parameter
  -Wno-unused-variable -Wno-unused-but-set-variable ${flags} "-I${INCLUDE}")
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")

# A CMake list splits at semicolons and minds brackets, so both are set aside for the search.
file(READ "${DOCUMENT}" text)
if(text MATCHES "```(c|C|c\\+\\+|C\\+\\+|cc|CPP)\n")
  message(FATAL_ERROR "${DOCUMENT}: blocks of C++ begin with ```cpp, so that they are compiled")
endif()
string(REPLACE ";" "@SEMICOLON@" text "${text}")
string(REPLACE "[" "@OPEN@" text "${text}")
string(REPLACE "]" "@CLOSE@" text "${text}")
string(REGEX MATCHALL "(<!-- given:[^\n]*-->\n+)?```cpp[^`]*```" blocks "${text}")
list(LENGTH blocks count)
message(STATUS "${count} blocks in ${DOCUMENT}")

set(number 0)
set(statements "${prelude}")
foreach(block IN LISTS blocks)
  string(REPLACE "@SEMICOLON@" ";" block "${block}")
  string(REPLACE "@OPEN@" "[" block "${block}")
  string(REPLACE "@CLOSE@" "]" block "${block}")
  math(EXPR number "${number} + 1")
  set(source "${WORK}/block_${number}.cpp")
  string(REGEX MATCH "```cpp([^\n]*)\n([^`]*)```" whole "${block}")
  string(STRIP "${CMAKE_MATCH_1}" kind)
  set(code "${CMAKE_MATCH_2}")
  set(given "")
  if(block MATCHES "^<!-- given:([^\n]*)-->")
    string(STRIP "${CMAKE_MATCH_1}" given)
  endif()

  if(kind STREQUAL "program")
    file(WRITE "${source}" "${code}")
    get_filename_component(document "${WORK}" NAME)
    set(program "${BIN}/docs_${document}_${number}${EXE}")
    run("compiling block ${number}" ${compile} "${source}" "${LIBRARY}" -o "${program}")
    set(ENV{LD_LIBRARY_PATH} "${BIN}:$ENV{LD_LIBRARY_PATH}")
    run("running block ${number}" ${EMULATOR} "${program}")
    file(REMOVE "${program}")
  elseif(kind STREQUAL "file" OR (kind STREQUAL "windows" AND EXE STREQUAL ".exe"))
    file(WRITE "${source}" "${code}")
    run("compiling block ${number}" ${compile} -fsyntax-only "${source}")
  elseif(kind STREQUAL "windows")
    message(STATUS "block ${number} is left out: it needs Windows")
  elseif(kind STREQUAL "")
    string(APPEND statements
      "\n#line 1 \"block_${number}\"\nvoid Block${number}(${given}) {\n${code}}\n")
  else()
    message(FATAL_ERROR "${DOCUMENT}: no such kind of block: cpp ${kind}")
  endif()
endforeach()

# One source for all the statements: most of the time goes into the headers.
file(WRITE "${WORK}/statements.cpp" "${statements}")
run("compiling its statements" ${compile} -fsyntax-only "${WORK}/statements.cpp")
