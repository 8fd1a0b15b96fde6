# Walks from a customer's archive to function and line as docs/crash-reports.md does, with a dump of
# Windows on the machine that builds: LLDB names the module and the address of a frame, addr2line the
# line from the symbols that are kept.
#   cmake -DEMULATOR=... -DPROGRAM=crash_child.exe -DLIBRARY=libTemvar.dll -DLLDB=... -DOBJDUMP=...
#     -DADDR2LINE=... -DFOLDER=... -P windows_dump.cmake
file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}/dumps")
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" worker "${FOLDER}/dumps/" "${FOLDER}/log"
  OUTPUT_QUIET ERROR_QUIET)
file(GLOB archives "${FOLDER}/dumps/*.dmp.zip")
if(NOT archives)
  message(FATAL_ERROR "the crash left no archive")
endif()
list(GET archives 0 archive)
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${FOLDER}/unpacked")
file(GLOB_RECURSE dumps "${FOLDER}/unpacked/*.dmp")
list(GET dumps 0 dump)

execute_process(COMMAND "${LLDB}" --batch -c "${dump}" -o "image list" -o "thread backtrace"
  OUTPUT_VARIABLE frames ERROR_QUIET)
execute_process(COMMAND "${OBJDUMP}" -p "${LIBRARY}" OUTPUT_VARIABLE headers)
if(NOT frames MATCHES "\\] +(0x[0-9a-f]+) [^\n]*libTemvar\\.dll")
  message(FATAL_ERROR "LLDB lists no libTemvar.dll:\n${frames}")
endif()
set(base ${CMAKE_MATCH_1})
if(NOT frames MATCHES "frame #[0-9]+: (0x[0-9a-f]+) libTemvar\\.dll")
  message(FATAL_ERROR "no frame in libTemvar.dll:\n${frames}")
endif()
set(address ${CMAKE_MATCH_1})
string(REGEX MATCH "ImageBase[ \t]+([0-9a-f]+)" preferred "${headers}")
math(EXPR address "${address} - ${base} + 0x${CMAKE_MATCH_1}" OUTPUT_FORMAT HEXADECIMAL)
execute_process(COMMAND "${ADDR2LINE}" -f -e "${LIBRARY}.debug" ${address} OUTPUT_VARIABLE line)
if(NOT line MATCHES "RunAssignment" OR NOT line MATCHES "task_thread_impl\\.cpp:[1-9]")
  message(FATAL_ERROR "${address} is no line of RunAssignment:\n${line}\n${frames}")
endif()
